#pragma once

#include "model.h"

namespace simulator {

// Completes a class that holds only its own declaration with everything its superclass (null for
// none) hands down, and fills in class origins, key positions and the property index.
// Throws DeclarationError where the declaration contradicts the superclass.
void inherit(Class& declared, const Class* superclass);

}  // namespace simulator
