#pragma once

#include <chrono>
#include <cstdint>

#include "BRQ/Export.h"

namespace BRQ::Misc {

// Where the units get time from. Tests replace it to observe waiting instead of waiting: while a
// replacement is set, a timed wait for an event sleeps by it too.
struct Clock {
  // Seconds since the epoch.
  std::uint32_t (*seconds)();
  // Suspends the calling thread.
  void (*sleep)(unsigned milliseconds);
  // A time that never goes back, for measuring spans; null takes the system's.
  std::chrono::steady_clock::time_point (*steady)() = nullptr;
};

// The clock of the system.
BRQ_API extern const Clock system_clock;

// Makes `clock` the process's clock; it must outlive its use. Null restores the system's.
BRQ_API void set_clock(const Clock* clock) noexcept;

// Whether a replacement of the system's clock is set.
BRQ_API bool is_clock_replaced() noexcept;

// Seconds since the epoch, from the process's clock.
BRQ_API std::uint32_t seconds_now() noexcept;

// A time that never goes back, from the process's clock.
BRQ_API std::chrono::steady_clock::time_point steady_now() noexcept;

// Suspends the calling thread for `milliseconds`, by the process's clock. Signals neither
// shorten nor lengthen it.
BRQ_API void msleep(unsigned milliseconds) noexcept;

}  // namespace BRQ::Misc
