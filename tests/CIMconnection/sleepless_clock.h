#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "BRQ/Time.h"

// While it lives, nobody sleeps: each sleep is noted, the process's time goes on by its length, and
// what the test wants to happen meanwhile happens. One at a time, for one thread.
class SleeplessClock {
 public:
  // `during_sleep` is called in each sleep with its number, from 1.
  explicit SleeplessClock(std::function<void(std::size_t)> during_sleep = {}) {
    sleeps_.clear();
    now_ = {};
    during_sleep_ = std::move(during_sleep);
    BRQ::Misc::set_clock(&clock_);
  }
  ~SleeplessClock() {
    BRQ::Misc::set_clock(nullptr);
    during_sleep_ = {};
  }
  SleeplessClock(const SleeplessClock&) = delete;
  SleeplessClock& operator=(const SleeplessClock&) = delete;

  // The sleeps so far, in milliseconds.
  const std::vector<unsigned>& sleeps() const { return sleeps_; }

 private:
  static std::uint32_t seconds() { return 1000; }
  static std::chrono::steady_clock::time_point steady() { return now_; }
  static void sleep(unsigned milliseconds) {
    sleeps_.push_back(milliseconds);
    now_ += std::chrono::milliseconds(milliseconds);
    if (during_sleep_) during_sleep_(sleeps_.size());
  }

  static inline std::vector<unsigned> sleeps_;
  static inline std::chrono::steady_clock::time_point now_;
  static inline std::function<void(std::size_t)> during_sleep_;
  static constexpr BRQ::Misc::Clock clock_{&seconds, &sleep, &steady};
};
