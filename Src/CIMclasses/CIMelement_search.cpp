#include "zuCIM/element.h"

#include <cstdint>

#include "CIMclasses/subtree.h"
#include "CIMclasses/text.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

// The nodes of a parsed document lie one after the other in memory, so what a walk is going to need
// can be asked for early. For other nodes it is a guess that costs nothing.
void fetch_ahead(const CIMelement* node) {
  constexpr std::uintptr_t distance = 40 * sizeof *node;
  __builtin_prefetch(
      reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(node) + distance));
}

// The table row that stands for a kind of element; null, which no search accepts, for a wrong id.
const char* kind_of(int element) {
  return element >= 0 && element < elem::COUNT ? known_cim_elements[element] : nullptr;
}

bool is_kind(const CIMelement* node, int element) {
  return node->name == known_cim_elements[element];
}

// The text of the VALUE that directly follows `node`; null without one.
char* value_after(const CIMelement* node) {
  const CIMelement* const child = node->next;
  return child != nullptr && is_kind(child, elem::VALUE) ? child->value : nullptr;
}

}  // namespace

CIMelement* CIMelement::getLastElement() noexcept {
  if (this == nullptr) return nullptr;
  const SubtreeEnd end(*this);
  CIMelement* last = this;
  while (!end.is_at(*last)) {
    fetch_ahead(last);
    last = last->next;
  }
  return last;
}

CIMelement* CIMelement::findelement(int element, int n) noexcept {
  const char* const kind = kind_of(element);
  if (kind == nullptr || n < 0) return nullptr;
  CIMelement* node = this;
  while (node != nullptr) {
    if (node->name == kind) {
      if (n == 0) return node;
      --n;
      node = node->getLastElement();
    }
    node = node->next;
  }
  return nullptr;
}

CIMelement* CIMelement::search_elem(int element, const char* text) noexcept {
  const char* const kind = kind_of(element);
  if (this == nullptr || kind == nullptr) return nullptr;
  const SubtreeEnd end(*this);
  for (CIMelement* node = this;; node = node->next) {
    if (node->name == kind && node->attr_find_exact(attr::NAME, text) == status::success)
      return node;
    if (end.is_at(*node)) return nullptr;
  }
}

char* CIMelement::getValueOf(int element, const char* text) noexcept {
  const CIMelement* const found = search_elem(element, text);
  if (found == nullptr || found->next == nullptr) return nullptr;
  if (element == elem::KEYBINDING && is_kind(found->next, elem::KEYVALUE))
    return found->next->value;
  return value_after(found);
}

CIMelement* CIMelement::findInstanceName(const char* key_name, const char* key_value) noexcept {
  if (key_value == nullptr) return nullptr;
  CIMelement* instance = findelement(elem::INSTANCENAME, 0);
  while (instance != nullptr) {
    const char* const found = instance->getValueOf(elem::KEYBINDING, key_name);
    if (found != nullptr && equal_ignoring_case(found, key_value)) return instance;
    instance = instance->getLastElement()->next->findelement(elem::INSTANCENAME, 0);
  }
  return nullptr;
}

CIMelement* CIMelement::findProperty(const char* text) noexcept {
  for (CIMelement* node = this; node != nullptr; node = node->next) {
    if (!is_kind(node, elem::PROPERTY) && !is_kind(node, elem::PROPERTY_ARRAY) &&
        !is_kind(node, elem::PROPERTY_REFERENCE))
      continue;
    if (node->attr_find_exact(attr::NAME, text) == status::success) return node;
  }
  return nullptr;
}

char* CIMelement::getValueOfProperty(const char* text) noexcept {
  const CIMelement* const property = findProperty(text);
  return property == nullptr ? nullptr : value_after(property);
}

}  // namespace zuCIM
