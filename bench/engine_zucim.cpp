#include <memory>

#include "engines.h"
#include "zuCIM.h"

namespace bench {

bool parse_with_zucim(const std::string& text) {
  zuCIM::CIMelement root;
  const bool parsed = root.ParseCIMXML(text) == zuCIM::status::success;
  root.eclean();
  return parsed;
}

Generate generate_with_zucim(const std::string& text) {
  const auto root = std::make_shared<zuCIM::CIMelement>();
  root->ParseCIMXML(text);
  return [root] {
    std::string out;
    root->GenerateCIMXML(out);
    return out.size();
  };
}

}  // namespace bench
