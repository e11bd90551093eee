#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "BRQ/Time.h"

// While it lives, time stands still but for what is slept and advanced. One at a time.
class ReplacedClock {
 public:
  ReplacedClock() {
    state() = State{};
    BRQ::Misc::set_clock(&clock);
  }
  ~ReplacedClock() { BRQ::Misc::set_clock(nullptr); }
  ReplacedClock(const ReplacedClock&) = delete;
  ReplacedClock& operator=(const ReplacedClock&) = delete;

  // Lets time pass.
  void advance(std::chrono::microseconds span) { state().now += span; }
  // Is called in every sleep.
  void on_sleep(std::function<void()> action) { state().on_sleep = std::move(action); }
  // What was slept so far, in milliseconds.
  const std::vector<unsigned>& sleeps() const { return state().sleeps; }

 private:
  struct State {
    std::chrono::steady_clock::time_point now{std::chrono::hours(1)};
    std::vector<unsigned> sleeps;
    std::function<void()> on_sleep;
  };

  static State& state() {
    static State only;
    return only;
  }
  static std::uint32_t seconds() {
    const auto since_start = state().now.time_since_epoch();
    return static_cast<std::uint32_t>(
        std::chrono::floor<std::chrono::seconds>(since_start).count());
  }
  static void sleep(unsigned milliseconds) {
    state().sleeps.push_back(milliseconds);
    state().now += std::chrono::milliseconds(milliseconds);
    if (state().on_sleep) state().on_sleep();
  }
  static std::chrono::steady_clock::time_point steady() { return state().now; }

  static constexpr BRQ::Misc::Clock clock{&ReplacedClock::seconds, &ReplacedClock::sleep,
                                          &ReplacedClock::steady};
};
