#include "CIMXMLparser/attribute_list.h"

#include <string>

#include "BRQ/Trace.h"
#include "CIMXMLparser/names.h"
#include "CIMXMLparser/text.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM::codec {
namespace {

constexpr const char* trace_source = "Src/CIMXMLparser";

void warn(const char* message, int line = __builtin_LINE()) {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source, line, message);
}

// An attribute's name is looked up as it stands, white space before the "=" included.
int look_up(std::string_view name) {
  const int id = find_attribute(name);
  if (id == attr::UNKNOWN)
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
              "ParseAttribute: unknown CIM Attribute: %s", std::string(name));
  return id;
}

// The position of the value behind the "=" at `equals`; npos when no value in double quotes
// follows.
std::size_t value_begin(std::string_view text, std::size_t equals) {
  const std::size_t quote = skip_space(text, equals + 1);
  if (stands_at(text, quote, "\"")) return quote + 1;
  warn("ParseAttribute: 1. missing '\"'");
  return npos;
}

// The position of the quote that ends the value; npos without one.
std::size_t value_end(std::string_view text, std::size_t begin) {
  const std::size_t quote = text.find('"', begin);
  if (quote == npos) warn("ParseAttribute: 2. missing '\"'");
  return quote;
}

}  // namespace

bool parse_attribute_list(std::string_view text, CIMelement& node, TreeBuilder& builder) {
  for (std::size_t position = 0; position < text.size();) {
    position = skip_space(text, position);
    const std::size_t equals = find_unquoted(text, "=", position);
    if (equals == npos) {
      warn("ParseAttribute: missing '='");
      break;
    }
    const int id = look_up(text.substr(position, equals - position));
    const std::size_t begin = value_begin(text, equals);
    if (begin == npos) break;
    const std::size_t end = value_end(text, begin);
    if (end == npos) break;
    if (!builder.add_attribute(node, id, text.substr(begin, end - begin))) return false;
    position = skip_space(text, end + 1);
  }
  if (node.attributes != nullptr) node.attributes->FreeUnused();
  return true;
}

}  // namespace zuCIM::codec
