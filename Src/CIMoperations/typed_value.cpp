#include "CIMoperations/typed_value.h"

#include <string>

#include "zuCIM/vocabulary.h"

namespace zuCIM {

void begin_typed_element(CIMcontainer& container, int element, const char* name, int attribute,
                         const char* text) noexcept {
  container.beginElement(element, nullptr);
  container.addAttribute(attr::NAME, name, nullptr);
  container.addAttribute(attribute, text, ">\n");
}

// With an unknown attribute only the tail is written.
void append_text(CIMcontainer& container, const char* text) noexcept {
  container.addAttribute(attr::UNKNOWN, nullptr, text);
}

void begin_line(CIMcontainer& container, int element) noexcept {
  container.beginElement(element, ">\n");
}

void add_typed_values(CIMcontainer& container, const void* values, std::uint32_t count,
                      std::uint32_t type_id) noexcept {
  std::string text;
  for (std::uint32_t index = 0; index < count; ++index) {
    if (ValueToString(values, index, static_cast<int>(type_id), text) > 0) {
      container.addValue(text.c_str());
    } else {
      container.beginElement(elem::VALUE, ">");
      container.endElement(elem::VALUE);
    }
  }
}

void add_reference(CIMcontainer& container, CIMelement* tree) noexcept {
  begin_line(container, elem::VALUE_REFERENCE);
  tree->GenerateCIMXML(container.request);
  container.endElement(elem::VALUE_REFERENCE);
}

}  // namespace zuCIM
