#include <tinyxml2.h>

#include "engines.h"

namespace bench {

bool parse_with_tinyxml2(const std::string& text) {
  tinyxml2::XMLDocument document;
  return document.Parse(text.data(), text.size()) == tinyxml2::XML_SUCCESS;
}

}  // namespace bench
