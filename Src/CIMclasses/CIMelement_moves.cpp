#include "zuCIM/element.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "BRQ/Trace.h"
#include "CIMclasses/access.h"
#include "CIMclasses/tree_memory.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMclasses";

// The node before `node` in its document; null for a node without parent.
CIMelement* predecessor(const CIMelement* node) {
  CIMelement* before = node->parent;
  while (before != nullptr && before->next != node) before = before->next;
  return before;
}

bool lies_in_run(const CIMelement* node, const CIMelement* first, const CIMelement* last) {
  for (const CIMelement* each = first; each != last; each = each->next)
    if (each == node) return true;
  return node == last;
}

void append_run(CIMelement** chain, CIMelement* run) {
  while (*chain != nullptr) chain = &(*chain)->next;
  *chain = run;
}

// Frees what a node holds besides its place in the chain.
void free_content(CIMelement& node) {
  node.name = nullptr;
  std::free(std::exchange(node.value, nullptr));
  delete std::exchange(node.attributes, nullptr);
}

// Counts what is freed in one chunk after the other, to give it back to each all at once.
class FreedObjects {
 public:
  FreedObjects() = default;
  ~FreedObjects() { give_back(); }
  FreedObjects(const FreedObjects&) = delete;
  FreedObjects& operator=(const FreedObjects&) = delete;

  // Takes a node or an array that lies in a chunk, and holds nothing outside.
  template <class Object>
  void add(const Object& object) noexcept {
    TreeChunk* const chunk = NodeMemory::chunk_of(object);
    if (chunk != chunk_) give_back();
    forbid_access(&object, sizeof object);
    chunk_ = chunk;
    ++count_;
  }

 private:
  void give_back() noexcept {
    if (count_ != 0) chunk_->release(std::exchange(count_, 0));
  }

  TreeChunk* chunk_ = nullptr;
  std::size_t count_ = 0;
};

void free_attributes(CIMarray* attributes, FreedObjects& freed) noexcept {
  if (attributes != nullptr && NodeMemory::is_packed(*attributes))
    freed.add(*attributes);
  else
    delete attributes;
}

// Frees all nodes from `node` on.
void free_chain(CIMelement* node) noexcept {
  FreedObjects freed;
  while (node != nullptr) {
    CIMelement* const after = node->next;
    if (NodeMemory::chunk_of(*node) != nullptr) {
      std::free(node->value);
      free_attributes(node->attributes, freed);
      freed.add(*node);
    } else {
      node->next = nullptr;
      delete node;
    }
    node = after;
  }
}

// How many records an array holds; those that were lost with their slots do not count.
std::ptrdiff_t record_count(const CIMarray& array) {
  if (array.argv == nullptr) return 0;
  return std::count_if(array.argv, array.argv + array.argc,
                       [](const void* record) { return record != nullptr; });
}

// Gives `copy` the content of `source`. False when memory is short.
bool copy_content(CIMelement& copy, const CIMelement& source) {
  free_content(copy);
  copy.name = source.name;
  if (source.value != nullptr && (copy.value = strdup(source.value)) == nullptr) return false;
  if (source.attributes == nullptr) return true;
  copy.attributes = new (std::nothrow) CIMarray(*source.attributes);
  return copy.attributes != nullptr &&
         record_count(*copy.attributes) == record_count(*source.attributes);
}

int first_attribute_id(const CIMelement* node) {
  return const_cast<CIMelement*>(node)->attr_get(0, nullptr);
}

// Looks for the copy of `parent` from `copy` upwards. Elements are told apart by their kind and the
// id of their first attribute only.
CIMelement* find_copied_parent(CIMelement* copy, const CIMelement* parent) {
  const int attribute = first_attribute_id(parent);
  while (copy != nullptr && (copy->name != parent->name || first_attribute_id(copy) != attribute))
    copy = copy->parent;
  if (copy == nullptr)
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
              "CIMelement::operator=: ERROR: Parent in COPY-Constuctor not found!");
  return copy;
}

// Makes the node for the copy of `source`, whose predecessor's copy is `previous`.
CIMelement* make_next_copy(CIMelement* previous, const CIMelement& source) {
  CIMelement* const outer = previous->parent;
  CIMelement* const copy = previous->makeNextElement();
  if (copy == nullptr) return nullptr;
  // A nameless node is filled again instead of being followed; it cannot be its own parent.
  CIMelement* const newest = copy == previous ? outer : previous;
  copy->parent = source.parent == nullptr ? nullptr : find_copied_parent(newest, source.parent);
  return copy;
}

// Copies the chain that starts at `source` into an empty node; stops when memory is short.
void copy_chain(CIMelement& target, const CIMelement& source) {
  CIMelement* copy = &target;
  const CIMelement* original = &source;
  while (copy_content(*copy, *original)) {
    original = original->next;
    if (original == nullptr) return;
    copy = make_next_copy(copy, *original);
    if (copy == nullptr) return;
  }
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
            "CIMelement::operator=: Exception raised: cannot alloc memory!");
}

// Moves the chain of `source` to an empty node.
void move_chain(CIMelement& target, CIMelement& source) {
  target.name = std::exchange(source.name, nullptr);
  target.value = std::exchange(source.value, nullptr);
  target.attributes = std::exchange(source.attributes, nullptr);
  target.next = std::exchange(source.next, nullptr);
  for (CIMelement* node = target.next; node != nullptr; node = node->next)
    if (node->parent == &source) node->parent = &target;
}

}  // namespace

CIMelement::CIMelement(const CIMelement& source) noexcept {
  const CIMelement* const from = &source;
  if (from != nullptr) copy_chain(*this, source);
}

CIMelement::~CIMelement() {
  eclean();
}

CIMelement& CIMelement::operator=(const CIMelement& source) noexcept {
  const CIMelement* const from = &source;
  if (this == nullptr || from == this) return *this;
  // The source may be part of the chain that goes, or the other way round.
  CIMelement copy(source);
  eclean();
  move_chain(*this, copy);
  return *this;
}

CIMelement* CIMelement::deleteElement(bool with_subtree) noexcept {
  if (this == nullptr) return nullptr;
  CIMelement* const last = with_subtree ? getLastElement() : this;
  CIMelement* const before = predecessor(this);
  if (before != nullptr) before->next = last->next;
  last->next = nullptr;
  delete this;
  return before;
}

CIMelement* CIMelement::redirect_chain(CIMelement** chain, bool with_subtree) noexcept {
  if (this == nullptr || chain == nullptr) return nullptr;
  CIMelement* const last = getLastElement();
  // A run that is appended to a part of itself would have no end.
  if (*chain != nullptr && lies_in_run(*chain, this, last)) {
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
              "redirect_chain: redirection doesn't make sense if *adr == this");
    return nullptr;
  }
  CIMelement* const after = std::exchange(last->next, nullptr);
  CIMelement* const before = predecessor(this);
  if (before != nullptr) before->next = after;
  if (!with_subtree) delete std::exchange(next, nullptr);
  parent = nullptr;
  append_run(chain, this);
  return after;
}

void CIMelement::eclean() noexcept {
  if (this == nullptr) return;
  parent = nullptr;
  free_content(*this);
  free_chain(std::exchange(next, nullptr));
}

}  // namespace zuCIM
