#pragma once

#include <cstddef>
#include <string>

#include "repository.h"

namespace simulator {

// Adds generated instances of a class, in the first namespace that has instances of it. Each is a
// likeness of one of the instances that are there: with a key of its own and plausible readings.
// Throws DeclarationError if the class is unknown or cannot be multiplied.
void grow(Repository& repository, const std::string& class_name, std::size_t count);

}  // namespace simulator
