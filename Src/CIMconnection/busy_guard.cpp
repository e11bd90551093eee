#include "CIMconnection/busy_guard.h"

#include "BRQ/Trace.h"
#include "BRQ/Waiter.h"
#include "CIMconnection/busy_flag.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMconnection";
constexpr unsigned poll_interval_milliseconds = 200;
constexpr int most_looks = 150;

}  // namespace

void take_when_free(CIMconnection& connection, unsigned poll_milliseconds) noexcept {
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::progress, trace_source, "[%s] ESXi_Busy",
            connection.host);
  BRQ::Threading::CWaitInterval interval(poll_milliseconds);
  // Nobody signals the event: it is there to be waited on.
  BRQ::Threading::CEvent never(false, false);
  BRQ::Threading::CWaiter waiter(never);
  int looks_left = most_looks;
  while (looks_left != 0) {
    if (waiter.Wait(interval.Remaining()) == BRQ::Threading::wait_timed_out) {
      BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
                "[%s] ESXi_Busy: occupied (%s)", connection.host,
                is_busy(connection) ? "true" : "false");
      interval.Restart();
    }
    --looks_left;
    if (!is_busy(connection)) break;
  }
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
            "[%s] ESXi_Busy: ready (loop=%d)", connection.host, looks_left);
  set_busy(connection, true);
}

void CIMconnection::ESXi_Occupied(bool occupied) noexcept {
  if (!occupied || !is_busy(*this)) {
    set_busy(*this, occupied);
    return;
  }
  take_when_free(*this, poll_interval_milliseconds);
}

}  // namespace zuCIM
