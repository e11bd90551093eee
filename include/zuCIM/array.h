#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "BRQ/CriticalSection.h"
#include "zuCIM/export.h"

namespace zuCIM {

struct TreeChunk;

// A growable array of pointers to blocks of one kind, which it owns: records of a fixed size, or
// texts with an optional prefix. It is laid out like a program's argument vector. The blocks are of
// the heap, or of the memory of a parsed document: only the array's own members may free them.
//
// Thread rule: appending, removing and resizing are serialised by the array's lock. Reading argv
// and argc, and being the source of a copy, are not: keep those apart from changes.
class ZUCIM_API CIMarray {
 public:
  // Slot i holds the block of element i; slots from argc up to maxargc are null.
  void** argv = nullptr;
  // 0 until the first element is stored. A positive value is the size of a record in bytes; a
  // negative value -(k+1) means texts with a prefix of k bytes.
  std::int32_t elementSize = 0;
  // Number of elements.
  std::uint32_t argc = 0;
  // Capacity in slots.
  std::uint32_t maxargc = 0;

 private:
  friend class NodeMemory;

  // The memory that this array lies in, with others of the document it was parsed from.
  TreeChunk* chunk_ = nullptr;
  // Whether its slots and blocks lie there, too; when it changes, they become blocks of the heap.
  bool is_packed_ = false;

 public:
  // Guards the fields above.
  BRQ::Threading::Native_OS::CCriticalSection lock;

  // Makes an empty array. A global one is ready before any code of the program runs.
  constexpr CIMarray() noexcept : lock(lock_spin) {}
  // Copies all elements, see operator=.
  CIMarray(const CIMarray& source) noexcept;
  // Frees all elements.
  ~CIMarray();
  // Arrays are made with new, and by ParseCIMXML; all are freed with delete.
  static void* operator new(std::size_t size);
  static void* operator new(std::size_t size, const std::nothrow_t& nothrow) noexcept;
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void* array, std::size_t size) noexcept;
  // Replaces the contents by copies of the elements of `source`, prefixes included. When memory is
  // short the copy stops early; `source` is read without its lock.
  CIMarray& operator=(const CIMarray& source) noexcept;

  // Appends one element and returns its block, which the array owns; null on failure.
  // `data`: the record, or the text; null makes a zero-filled record. `size`: the element size as
  // above. `grow`: how many spare slots to add when the array has to grow. For prefixed texts the
  // prefix bytes are left for the caller to write. When the slot array cannot grow, the array loses
  // its slots and frees all its blocks; argc stays.
  void* putargv(const void* data, int size, int grow) noexcept;
  // Sets the capacity to `n` slots and frees the elements from `n` on; 0 frees everything and
  // resets the element size. Returns 0, or 1001 when memory is short (nothing changes then but the
  // freed elements).
  int setmaxargc(unsigned n) noexcept;
  // Frees element `i` and closes the gap; nothing happens when there is no such element.
  void erase(unsigned i) noexcept;
  // Gives the spare slots back.
  void FreeUnused() noexcept;

 private:
  static constexpr unsigned lock_spin = 1000;
};

}  // namespace zuCIM
