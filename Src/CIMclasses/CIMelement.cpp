#include "zuCIM/element.h"

#include <cstdint>
#include <new>

#include "BRQ/Trace.h"
#include "CIMclasses/attribute_record.h"
#include "CIMclasses/text.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMclasses";
constexpr int record_growth = 15;

int raise_attr_put(const char* failure) {
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
            "attr_put: Exception raised: %s", failure);
  return status::failure;
}

CIMelement* raise_make_next_element(const char* failure) {
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
            "makeNextElement: Exception raised: %s", failure);
  return nullptr;
}

CIMelement* last_of_chain(CIMelement* node) {
  while (node->next != nullptr) node = node->next;
  return node;
}

// The attribute record at `index`; null without one.
unsigned char* record_at(const CIMelement* node, unsigned index) {
  const CIMarray* const records = node->attributes;
  if (records == nullptr || records->argv == nullptr || index >= records->argc) return nullptr;
  return static_cast<unsigned char*>(records->argv[index]);
}

char* text_of(unsigned char* record) {
  return reinterpret_cast<char*>(record + 1);
}

}  // namespace

CIMelement* CIMelement::makeNextElement() noexcept {
  if (this == nullptr) return nullptr;
  if (name == nullptr)
    return next == nullptr ? this : raise_make_next_element("this->next is already set!");
  auto* const child = new (std::nothrow) CIMelement;
  if (child == nullptr) return raise_make_next_element("cannot alloc memory!");
  last_of_chain(this)->next = child;
  child->parent = this;
  return child;
}

int CIMelement::attr_put(int attribute, const char* text) noexcept {
  if (this == nullptr) return status::failure;
  // Readers index known_cim_attributes with the ids they find.
  if (attribute < 0 || attribute >= attr::COUNT) return raise_attr_put("unknown attribute id!");
  if (attributes == nullptr) attributes = new (std::nothrow) CIMarray;
  void* const record =
      attributes == nullptr
          ? nullptr
          : attributes->putargv(text, attribute_record::element_size, record_growth);
  if (record == nullptr) return raise_attr_put("cannot alloc memory!");
  *static_cast<unsigned char*>(record) = static_cast<unsigned char>(attribute + 1);
  return status::success;
}

int CIMelement::attr_get(unsigned index, char** text) noexcept {
  unsigned char* const record = this == nullptr ? nullptr : record_at(this, index);
  if (text != nullptr) *text = record == nullptr ? const_cast<char*>("?") : text_of(record);
  return record == nullptr ? attr::UNKNOWN : *record - 1;
}

char* CIMelement::attr_find(int attribute) noexcept {
  const std::uint32_t count = this == nullptr || attributes == nullptr ? 0 : attributes->argc;
  for (std::uint32_t index = 0; index < count; ++index) {
    unsigned char* const record = record_at(this, index);
    if (record != nullptr && *record - 1 == attribute) return text_of(record);
  }
  return nullptr;
}

int CIMelement::attr_find_exact(int attribute, const char* text) noexcept {
  if (text == nullptr || *text == '\0') return status::failure;
  const char* const found = attr_find(attribute);
  if (found == nullptr || !equal_ignoring_case(found, text)) return status::failure;
  return status::success;
}

}  // namespace zuCIM
