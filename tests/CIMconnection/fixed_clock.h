#pragma once

#include "BRQ/Time.h"

// While it lives, the process's clock shows `FixedClock::now`.
class FixedClock {
 public:
  explicit FixedClock(std::uint32_t start) {
    now = start;
    BRQ::Misc::set_clock(&clock_);
  }
  ~FixedClock() { BRQ::Misc::set_clock(nullptr); }
  FixedClock(const FixedClock&) = delete;
  FixedClock& operator=(const FixedClock&) = delete;

  static inline std::uint32_t now = 0;

 private:
  static std::uint32_t seconds() { return now; }
  static void sleep(unsigned milliseconds) { now += milliseconds / 1000; }

  static constexpr BRQ::Misc::Clock clock_{&FixedClock::seconds, &FixedClock::sleep};
};
