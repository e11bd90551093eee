#include "CIMconnection/progress.h"

#include <algorithm>
#include <limits>

#include "BRQ/Time.h"
#include "BRQ/Trace.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMconnection";
constexpr std::int64_t idle_timeout = 30;
constexpr std::int64_t listening_timeout = 60;
constexpr std::int64_t least_timeout = 5;
// Calls that are further apart than this mean that the clock was set or the machine slept.
constexpr std::uint32_t longest_gap = 11;
constexpr std::uint32_t most_fixups = 5;

bool clock_ran_normally(const Progress& progress, std::uint32_t now) noexcept {
  return progress.start != 0 && now >= progress.last && now - progress.last < longest_gap;
}

int continue_span(Progress& progress, std::uint32_t now) noexcept {
  const std::uint32_t elapsed = now - progress.start;
  if (static_cast<std::int64_t>(elapsed) < progress.timeout) {
    progress.last = now;
    return 0;
  }
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::progress, trace_source,
            "[%s] Leave checkProgress() now-start=%d >= %d (timeout: fail)", progress.host, elapsed,
            progress.timeout);
  return 1;
}

int restart_span(Progress& progress, std::uint32_t now) noexcept {
  ++progress.fixups;
  if (progress.fixups <= most_fixups) {
    progress.start = progress.last = now;
    return 0;
  }
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::progress, trace_source,
            "[%s] Leave checkProgress() too many fixups occurred -> fail", progress.host);
  return 1;
}

}  // namespace

std::int32_t transfer_timeout(std::int32_t extra_seconds, bool listener_is_active) noexcept {
  const std::int64_t base = listener_is_active ? listening_timeout : idle_timeout;
  constexpr std::int64_t longest = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::clamp(base + extra_seconds, least_timeout, longest));
}

// The watch allows five spans of `timeout` seconds, each of which may be noticed 11 seconds late:
// that is less than six spans and a minute. libcurl refuses more milliseconds than fit into an int.
std::int32_t last_resort_timeout(std::int32_t timeout) noexcept {
  constexpr std::int64_t most_seconds = std::numeric_limits<std::int32_t>::max() / 1000;
  return static_cast<std::int32_t>(std::min(std::int64_t{6} * timeout + 60, most_seconds));
}

int checkProgress(void* progress, double download_total, double download_now,
                  double /*upload_total*/, double /*upload_now*/) noexcept {
  if (progress == nullptr) return 0;
  Progress& watched = *static_cast<Progress*>(progress);
  const std::uint32_t now = BRQ::Misc::seconds_now();
  const bool complete = download_total == download_now && download_now != 0;
  if (complete) return 0;
  return clock_ran_normally(watched, now) ? continue_span(watched, now)
                                          : restart_span(watched, now);
}

}  // namespace zuCIM
