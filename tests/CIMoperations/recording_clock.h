#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "BRQ/Time.h"
#include "support/failing_allocator.h"

// While it lives, nobody sleeps: the lengths of the pauses are kept instead. The time stands still,
// or goes on by some seconds each time someone asks for it. One at a time.
class RecordingClock {
 public:
  explicit RecordingClock(std::uint32_t step = 0) {
    now_ = 1000;
    step_ = step;
    pauses_.clear();
    during_pauses_ = nullptr;
    BRQ::Misc::set_clock(&clock_);
  }
  ~RecordingClock() { BRQ::Misc::set_clock(nullptr); }
  RecordingClock(const RecordingClock&) = delete;
  RecordingClock& operator=(const RecordingClock&) = delete;

  // Has `action` run in every pause from now on.
  void during_pauses(std::function<void()> action) { during_pauses_ = std::move(action); }

  // The pauses so far, in milliseconds.
  const std::vector<unsigned>& pauses() const { return pauses_; }

 private:
  static std::uint32_t seconds() { return now_ += step_; }
  static void sleep(unsigned milliseconds) {
    // The tested code sleeps without memory.
    const UncountedAllocations uncounted;
    pauses_.push_back(milliseconds);
    if (during_pauses_) during_pauses_();
  }

  inline static std::uint32_t now_ = 0;
  inline static std::uint32_t step_ = 0;
  inline static std::vector<unsigned> pauses_;
  inline static std::function<void()> during_pauses_;
  static constexpr BRQ::Misc::Clock clock_{&seconds, &sleep};
};
