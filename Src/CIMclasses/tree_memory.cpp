#include "CIMclasses/tree_memory.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "CIMclasses/access.h"
#include "CIMclasses/attribute_record.h"

namespace zuCIM {
namespace {

constexpr std::size_t smallest_chunk = 512;
constexpr std::size_t largest_chunk = 32 * 1024;
// A tree takes about this many times the memory of its text.
constexpr std::size_t text_factor = 3;
// More than a chunk can hold: keeps it alive while it is being filled.
constexpr std::size_t filling = largest_chunk;
// Texts up to this length are copied as that many bytes, which takes no loop; what is too much goes
// before the text, where nothing is yet. The array's own place is there at least.
constexpr std::size_t short_text = 16;
static_assert(short_text <= sizeof(CIMarray));
static_assert(sizeof(TreeChunk) % alignof(CIMelement) == 0);

std::size_t record_size(const AttributeText& attribute) noexcept {
  return attribute.text.size() + attribute_record::overhead;
}

std::size_t size_of(std::span<const AttributeText> attributes) noexcept {
  std::size_t size = sizeof(CIMarray) + attributes.size() * sizeof(void*);
  for (const AttributeText& attribute : attributes) size += record_size(attribute);
  return size;
}

// Frees a node or an array. One that lies in a chunk is no block of the heap; objects of derived
// classes are never in one.
template <class Object>
void free_object(void* object, std::size_t size) noexcept {
  TreeChunk* const chunk =
      size == sizeof(Object) ? NodeMemory::chunk_of(*static_cast<const Object*>(object)) : nullptr;
  if (chunk == nullptr) return ::operator delete(object);
  forbid_access(object, size);
  chunk->release(1);
}

}  // namespace

void TreeChunk::release(std::size_t count) noexcept {
  if (users.fetch_sub(count, std::memory_order_acq_rel) != count) return;
  allow_access(this, size);
  std::free(this);
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
  if (chunk_ != nullptr) chunk_->release(filling - laid_);
  laid_ = 0;
}

// Null when there is no room.
char* TreeMemory::take_back(std::size_t size) noexcept {
  const auto room = static_cast<std::size_t>(back_ - front_);
  if (room < alignof(CIMarray) || room - alignof(CIMarray) < size) return nullptr;
  const auto place = reinterpret_cast<std::uintptr_t>(back_) - size;
  return back_ -= size + place % alignof(CIMarray);
}

// Writes the text and its NUL.
void TreeMemory::write_text(char* place, std::string_view text) const noexcept {
  const char* const end = text.data() + text.size();
  if (text.size() <= short_text && static_cast<std::size_t>(end - document_begin_) >= short_text)
    std::memcpy(place + text.size() - short_text, end - short_text, short_text);
  else
    std::memcpy(place, text.data(), text.size());
  place[text.size()] = '\0';
}

// The texts are written from the last to the first, because a short one spoils what lies before it.
bool TreeMemory::set_attributes(CIMelement& node,
                                std::span<const AttributeText> attributes) noexcept {
  if (chunk_ == nullptr || NodeMemory::chunk_of(node) != chunk_) return false;
  const std::size_t size = size_of(attributes);
  char* const begin = take_back(size);
  if (begin == nullptr) return false;
  auto* const slots = reinterpret_cast<void**>(begin + sizeof(CIMarray));
  char* record = begin + size;
  for (std::size_t i = attributes.size(); i-- > 0;) {
    record -= record_size(attributes[i]);
    write_text(record + 1, attributes[i].text);
    *record = static_cast<char>(attributes[i].id + 1);
  }
  for (std::size_t i = 0; i < attributes.size(); ++i) {
    slots[i] = record;
    record += record_size(attributes[i]);
  }
  auto* const array = new (begin) CIMarray;
  array->argv = slots;
  array->elementSize = attribute_record::element_size;
  array->argc = array->maxargc = static_cast<std::uint32_t>(attributes.size());
  NodeMemory::pack(*array, chunk_);
  ++laid_;
  node.attributes = array;
  return true;
}

void* CIMelement::operator new(std::size_t size) {
  return ::operator new(size);
}

void* CIMelement::operator new(std::size_t size, const std::nothrow_t& nothrow) noexcept {
  return ::operator new(size, nothrow);
}

void CIMelement::operator delete(void* node, std::size_t size) noexcept {
  free_object<CIMelement>(node, size);
}

void* CIMarray::operator new(std::size_t size) {
  return ::operator new(size);
}

void* CIMarray::operator new(std::size_t size, const std::nothrow_t& nothrow) noexcept {
  return ::operator new(size, nothrow);
}

void CIMarray::operator delete(void* array, std::size_t size) noexcept {
  free_object<CIMarray>(array, size);
}

}  // namespace zuCIM
