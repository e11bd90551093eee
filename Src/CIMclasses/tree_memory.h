#pragma once

#include <atomic>
#include <cstddef>
#include <new>
#include <span>
#include <string_view>

#include "zuCIM/element.h"

// The memory of parsed documents. Their nodes and attributes lie side by side in chunks instead of
// in blocks of the heap; a chunk lives as long as one of them. What is made one by one, by a
// caller or where a chunk has no room, are blocks of the heap as ever, and both kinds may stand in
// one tree. A value always is a block of its own, which callers may free and replace.
namespace zuCIM {

// A piece of memory that nodes and attributes are laid into. Several threads may have some there.
struct TreeChunk {
  // The nodes and arrays that are left, and many more while the chunk is being filled.
  std::atomic<std::size_t> users;
  // Bytes of the chunk, this header included.
  std::size_t size;
  // Takes `count` users off; the chunk is freed with the last one.
  void release(std::size_t count) noexcept;
};

// What nodes and arrays know of the chunk that they lie in.
class NodeMemory {
 public:
  // Null for a block of the heap, or a variable. Also after the destructor, which leaves it alone.
  template <class Object>
  static TreeChunk* chunk_of(const Object& object) noexcept {
    return object.chunk_;
  }
  static void set_chunk(CIMelement& node, TreeChunk* chunk) noexcept { node.chunk_ = chunk; }

  // Marks an array that was laid into a chunk with all that it holds.
  static void pack(CIMarray& array, TreeChunk* chunk) noexcept {
    array.chunk_ = chunk;
    array.is_packed_ = true;
  }
  // Whether the array's slots and blocks lie in a chunk, and so may neither be freed nor grow.
  static bool is_packed(const CIMarray& array) noexcept { return array.is_packed_; }
  // Marks an array whose slots and blocks are of the heap now.
  static void unpack(CIMarray& array) noexcept { array.is_packed_ = false; }
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
  char* take_back(std::size_t size) noexcept;
  void write_text(char* place, std::string_view text) const noexcept;

  const char* document_begin_;
  // How much memory the rest of the text is going to need.
  std::size_t expected_;
  TreeChunk* chunk_ = nullptr;
  // The part of the chunk that is still free. Nodes are laid at its front and the rest at its back,
  // so that a walk from node to node goes through little memory.
  char* front_ = nullptr;
  char* back_ = nullptr;
  // How many nodes and arrays have been laid into it.
  std::size_t laid_ = 0;
};

inline CIMelement* TreeMemory::make_node() noexcept {
  if (static_cast<std::size_t>(back_ - front_) < sizeof(CIMelement) && !open_chunk())
    return new (std::nothrow) CIMelement;
  auto* const node = new (front_) CIMelement;
  front_ += sizeof(CIMelement);
  NodeMemory::set_chunk(*node, chunk_);
  ++laid_;
  return node;
}

}  // namespace zuCIM
