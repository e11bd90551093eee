#include "CIMclasses/tree_memory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "CIMclasses/access.h"

namespace zuCIM {
namespace {

constexpr std::size_t smallest_chunk = 512;
static_assert(sizeof(TreeChunk) % alignof(CIMelement) == 0);
constexpr std::size_t largest_chunk = 32 * 1024;
// A tree takes about this many times the memory of its text.
constexpr std::size_t text_factor = 3;
// More nodes than a chunk can have: keeps it alive while it is being filled.
constexpr std::size_t filling = largest_chunk;
// The size of an attribute's record, beside its text: the id in front and the NUL behind.
constexpr std::size_t record_overhead = 2;
constexpr std::int32_t record_size = -2;
std::size_t size_of(std::span<const AttributeText> attributes) noexcept {
  std::size_t size = sizeof(CIMarray) + attributes.size() * sizeof(void*);
  for (const AttributeText& attribute : attributes) size += attribute.text.size() + record_overhead;
  return size;
}

}  // namespace

void TreeChunk::release(std::size_t count) noexcept {
  if (users.fetch_sub(count, std::memory_order_acq_rel) != count) return;
  allow_access(this, size);
  std::free(this);
}

// An array of a chunk goes with the chunk.
void NodeMemory::free_attributes(CIMarray* array) noexcept {
  if (array == nullptr || is_in_chunk(*array)) return;
  if (array->has_left_chunk_)
    array->~CIMarray();
  else
    delete array;
}

TreeMemory::TreeMemory(std::string_view document) noexcept
    : document_begin_(document.data()),
      expected_(std::min(document.size(), SIZE_MAX / text_factor) * text_factor) {}

TreeMemory::~TreeMemory() {
  close_chunk();
}

bool TreeMemory::open_chunk() noexcept {
  const std::size_t size = std::clamp(expected_, smallest_chunk, largest_chunk);
  void* const memory = std::malloc(size);
  if (memory == nullptr) return false;
  close_chunk();
  expected_ -= std::min(expected_, size);
  chunk_ = new (memory) TreeChunk{filling, size};
  front_ = static_cast<char*>(memory) + sizeof(TreeChunk);
  back_ = static_cast<char*>(memory) + size;
  return true;
}

void TreeMemory::close_chunk() noexcept {
  if (chunk_ != nullptr) chunk_->release(filling - nodes_);
  nodes_ = 0;
}

// The texts are written from the last to the first, because a short one spoils what lies before it.
bool TreeMemory::set_attributes(CIMelement& node,
                                std::span<const AttributeText> attributes) noexcept {
  if (chunk_ == nullptr || NodeMemory::chunk_of(node) != chunk_) return false;
  const std::size_t size = size_of(attributes);
  char* const begin = take_back(size, alignof(CIMarray));
  if (begin == nullptr) return false;
  auto* const slots = reinterpret_cast<void**>(begin + sizeof(CIMarray));
  char* record = begin + size;
  for (std::size_t i = attributes.size(); i-- > 0;) {
    record -= attributes[i].text.size() + record_overhead;
    write_text(record + 1, attributes[i].text);
    *record = static_cast<char>(attributes[i].id + 1);
  }
  for (std::size_t i = 0; i < attributes.size(); ++i) {
    slots[i] = record;
    record += attributes[i].text.size() + record_overhead;
  }
  auto* const array = new (begin) CIMarray;
  array->argv = slots;
  array->elementSize = record_size;
  array->argc = array->maxargc = static_cast<std::uint32_t>(attributes.size());
  NodeMemory::enter_chunk(*array);
  node.attributes = array;
  return true;
}

void* CIMelement::operator new(std::size_t size) {
  return ::operator new(size);
}

void* CIMelement::operator new(std::size_t size, const std::nothrow_t& nothrow) noexcept {
  return ::operator new(size, nothrow);
}

// Nodes that lie in a chunk are not blocks of the heap. The destructor leaves the chunk's address
// where it was; objects of derived classes are never of a chunk.
void CIMelement::operator delete(void* node, std::size_t size) noexcept {
  TreeChunk* const chunk = size == sizeof(CIMelement)
                               ? NodeMemory::chunk_of(*static_cast<const CIMelement*>(node))
                               : nullptr;
  if (chunk == nullptr) return ::operator delete(node);
  forbid_access(node, size);
  chunk->release(1);
}

}  // namespace zuCIM
