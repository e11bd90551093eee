#pragma once

#include <filesystem>

#include "repository.h"

namespace simulator {

// Reads every *.xml file of a directory (in the order of their names) into the repository.
//
// A file is a CIM-XML document with a DECLARATION. The declarations of a DECLGROUP go into the
// namespace of its LOCALNAMESPACEPATH; classes of a group without one go into every namespace that
// any file names. Classes may come in any order, instances may come before their classes.
// Throws DeclarationError, which names the file.
void load_directory(Repository& repository, const std::filesystem::path& directory);

}  // namespace simulator
