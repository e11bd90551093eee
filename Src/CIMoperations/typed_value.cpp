#include "CIMoperations/typed_value.h"

#include <exception>
#include <string>

#include "CIMoperations/failure.h"
#include "CIMoperations/held_answer.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

// Room for any number, so that none is lost when memory becomes short.
constexpr std::size_t longest_number = 32;

void add_value_or_empty(CIMcontainer& container, const char* text) {
  if (text != nullptr && *text != '\0') {
    container.addValue(text);
    return;
  }
  container.beginElement(elem::VALUE, ">");
  container.endElement(elem::VALUE);
}

}  // namespace

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
  try {
    std::string text;
    text.reserve(longest_number);
    for (std::uint32_t index = 0; index < count; ++index) {
      // A string goes out as it is; a copy of it might not be had.
      const bool is_string = type_id == type::string;
      if (!is_string) ValueToString(values, index, static_cast<int>(type_id), text);
      add_value_or_empty(container, is_string ? static_cast<const char*>(values) : text.c_str());
    }
  } catch (const std::exception& error) {
    abandon_request(container, "add_typed_values", error.what());
  }
}

bool add_reference(CIMcontainer& container, CIMelement* tree) noexcept {
  if (is_document(container, tree)) return false;
  begin_line(container, elem::VALUE_REFERENCE);
  const bool is_written = tree->GenerateCIMXML(container.request) == status::success;
  container.endElement(elem::VALUE_REFERENCE);
  return is_written || tree == nullptr;
}

}  // namespace zuCIM
