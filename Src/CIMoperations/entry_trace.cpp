#include "CIMoperations/entry_trace.h"

#include "BRQ/Trace.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {

void trace_entry(const CIMcontainer& container, const char* operation, int line) noexcept {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::progress, "Src/CIMoperations", line, "[%s] %s",
               container.host, operation);
}

}  // namespace zuCIM
