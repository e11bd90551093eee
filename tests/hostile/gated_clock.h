#pragma once

#include <cstdint>
#include <functional>
#include <utility>

#include "BRQ/Time.h"

// While it lives, the process's clock stands still until `may_go_on` says that it may; then every
// look finds it five seconds later. One at a time, looked at by one thread.
class GatedClock {
 public:
  explicit GatedClock(std::function<bool()> may_go_on) {
    may_go_on_ = std::move(may_go_on);
    first_ = 0;
    BRQ::Misc::set_clock(&clock_);
  }
  ~GatedClock() {
    BRQ::Misc::set_clock(nullptr);
    may_go_on_ = nullptr;
  }
  GatedClock(const GatedClock&) = delete;
  GatedClock& operator=(const GatedClock&) = delete;

  // The seconds between the first look and the last one.
  static std::uint32_t span() { return first_ == 0 ? 0 : now_ - first_; }

 private:
  static std::uint32_t seconds() {
    if (may_go_on_()) now_ += 5;
    if (first_ == 0) first_ = now_;
    return now_;
  }
  static void sleep(unsigned) {}

  inline static std::function<bool()> may_go_on_;
  inline static std::uint32_t now_ = 1000;
  inline static std::uint32_t first_ = 0;
  static constexpr BRQ::Misc::Clock clock_{&seconds, &sleep};
};
