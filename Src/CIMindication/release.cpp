#include "BRQ/Trace.h"
#include "CIMconnection/registry.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

// Giving contexts back. It belongs to the registry, whose name its traces carry, but stands above
// the operations, since a context's subscription has to be ended on its server first.
namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMconnection";
constexpr int line_of_erase = 395;
constexpr int line_of_clear = 409;

// The first registered context with this index; null when there is none.
CIMcontainer* find_registered(std::uint32_t index) noexcept {
  const auto size = static_cast<unsigned>(getContainerSize());
  for (unsigned position = 0; position < size; ++position) {
    CIMcontainer* const context = getContainer(position);
    if (context != nullptr && context->index == index) return context;
  }
  return nullptr;
}

// What cannot be ended on the server is released all the same.
void release(CIMcontainer& context) noexcept {
  context.unsubscribe();
  context.free_all();
}

}  // namespace

void eraseContainers(CIMcontainer& context) noexcept {
  CIMcontainer* const registered = find_registered(context.index);
  if (registered == nullptr) return;
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source, line_of_erase,
               "[%s] eraseContainers: index=%d", context.host, context.index);
  release(*registered);
  erase_context(*registered);
}

int clearContainers() noexcept {
  const auto size = static_cast<unsigned>(getContainerSize());
  if (size == 0) return status::success;
  for (unsigned position = 0; position < size; ++position) {
    CIMcontainer* const context = getContainer(position);
    if (context == nullptr) continue;
    BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source, line_of_clear,
                 "[%s] clearContainers: %d", context->host, position);
    release(*context);
  }
  return erase_all_contexts();
}

}  // namespace zuCIM
