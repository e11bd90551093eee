#include "CIMconnection/registry.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <new>

#include "BRQ/Trace.h"
#include "CIMconnection/curl_handle.h"
#include "CIMconnection/server_record.h"
#include "zuCIM/vocabulary.h"

// The contexts lie by value in the blocks of gCIMContainers: each is constructed in its block and
// destroyed there before the array frees the block, so the address of a context never changes. All
// state here is guarded by the array's lock. Nobody sees a context before it is complete, because
// look-ups take the lock too.

namespace zuCIM {

CIMarray gCIMContainers;

namespace {

constexpr const char* trace_source = "Src/CIMconnection";
constexpr int line_of_make_container = 204;
constexpr int line_of_get_cim = 75;
constexpr unsigned spare_slots = 15;

using BRQ::Threading::CSyncGuard;

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

// Makes room for one more context. The array itself gives up all its slots when it cannot grow in
// putargv; a caller's contexts are worth more, so the growth is done here, where a failure changes
// nothing.
bool make_room() noexcept {
  if (gCIMContainers.argc < gCIMContainers.maxargc) return true;
  if (gCIMContainers.setmaxargc(gCIMContainers.argc + 1 + spare_slots) == status::success)
    return true;
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
            "makeContainer: Exception raised: cannot realloc array!");
  return false;
}

// The block for a new context, zero-filled; null when memory is short.
void* append_block() noexcept {
  if (!make_room()) return nullptr;
  return gCIMContainers.putargv(nullptr, sizeof(CIMcontainer), spare_slots);
}

// Throws std::bad_alloc; then nothing is left in the block.
void construct_context(void* block, const _THR_SERVER_* server, std::uint64_t caller_value) {
  CIMcontainer* const context = new (block) CIMcontainer();
  try {
    context->index = next_index;
    context->callerValue = caller_value;
    copy_server_record(*context, server);
  } catch (...) {
    context->~CIMcontainer();
    throw;
  }
}

// Appends a context with the next index; without memory for its block there is none. Throws
// std::bad_alloc; then the registry is as it was.
void register_context(const _THR_SERVER_* server, std::uint64_t caller_value) {
  if (gCIMContainers.argc == 0) indices_grow = true;
  void* const block = append_block();
  if (block == nullptr) return;
  try {
    construct_context(block, server, caller_value);
  } catch (...) {
    gCIMContainers.erase(gCIMContainers.argc - 1);
    throw;
  }
}

void release_all_handles() noexcept {
  const CSyncGuard guard(gCIMContainers.lock);
  for (unsigned position = 0; position < gCIMContainers.argc; ++position)
    if (CIMcontainer* const context = context_at(position)) release_in_any_case(*context);
}

// Destroys the contexts that are still registered when the library is unloaded. It is defined after
// the array and so destroyed before it.
struct LastContexts {
  ~LastContexts() {
    const CSyncGuard guard(gCIMContainers.lock);
    for (unsigned position = 0; position < gCIMContainers.argc; ++position)
      if (CIMcontainer* const context = context_at(position)) context->~CIMcontainer();
    gCIMContainers.setmaxargc(0);
  }
} last_contexts;

}  // namespace

void change_index(CIMcontainer& context, std::uint32_t index) noexcept {
  const CSyncGuard guard(gCIMContainers.lock);
  if (context.index == index) return;
  context.index = index;
  for (unsigned position = 0; position < gCIMContainers.argc; ++position)
    if (context_at(position) == &context) indices_grow = false;
}

void release_handles_at_exit() noexcept {
  [[maybe_unused]] static const bool registered = std::atexit(&release_all_handles) == 0;
}

std::uint32_t makeContainer(const _THR_SERVER_* server, std::uint64_t caller_value) noexcept {
  const CSyncGuard guard(gCIMContainers.lock);
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
