#pragma once

#include <atomic>

#include "BRQ/Time.h"

// While it lives, every look at the process's clock finds it `step` seconds later.
class SteppingClock {
 public:
  explicit SteppingClock(std::uint32_t step) {
    step_ = step;
    BRQ::Misc::set_clock(&clock_);
  }
  ~SteppingClock() { BRQ::Misc::set_clock(nullptr); }
  SteppingClock(const SteppingClock&) = delete;
  SteppingClock& operator=(const SteppingClock&) = delete;

 private:
  static std::uint32_t seconds() { return now_ += step_; }
  static void sleep(unsigned) {}

  static inline std::atomic<std::uint32_t> now_ = 1000;
  static inline std::uint32_t step_ = 0;
  static constexpr BRQ::Misc::Clock clock_{&SteppingClock::seconds, &SteppingClock::sleep};
};
