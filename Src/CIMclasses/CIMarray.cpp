#include "zuCIM/array.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

#include "BRQ/Trace.h"
#include "CIMclasses/attribute_record.h"
#include "CIMclasses/tree_memory.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMclasses";
constexpr int copy_growth = 15;

// What became of an append: the block, or why there is none.
struct Appended {
  void* block;
  const char* failure;
};

// erase looks at argc before it takes the lock, so each change is an atomic store.
void set_argc(CIMarray& array, std::uint32_t count) {
  std::atomic_ref<std::uint32_t>(array.argc).store(count, std::memory_order_relaxed);
}

// The number of bytes before the text in elements of this size. Written so that no size overflows.
std::size_t prefix_length(int size) {
  return size < 0 ? static_cast<std::size_t>(-(size + 1)) : 0;
}

// Null when memory is short; the old slot array is still there then.
void** reallocate_slots(void** slots, std::uint64_t count) {
  constexpr std::uint64_t most = std::min<std::uint64_t>(std::numeric_limits<std::uint32_t>::max(),
                                                         PTRDIFF_MAX / sizeof(void*));
  if (count > most) return nullptr;
  return static_cast<void**>(std::realloc(slots, static_cast<std::size_t>(count) * sizeof(void*)));
}

// Sets the capacity and clears what is new. When memory is short nothing changes.
bool resize(CIMarray& array, std::uint64_t slots) {
  void** const resized = reallocate_slots(array.argv, slots);
  if (resized == nullptr) return false;
  const std::uint64_t known = array.argv == nullptr ? 0 : array.maxargc;
  if (known < slots) std::fill(resized + known, resized + slots, nullptr);
  array.argv = resized;
  array.maxargc = static_cast<std::uint32_t>(slots);
  return true;
}

// Frees all blocks and the slot array, and leaves the counts.
void drop_slots(CIMarray& array) {
  if (array.argv == nullptr) return;
  std::for_each_n(array.argv, array.argc, std::free);
  std::free(array.argv);
  array.argv = nullptr;
}

// Makes sure that there is a slot for one more element. An array that cannot grow loses its slots:
// argv is null from then on while the counts stay, and the next growth starts with null slots.
bool make_room(CIMarray& array, int grow) {
  const std::uint64_t needed = std::uint64_t{array.argc} + 1;
  const bool full = needed > array.maxargc;
  if (!full && array.argv != nullptr) return true;
  const auto spare = static_cast<std::uint64_t>(std::max(grow, 0));
  if (resize(array, full ? needed + spare : array.maxargc)) return true;
  drop_slots(array);
  return false;
}

// A new block with `data`, or zeroes if that is null, after the prefix; null when memory is short.
void* make_block(const void* data, std::size_t prefix, std::size_t length) {
  if (length > PTRDIFF_MAX - prefix) return nullptr;
  // An empty block still needs an address.
  auto* const block = static_cast<char*>(std::malloc(std::max<std::size_t>(prefix + length, 1)));
  if (block == nullptr) return nullptr;
  if (data == nullptr)
    std::memset(block, 0, length);
  else
    std::memcpy(block + prefix, data, length);
  return block;
}

// A copy of an attribute's record; null when memory is short.
void* copy_record(const void* record) {
  const std::size_t length =
      std::strlen(static_cast<const char*>(record) + 1) + attribute_record::overhead;
  void* const copy = std::malloc(length);
  if (copy != nullptr) std::memcpy(copy, record, length);
  return copy;
}

// Makes slots and blocks of an array that lie in a document's memory blocks of the heap, so that
// they can change. When memory is short nothing changes, and the result is false.
bool make_changeable(CIMarray& array) {
  if (!NodeMemory::is_packed(array)) return true;
  CIMarray copy;
  if (!resize(copy, std::max(array.argc, 1U))) return false;
  for (; copy.argc < array.argc; ++copy.argc)
    if ((copy.argv[copy.argc] = copy_record(array.argv[copy.argc])) == nullptr) return false;
  array.argv = std::exchange(copy.argv, nullptr);
  array.maxargc = std::exchange(copy.maxargc, 0);
  copy.argc = 0;
  NodeMemory::unpack(array);
  return true;
}

