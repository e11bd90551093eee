#include "CIMoperations/failure.h"

#include <atomic>

#include "BRQ/Trace.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMoperations";

}  // namespace

void reject_request(CIMcontainer& container, const char* text, int line) noexcept {
  container.request.clear();
  container.cimStatus = status::failure;
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source, line, "[%s] %s",
               container.host, text);
}

// A context that is not busy would refuse to release the handle and lose its status over that.
int refuse_request(CIMcontainer& container, const char* text, int line) noexcept {
  reject_request(container, text, line);
  if (std::atomic_ref<bool>(container.esxiBusy).load(std::memory_order_relaxed))
    container.releaseCurlHandle();
  return container.ChkCimStatus();
}

void abandon_request(CIMcontainer& container, const char* function, const char* text,
                     int line) noexcept {
  container.request.clear();
  container.cimStatus = status::failure;
  trace_exception(function, text, line);
}

void trace_error(const CIMcontainer* container, const char* function, const char* text,
                 int line) noexcept {
  const char* const host = container != nullptr ? container->host.c_str() : "";
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source, line, "[%s] %s() %s", host,
               function, text);
}

void trace_exception(const char* function, const char* text, int line) noexcept {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source, line,
               "%s: Exception raised: %s", function, text);
}

}  // namespace zuCIM
