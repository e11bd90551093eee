#pragma once

#include <cstddef>
#include <string_view>

#include "zuCIM/element.h"

namespace zuCIM::codec {

enum class QuickResult {
  complete,       // the document is complete
  not_plain,      // the exact parser has to decide; nothing was traced
  out_of_memory,  // traced
};

// Parses a message in one pass, as long as it is plain: properly nested, without comments and
// character data sections, with known names only. For a plain message the tree is the one that
// the exact parser builds. `begin` is the position of the CIM element in `text`, `root` an empty
// node. Throws std::bad_alloc.
QuickResult parse_quickly(std::string_view text, std::size_t begin, CIMelement& root);

}  // namespace zuCIM::codec