Appended append(CIMarray* array, const void* data, int size, int grow) {
  if (array == nullptr || (data == nullptr && size < 1)) return {nullptr, "NULL pointer!!"};
  const std::size_t length =
      size < 0 ? std::strlen(static_cast<const char*>(data)) + 1 : static_cast<std::size_t>(size);
  const BRQ::Threading::CSyncGuard guard(array->lock);
  if (array->elementSize == 0) array->elementSize = size;
  if (array->elementSize != size) return {nullptr, "different length of array elements!"};
  if (!make_changeable(*array) || !make_room(*array, grow))
    return {nullptr, "cannot realloc array!"};
  void* const block = make_block(data, prefix_length(size), length);
  if (block == nullptr) return {nullptr, "cannot alloc array!"};
  array->argv[array->argc] = block;
  set_argc(*array, array->argc + 1);
  return {block, nullptr};
}

// A block that lies in a chunk is left to it.
void free_block(const CIMarray& array, void* block) {
  if (!NodeMemory::is_packed(array)) std::free(block);
}

// Frees the elements from `n` on.
void truncate(CIMarray& array, unsigned n) {
  while (array.argc > n) {
    set_argc(array, array.argc - 1);
    if (array.argv != nullptr) free_block(array, std::exchange(array.argv[array.argc], nullptr));
  }
}

// Slots and blocks that lie in a chunk are left to it.
void free_everything(CIMarray& array) {
  if (NodeMemory::is_packed(array)) {
    array.argv = nullptr;
    NodeMemory::unpack(array);
  }
  truncate(array, 0);
  drop_slots(array);
  array.maxargc = 0;
  array.elementSize = 0;
}

// False when memory is short.
bool set_capacity(CIMarray& array, unsigned n) {
  const BRQ::Threading::CSyncGuard guard(array.lock);
  if (n == 0) {
    free_everything(array);
    return true;
  }
  if (array.maxargc == n) return true;
  truncate(array, n);
  return make_changeable(array) && resize(array, n);
}

// The lock spans both steps, so that an element appended meanwhile is not taken for a spare slot.
// False when memory is short.
bool trim(CIMarray& array) {
  const BRQ::Threading::CSyncGuard guard(array.lock);
  return set_capacity(array, array.argc);
}

// Appends copies of all elements of `source`; stops when memory is short. Slots that were lost are
// reported and passed over.
void append_all(CIMarray& target, const CIMarray& source) {
  if (source.argv == nullptr) return;
  const int size = source.elementSize;
  const std::size_t prefix = prefix_length(size);
  for (std::uint32_t i = 0; i < source.argc; ++i) {
    const auto* const block = static_cast<const char*>(source.argv[i]);
    if (block == nullptr) {
      target.putargv(nullptr, size, copy_growth);
      continue;
    }
    void* const copy = target.putargv(block + prefix, size, copy_growth);
    if (copy == nullptr) return;
    std::memcpy(copy, block, prefix);
  }
}

// Traces are written when no lock is held, since their receiver may use the library.
int trace_failure(const char* message, int line = __builtin_LINE()) {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source, line, message);
  return status::failure;
}

}  // namespace

CIMarray::CIMarray(const CIMarray& source) noexcept : CIMarray() {
  *this = source;
}

CIMarray::~CIMarray() {
  setmaxargc(0);
}

CIMarray& CIMarray::operator=(const CIMarray& source) noexcept {
  const CIMarray* const from = &source;
  if (from == this || from == nullptr) return *this;
  if (setmaxargc(0) == status::success && setmaxargc(source.maxargc) == status::success)
    append_all(*this, source);
  return *this;
}

void* CIMarray::putargv(const void* data, int size, int grow) noexcept {
  const Appended appended = append(this, data, size, grow);
  if (appended.failure != nullptr)
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
              "putargv: Exception raised: %s", appended.failure);
  return appended.block;
}

int CIMarray::setmaxargc(unsigned n) noexcept {
  if (this == nullptr) return trace_failure("setmaxargc: this??");
  return set_capacity(*this, n) ? status::success : trace_failure("cannot alloc memory!");
}

void CIMarray::erase(unsigned i) noexcept {
  if (this == nullptr) return;
  if (i >= std::atomic_ref<std::uint32_t>(argc).load(std::memory_order_relaxed)) return;
  const BRQ::Threading::CSyncGuard guard(lock);
  // Another thread may have removed elements in between.
  if (i >= argc) return;
  if (argv != nullptr) {
    free_block(*this, argv[i]);
    std::move(argv + i + 1, argv + maxargc, argv + i);
    argv[maxargc - 1] = nullptr;
  }
  set_argc(*this, argc - 1);
}

void CIMarray::FreeUnused() noexcept {
  if (this != nullptr && trim(*this)) return;
  trace_failure(this == nullptr ? "setmaxargc: this??" : "cannot alloc memory!");
  trace_failure("FreeUnused: cannot alloc memory!");
}

}  // namespace zuCIM
