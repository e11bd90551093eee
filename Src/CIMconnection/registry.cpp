#include "CIMconnection/registry.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "BRQ/Trace.h"
#include "CIMconnection/curl_handle.h"
#include "CIMconnection/running_exchange.h"
#include "CIMconnection/server_record.h"
#include "zuCIM/vocabulary.h"

// The contexts lie by value in the blocks of gCIMContainers: each is constructed in its block
// before the array gets it, and taken out of the array before it is destroyed and its block freed,
// so the address of a context never changes and nobody sees a context that is not complete. The
// array's lock guards the array and `indices_grow`. No trace is written under it, since a trace
// sink may look a context up.

namespace zuCIM {

constinit CIMarray gCIMContainers;

namespace {

constexpr const char* trace_source = "Src/CIMconnection";
constexpr const char* array_trace_source = "Src/CIMclasses";
constexpr int line_of_make_container = 204;
constexpr int line_of_get_cim = 75;
constexpr std::uint64_t spare_slots = 15;

// Contexts are constructed in blocks of malloc.
static_assert(alignof(CIMcontainer) <= alignof(std::max_align_t));

using BRQ::Threading::CSyncGuard;

// Taken for the whole of makeContainer, so that indices are given in the order of the positions.
// Guards `next_index`.
constinit BRQ::Threading::Native_OS::CCriticalSection makers(1000);

// The index that the next context gets.
std::uint32_t next_index = 0;
// Whether the indices grow with the position: they do unless a context was assigned onto a
// registered one.
bool indices_grow = true;

// The context in a slot, or null; after a failed growth there may be no slots.
CIMcontainer* context_at(unsigned position) noexcept {
  if (gCIMContainers.argv == nullptr || position >= gCIMContainers.argc) return nullptr;
  return static_cast<CIMcontainer*>(gCIMContainers.argv[position]);
}

bool has_index(unsigned position, unsigned index) noexcept {
  const CIMcontainer* const context = context_at(position);
  return context != nullptr && context->index == index;
}

// Both searches return the element count when there is no such context.
unsigned search_by_scan(unsigned index) noexcept {
  unsigned position = 0;
  while (position < gCIMContainers.argc && !has_index(position, index)) ++position;
  return position;
}

unsigned search_by_halves(unsigned index) noexcept {
  void** const begin = gCIMContainers.argv;
  void** const end = begin + gCIMContainers.argc;
  // Slots that were lost in a failed growth come first, so they count as less than any index.
  void** const found = std::lower_bound(begin, end, index, [](const void* slot, unsigned wanted) {
    const auto* const context = static_cast<const CIMcontainer*>(slot);
    return context == nullptr || context->index < wanted;
  });
  const auto position = static_cast<unsigned>(found - begin);
  return has_index(position, index) ? position : gCIMContainers.argc;
}

unsigned search(unsigned index) noexcept {
  if (has_index(index, index)) return index;
  return indices_grow && gCIMContainers.argv != nullptr ? search_by_halves(index)
                                                        : search_by_scan(index);
}

// Whether a lookup finds this very context: always for a registered one while the indices grow.
bool is_found(const CIMcontainer& context) noexcept {
  return context_at(search(context.index)) == &context;
}

struct FreeBlock {
  void operator()(void* block) const noexcept { std::free(block); }
};

// Destroys a context and frees its block.
struct BlockDeleter {
  void operator()(CIMcontainer* context) const noexcept {
    context->~CIMcontainer();
    std::free(context);
  }
};
using ContextBlock = std::unique_ptr<CIMcontainer, BlockDeleter>;

// A context in a block of its own; null when there is no memory for the block. Throws
// std::bad_alloc.
ContextBlock make_context(const _THR_SERVER_* server, std::uint64_t caller_value) {
  std::unique_ptr<void, FreeBlock> block(std::malloc(sizeof(CIMcontainer)));
  if (block == nullptr) return nullptr;
  ContextBlock context(new (block.get()) CIMcontainer());
  static_cast<void>(block.release());  // The context's deleter frees it now.
  context->index = next_index;
  context->callerValue = caller_value;
  copy_server_record(*context, server);
  return context;
}

// Makes room for one more context. The array itself gives up all its slots when it cannot grow; a
// caller's contexts are worth more, so here a failure changes nothing.
bool make_room() noexcept {
  CIMarray& array = gCIMContainers;
  if (array.argv != nullptr && array.argc < array.maxargc) return true;
  const std::uint64_t count = std::max<std::uint64_t>(array.maxargc, array.argc + 1 + spare_slots);
  if (count > PTRDIFF_MAX / sizeof(void*)) return false;
  auto* const slots = static_cast<void**>(
      std::realloc(array.argv, static_cast<std::size_t>(count) * sizeof(void*)));
  if (slots == nullptr) return false;
  std::fill(slots + (array.argv == nullptr ? 0 : array.maxargc), slots + count, nullptr);
  array.argv = slots;
  array.maxargc = static_cast<std::uint32_t>(count);
  return true;
}

// Hands the context over to the array, as its putargv does with a record, but without a copy.
// Returns why that failed, or null.
const char* append(ContextBlock& context) noexcept {
  constexpr std::int32_t record_size = sizeof(CIMcontainer);
  const CSyncGuard guard(gCIMContainers.lock);
  if (gCIMContainers.elementSize == 0) gCIMContainers.elementSize = record_size;
  if (gCIMContainers.elementSize != record_size) return "different length of array elements!";
  if (!make_room()) return "cannot realloc array!";
  if (gCIMContainers.argc == 0) indices_grow = true;
  gCIMContainers.argv[gCIMContainers.argc] = context.release();
  std::atomic_ref<std::uint32_t>(gCIMContainers.argc).fetch_add(1, std::memory_order_relaxed);
  return nullptr;
}

// A context that cannot be appended is reported as the array reports it, and is gone. Throws
// std::bad_alloc.
void register_context(const _THR_SERVER_* server, std::uint64_t caller_value) {
  ContextBlock context = make_context(server, caller_value);
  const char* const failure = context != nullptr ? append(context) : "cannot alloc array!";
  if (failure != nullptr)
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, array_trace_source,
              "putargv: Exception raised: %s", failure);
}

// The position of this very context; the element count when it is not registered.
unsigned position_of(const CIMcontainer& context) noexcept {
  unsigned position = 0;
  while (position < gCIMContainers.argc && context_at(position) != &context) ++position;
  return position;
}

// Takes a context out and closes the gap. Null when it is not registered.
ContextBlock take_out(const CIMcontainer& context) noexcept {
  const CSyncGuard guard(gCIMContainers.lock);
  const unsigned position = position_of(context);
  if (position == gCIMContainers.argc) return nullptr;
  ContextBlock taken(context_at(position));
  gCIMContainers.argv[position] = nullptr;
  gCIMContainers.erase(position);
  return taken;
}

// The slots of the array, taken out of it with the contexts in them.
struct DetachedContexts {
  void** slots = nullptr;
  std::uint32_t count = 0;

