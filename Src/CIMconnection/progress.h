#pragma once

#include <cstdint>

namespace zuCIM {

// Watches the duration of one transfer. Times are seconds of the process's clock.
struct Progress {
  // Start of the current timing span; 0 before the first call.
  std::uint32_t start = 0;
  // Time of the previous call.
  std::uint32_t last = 0;
  // How often the timing span was started.
  std::uint32_t fixups = 0;
  // Allowed duration of a span, in seconds.
  std::int32_t timeout = 0;
  // The server, for traces.
  const char* host = "";
};

// The allowed duration of a transfer: the base for an idle or a running listener plus the extra
// time, at least 5 seconds.
std::int32_t transfer_timeout(std::int32_t extra_seconds, bool listener_is_active) noexcept;

// When libcurl has to end a transfer by itself, in seconds from its start: long after the watch
// would. The watch lets a complete download run for ever, even when the rest of the request cannot
// be sent.
std::int32_t last_resort_timeout(std::int32_t timeout) noexcept;

// libcurl's progress callback; `progress` is a Progress, or null outside a transfer. Returns
// non-zero to abort the transfer.
int checkProgress(void* progress, double download_total, double download_now, double upload_total,
                  double upload_now) noexcept;

}  // namespace zuCIM
