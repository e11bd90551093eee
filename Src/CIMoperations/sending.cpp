#include "CIMoperations/sending.h"

#include <curl/curl.h>

#include <string>

#include "BRQ/Time.h"
#include "BRQ/Trace.h"
#include "CIMoperations/failure.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMoperations";
constexpr int most_retries = 10;
constexpr unsigned retry_pause_milliseconds = 2000;
// A server that did not answer once gets less time to answer.
constexpr int retry_extra_seconds = -20;

// Releasing the transfer handle empties the request, but the next try needs it.
void release_handle_but_keep_request(CIMcontainer& container) {
  std::string request;
  request.swap(container.request);
  container.releaseCurlHandle();
  container.request.swap(request);
}

void wait_for_next_try(CIMcontainer& container) {
  release_handle_but_keep_request(container);
  container.cimStatus = status::success;
  BRQ::Misc::msleep(retry_pause_milliseconds);
  container.SetExtraTimeOut(retry_extra_seconds);
}

// A request that was begun has a target; this one may not have been.
bool has_target(const CIMcontainer& container) {
  return container.methodName != nullptr && container.currentClass != nullptr &&
         container.currentClass->nameSpace != nullptr;
}

int give_up(CIMcontainer& container, int result) {
  container.releaseCurlHandle();
  return result;
}

int reject_without_target(CIMcontainer& container, const char* operation) {
  const char* const text = container.methodName == nullptr ? "methodName=NULL" : "pcls=NULL";
  container.request.clear();
  container.cimStatus = status::failure;
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source, "[%s] %s() %s",
            container.host, operation, text);
  return give_up(container, status::failure);
}

}  // namespace

bool is_worth_a_retry(int result) noexcept {
  return result == CURLE_COULDNT_CONNECT || result == CURLE_HTTP_RETURNED_ERROR ||
         result == CURLE_ABORTED_BY_CALLBACK || result == CURLE_GOT_NOTHING;
}

int send_request(CIMcontainer& container, const char* operation) noexcept {
  for (int retries = container.extraTimeOut >= 0 ? most_retries : 0;; --retries) {
    const int recorded = container.ChkCimStatus();
    if (recorded != status::success) return give_up(container, recorded);
    if (!has_target(container)) return reject_without_target(container, operation);

    const int result =
        container.sendRequest_recvResponse(container.methodName, container.currentClass->nameSpace);
    if (result == status::success) return result;
    if (retries == 0 || !is_worth_a_retry(result)) return give_up(container, result);

    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
              "[%s] %s: ret=%d info=0x%x loop=%d", container.host, operation, result,
              container.infoFlags, retries);
    wait_for_next_try(container);
  }
}

}  // namespace zuCIM