  // Destroys the contexts and frees the slots.
  void destroy() noexcept {
    for (std::uint32_t position = 0; slots != nullptr && position < count; ++position)
      if (slots[position] != nullptr) BlockDeleter()(static_cast<CIMcontainer*>(slots[position]));
    std::free(std::exchange(slots, nullptr));
  }
};

// What became of emptying the array: the contexts, and what the array said.
struct Emptied {
  DetachedContexts contexts;
  int result;
};

Emptied detach_all() noexcept {
  const CSyncGuard guard(gCIMContainers.lock);
  void** const slots = std::exchange(gCIMContainers.argv, nullptr);
  const std::uint32_t count = gCIMContainers.argc;
  return {{slots, count}, gCIMContainers.setmaxargc(0)};
}

void release_all_handles() noexcept {
  if (RunningExchange::is_any()) return;
  const auto size = static_cast<unsigned>(getContainerSize());
  for (unsigned position = 0; position < size; ++position)
    if (CIMcontainer* const context = getContainer(position)) release_in_any_case(*context);
}

// What the registry held when the process ended in the midst of an exchange.
constinit DetachedContexts kept;

// Destroys the contexts that are still registered when the library is unloaded. It is defined after
// the array and so destroyed before it, also when the array is used before both: neither needs code
// to be ready.
struct LastContexts {
  ~LastContexts() {
    kept = detach_all().contexts;
    if (!RunningExchange::is_any()) kept.destroy();
  }
} last_contexts;

}  // namespace

void change_index(CIMcontainer& context, std::uint32_t index) noexcept {
  const CSyncGuard guard(gCIMContainers.lock);
  if (context.index == index) return;
  if (indices_grow && is_found(context)) indices_grow = false;
  context.index = index;
}

// Contexts are destroyed when the lock is free again, since that writes traces.

void erase_context(CIMcontainer& context) noexcept {
  const ContextBlock taken = take_out(context);
}

int erase_all_contexts() noexcept {
  Emptied emptied = detach_all();
  emptied.contexts.destroy();
  return emptied.result;
}

void swap_server_address(CIMconnection& connection, std::string& ip, std::string& name) noexcept {
  const CSyncGuard guard(gCIMContainers.lock);
  connection.serverIP.swap(ip);
  connection.serverName.swap(name);
}

void release_handles_at_exit() noexcept {
  [[maybe_unused]] static const bool registered = std::atexit(&release_all_handles) == 0;
}

std::uint32_t makeContainer(const _THR_SERVER_* server, std::uint64_t caller_value) noexcept {
  const CSyncGuard guard(makers);
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::progress, trace_source, line_of_make_container,
               "[%s] makeContainer() index=%d", server != nullptr ? server->host : nullptr,
               next_index);
  try {
    register_context(server, caller_value);
    return next_index++;
  } catch (const std::exception& error) {
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
              "makeContainer: Exception raised: %s", error.what());
    return no_index;
  }
}

int getCIM(unsigned index) noexcept {
  unsigned position = 0;
  unsigned size = 0;
  {
    const CSyncGuard guard(gCIMContainers.lock);
    size = gCIMContainers.argc;
    position = search(index);
  }
  if (position < size) return static_cast<int>(position);
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source, line_of_get_cim,
               "getCIM: ERROR: index=%d size=%d", index, size);
  return -1;
}

CIMcontainer* getContainer(unsigned position) noexcept {
  const CSyncGuard guard(gCIMContainers.lock);
  return context_at(position);
}

int getContainerSize() noexcept {
  const CSyncGuard guard(gCIMContainers.lock);
  return static_cast<int>(gCIMContainers.argc);
}

}  // namespace zuCIM
