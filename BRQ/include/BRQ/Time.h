#pragma once

#include <cstdint>

#include "BRQ/Export.h"

namespace BRQ::Misc {

// Where the units get time from. Tests replace it to observe waiting instead of waiting.
struct Clock {
  // Seconds since the epoch.
  std::uint32_t (*seconds)();
  // Suspends the calling thread.
  void (*sleep)(unsigned milliseconds);
};

// The clock of the system.
BRQ_API extern const Clock system_clock;

// Makes `clock` the process's clock; it must outlive its use. Null restores the system's.
BRQ_API void set_clock(const Clock* clock) noexcept;

// Seconds since the epoch, from the process's clock.
BRQ_API std::uint32_t seconds_now() noexcept;

// Suspends the calling thread for `milliseconds`, by the process's clock.
BRQ_API void msleep(unsigned milliseconds) noexcept;

}  // namespace BRQ::Misc
