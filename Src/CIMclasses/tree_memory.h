#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <span>
#include <string_view>

#include "zuCIM/element.h"

// The memory of parsed documents. Their nodes and attributes lie side by side in chunks instead of
// in blocks of the heap; a chunk lives as long as one of its nodes. What is made one by one, by a
// caller or where a chunk has no room, are blocks of the heap as ever, and both kinds may stand in
// one tree. A value always is a block of its own, which callers may free and replace.
namespace zuCIM {

// A piece of memory that nodes are laid into. Chains of several threads may have nodes in it.
struct TreeChunk {
  // The nodes that are left, and many more while the chunk is being filled.
  std::atomic<std::size_t> users;
  // Bytes of the chunk, this header included.
  std::size_t size;
  // Takes `count` users off; the chunk is freed with the last one.
  void release(std::size_t count) noexcept;
};

// What a node and its attributes know of the chunk that they lie in.
class NodeMemory {
 public:
  // Null for a node that is a block of the heap, or a caller's variable.
  static TreeChunk* chunk_of(const CIMelement& node) noexcept { return node.chunk_; }
  static void set_chunk(CIMelement& node, TreeChunk* chunk) noexcept { node.chunk_ = chunk; }
  // Frees attributes that a node gives up; null has none.
  static void free_attributes(CIMarray* array) noexcept;

  // Whether the array's slots and blocks lie in a chunk, and so may neither be freed nor grow.
  static bool is_in_chunk(const CIMarray& array) noexcept {
    return array.is_of_chunk_ && !array.has_left_chunk_;
  }
  // Marks an array that was laid into a chunk with all that it holds.
  static void enter_chunk(CIMarray& array) noexcept { array.is_of_chunk_ = true; }
  // Marks an array whose slots and blocks are of the heap now.
  static void leave_chunk(CIMarray& array) noexcept { array.has_left_chunk_ = array.is_of_chunk_; }
};

// An attribute that is to be stored.
struct AttributeText {
  int id;
  std::string_view text;
};

// Lays nodes into chunks, one after the other.
class TreeMemory {
 public:
  // For the nodes of this document, which outlives the object.
  explicit TreeMemory(std::string_view document) noexcept;
  ~TreeMemory();
  TreeMemory(const TreeMemory&) = delete;
  TreeMemory& operator=(const TreeMemory&) = delete;

  // What is laid are pieces of the document.

  // An empty node, to be freed with delete; null when memory is short.
  CIMelement* make_node() noexcept;
  // Gives a node without attributes these. False when there is no room beside the node.
  bool set_attributes(CIMelement& node, std::span<const AttributeText> attributes) noexcept;

 private:
  bool open_chunk() noexcept;
  void close_chunk() noexcept;
  char* take_back(std::size_t size, std::size_t alignment) noexcept;
  void write_text(char* place, std::string_view text) const noexcept;

  // Texts up to this length are copied as that many bytes, which takes no loop; what is too much
  // goes before the text, where nothing is yet.
  static constexpr std::size_t short_text = 16;

  const char* document_begin_;
  // How much memory the rest of the text is going to need.
  std::size_t expected_;
  TreeChunk* chunk_ = nullptr;
  // The part of the chunk that is still free. Nodes are laid at its front and the rest at its back,
  // so that a walk from node to node goes through little memory.
  char* front_ = nullptr;
  char* back_ = nullptr;
  std::size_t nodes_ = 0;
};

// Null when there is no room.
inline char* TreeMemory::take_back(std::size_t size, std::size_t alignment) noexcept {
  const auto room = static_cast<std::size_t>(back_ - front_);
  if (room < short_text + alignment || room - short_text - alignment < size) return nullptr;
  const auto place = reinterpret_cast<std::uintptr_t>(back_) - size;
  return back_ -= size + place % alignment;
}

// Writes the text and its NUL.
inline void TreeMemory::write_text(char* place, std::string_view text) const noexcept {
  const char* const end = text.data() + text.size();
  if (text.size() <= short_text && static_cast<std::size_t>(end - document_begin_) >= short_text)
    std::memcpy(place + text.size() - short_text, end - short_text, short_text);
  else
    std::memcpy(place, text.data(), text.size());
  place[text.size()] = '\0';
}

inline CIMelement* TreeMemory::make_node() noexcept {
  if (static_cast<std::size_t>(back_ - front_) < sizeof(CIMelement) && !open_chunk())
    return new (std::nothrow) CIMelement;
  auto* const node = new (front_) CIMelement;
  front_ += sizeof(CIMelement);
  NodeMemory::set_chunk(*node, chunk_);
  ++nodes_;
  return node;
}

}  // namespace zuCIM
