#pragma once

#include "model.h"

namespace simulator {

// Checks what a class declares by itself: names, types, default values.
// Throws DeclarationError where that is no proper class.
void check_class(const Class& declared);

}  // namespace simulator
