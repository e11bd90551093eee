#include "CIMoperations/held_answer.h"

#include <utility>

#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

bool has_text(CIMelement& element, const char* text) {
  if (element.value == text) return true;
  const unsigned count = element.attributes != nullptr ? element.attributes->argc : 0;
  for (unsigned i = 0; i < count; ++i) {
    char* found = nullptr;
    element.attr_get(i, &found);
    if (found == text) return true;
  }
  return false;
}

}  // namespace

HeldAnswer::HeldAnswer(CIMcontainer& container) noexcept {
  root_.name = std::exchange(container.result.name, nullptr);
  root_.value = std::exchange(container.result.value, nullptr);
  root_.attributes = std::exchange(container.result.attributes, nullptr);
  root_.next = std::exchange(container.result.next, nullptr);
}

bool HeldAnswer::contains(const CIMelement* element) const noexcept {
  const CIMelement* node = &root_;
  while (node != nullptr && node != element) node = node->next;
  return node != nullptr;
}

bool HeldAnswer::contains_text(const char* text) const noexcept {
  if (text == nullptr) return false;
  auto* node = const_cast<CIMelement*>(&root_);
  while (node != nullptr && !has_text(*node, text)) node = node->next;
  return node != nullptr;
}

bool is_document(const CIMcontainer& container, const CIMelement* element) noexcept {
  return element == &container.result ||
         (element != nullptr && element->name == known_cim_elements[elem::CIM]);
}

}  // namespace zuCIM
