#pragma once

#include <memory>

#include "model.h"
#include "xml_reader.h"

namespace simulator {

// Fits the values of a declaration to the class: positions, types, defaults of the class for what
// is not given. Throws DeclarationError where they do not fit.
std::unique_ptr<Instance> build_instance(const Class& type, InstanceDeclaration declaration);

}  // namespace simulator
