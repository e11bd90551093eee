#include <libxml/parser.h>

#include "engines.h"

namespace bench {

bool parse_with_libxml2(const std::string& text) {
  const int options = XML_PARSE_HUGE | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
  const xmlDocPtr document =
      xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, options);
  if (document == nullptr) return false;
  xmlFreeDoc(document);
  return true;
}

}  // namespace bench
