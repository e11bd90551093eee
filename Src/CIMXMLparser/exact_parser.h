#pragma once

#include <cstddef>
#include <string_view>

#include "zuCIM/element.h"

namespace zuCIM::codec {

// Parses any message, the malformed ones included, and traces what is wrong. `begin` is the
// position of the CIM element in `text`, `root` an empty node. Returns the id of the last element
// at the top level, 70 when the text ends where an element was expected, or -1 on error; after an
// error `root` holds what was built before it. Cost: linear in the text. Throws std::bad_alloc.
int parse_exactly(std::string_view text, std::size_t begin, CIMelement& root);

}  // namespace zuCIM::codec
