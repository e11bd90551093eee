#include "zuCIM/class.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "CIMclasses/text.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

bool is_empty(const char* text) {
  return text == nullptr || *text == '\0';
}

char* copy_unless_empty(const char* text) {
  return is_empty(text) ? nullptr : strdup(text);
}

bool has_names(const CIMclass& entry, const char* class_name, const char* name_space) {
  if (entry.nameSpace == nullptr || !equal_ignoring_case(entry.nameSpace, name_space)) return false;
  if (entry.className == nullptr) return *class_name == '\0';
  return equal_ignoring_case(entry.className, class_name);
}

// Empties one entry but for its link to the next, which is returned.
CIMclass* empty_entry(CIMclass& entry) {
  std::free(std::exchange(entry.className, nullptr));
  std::free(std::exchange(entry.nameSpace, nullptr));
  entry.kill_element(&entry.instanceNames);
  entry.kill_element(&entry.instances);
  entry.kill_element(&entry.methods);
  return std::exchange(entry.next, nullptr);
}

// Puts a copy of `tree`, if there is one, into `*slot` instead of what is there.
void copy_tree(CIMelement** slot, const CIMelement* tree) {
  if (tree == nullptr) return;
  delete std::exchange(*slot, new (std::nothrow) CIMelement(*tree));
}

// Names an entry; false, with the entry nameless, when memory is short.
bool name_entry(CIMclass& entry, const char* class_name, const char* name_space) {
  entry.setClassName(class_name, name_space);
  const bool complete = (is_empty(class_name) || entry.className != nullptr) &&
                        (is_empty(name_space) || entry.nameSpace != nullptr);
  if (!complete) entry.setClassName(nullptr, nullptr);
  return complete;
}

// Names `first` if it names no class, else appends a new entry behind `last`. Null when memory is
// short.
CIMclass* add_entry(CIMclass& first, CIMclass& last, const char* class_name,
                    const char* name_space) {
  if (first.className == nullptr)
    return name_entry(first, class_name, name_space) ? &first : nullptr;
  auto entry = std::unique_ptr<CIMclass>(new (std::nothrow) CIMclass);
  if (entry == nullptr || !name_entry(*entry, class_name, name_space)) return nullptr;
  last.next = entry.release();
  return last.next;
}

// Copies a chain into an empty entry. All trees go into that entry, so that a later one replaces an
// earlier one.
void copy_chain(CIMclass& target, const CIMclass& source) {
  CIMclass* last = &target;
  for (const CIMclass* entry = &source; entry != nullptr; entry = entry->next) {
    last = add_entry(target, *last, entry->className, entry->nameSpace);
    if (last == nullptr) return;
    copy_tree(&target.instanceNames, entry->instanceNames);
    copy_tree(&target.instances, entry->instances);
    copy_tree(&target.methods, entry->methods);
  }
}

}  // namespace

CIMclass::CIMclass() noexcept {
  clsInit();
}

CIMclass::CIMclass(const CIMclass& source) noexcept : CIMclass() {
  const CIMclass* const from = &source;
  if (from != nullptr) copy_chain(*this, source);
}

CIMclass::~CIMclass() {
  clsClean();
}

CIMclass& CIMclass::operator=(const CIMclass& source) noexcept {
  const CIMclass* const from = &source;
  if (this == nullptr || from == this) return *this;
  // The source may be part of the chain that goes, or the other way round.
  CIMclass copy(source);
  clsClean();
  className = std::exchange(copy.className, nullptr);
  nameSpace = std::exchange(copy.nameSpace, nullptr);
  instanceNames = std::exchange(copy.instanceNames, nullptr);
  instances = std::exchange(copy.instances, nullptr);
  methods = std::exchange(copy.methods, nullptr);
  next = std::exchange(copy.next, nullptr);
  return *this;
}

void CIMclass::clsInit() noexcept {
  if (this == nullptr) return;
  className = nullptr;
  nameSpace = nullptr;
  instanceNames = nullptr;
  instances = nullptr;
  methods = nullptr;
  next = nullptr;
}

void CIMclass::setClassName(const char* class_name, const char* name_space) noexcept {
  if (this == nullptr) return;
  // The arguments may be this entry's own texts.
  char* const class_copy = copy_unless_empty(class_name);
  char* const space_copy = copy_unless_empty(name_space);
  std::free(std::exchange(className, class_copy));
  std::free(std::exchange(nameSpace, space_copy));
}

CIMclass* CIMclass::makeNextClass(const char* class_name, const char* name_space) noexcept {
  if (this == nullptr) return nullptr;
  CIMclass* last = this;
  while (last->next != nullptr) last = last->next;
  return add_entry(*this, *last, class_name, name_space);
}

CIMclass* CIMclass::findClassName(const char* class_name, const char* name_space) noexcept {
  if (class_name == nullptr) return nullptr;
  if (is_empty(name_space)) name_space = nsCIMV2;
  CIMclass* entry = this;
  while (entry != nullptr && !has_names(*entry, class_name, name_space)) entry = entry->next;
  return entry;
}

void CIMclass::kill_element(CIMelement** slot) noexcept {
  if (slot != nullptr) delete std::exchange(*slot, nullptr);
}

void CIMclass::clsClean() noexcept {
  if (this == nullptr) return;
  CIMclass* entry = empty_entry(*this);
  while (entry != nullptr) {
    CIMclass* const after = empty_entry(*entry);
    delete entry;
    entry = after;
  }
}

}  // namespace zuCIM
