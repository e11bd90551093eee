#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "BRQ/Export.h"

namespace BRQ::Threading {

// What a wait returns when its time ran out, and when the event was signalled.
inline constexpr int wait_timed_out = 130;
inline constexpr int wait_signalled = 0;

// A flag that threads can wait for.
class BRQ_API CEvent {
 public:
  // `manual_reset`: the event stays signalled until Reset, else one wait consumes it.
  // `signalled`: the state to start with.
  explicit CEvent(bool manual_reset = false, bool signalled = false) noexcept;
  // Signals the event and wakes its waiters.
  void Set() noexcept;
  // Takes the signal back.
  void Reset() noexcept;
  // Waits at most `milliseconds`; wait_signalled or wait_timed_out. A signalled event never times
  // out. While a replacement clock is set, waiting is one sleep by that clock.
  int Wait(unsigned milliseconds) noexcept;

 private:
  bool consume() noexcept;
  int sleep_by_clock(unsigned milliseconds) noexcept;

  std::mutex mutex_;
  std::condition_variable changed_;
  bool manual_reset_;
  bool signalled_;
};

// Waits for one event.
class BRQ_API CWaiter {
 public:
  // `event` must outlive the waiter.
  explicit CWaiter(CEvent& event) noexcept : event_(event) {}
  // Waits at most `milliseconds`; wait_signalled or wait_timed_out.
  int Wait(unsigned milliseconds) noexcept;

 private:
  CEvent& event_;
};

// A span of time that is waited out in pieces, measured by the process's clock.
class BRQ_API CWaitInterval {
 public:
  // A span of `milliseconds` that starts now.
  explicit CWaitInterval(unsigned milliseconds) noexcept;
  // What is left of the span, in milliseconds, rounded up; 0 when it is over.
  unsigned Remaining() const noexcept;
  // Starts the span anew.
  void Restart() noexcept;

 private:
  std::chrono::milliseconds span_;
  std::chrono::steady_clock::time_point end_;
};

}  // namespace BRQ::Threading
