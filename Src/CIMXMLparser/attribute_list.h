#pragma once

#include <string_view>

#include "CIMXMLparser/builder.h"

namespace zuCIM::codec {

// Stores the attributes that `text`, the inside of a start tag, lists. What is wrong with the text
// is traced and ends the list, but not the parse. Returns false only when memory is short.
bool parse_attribute_list(std::string_view text, CIMelement& node, TreeBuilder& builder);

}  // namespace zuCIM::codec
