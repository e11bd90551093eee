#include "BRQ/Waiter.h"

#include "BRQ/Time.h"

namespace BRQ::Threading {

CEvent::CEvent(bool manual_reset, bool signalled) noexcept
    : manual_reset_(manual_reset), signalled_(signalled) {}

void CEvent::Set() noexcept {
  const std::lock_guard<std::mutex> guard(mutex_);
  signalled_ = true;
  changed_.notify_all();
}

void CEvent::Reset() noexcept {
  const std::lock_guard<std::mutex> guard(mutex_);
  signalled_ = false;
}

// Takes the signal if there is one; the mutex is held.
bool CEvent::consume() noexcept {
  const bool was_signalled = signalled_;
  if (!manual_reset_) signalled_ = false;
  return was_signalled;
}

int CEvent::Wait(unsigned milliseconds) noexcept {
  if (Misc::is_clock_replaced()) return sleep_by_clock(milliseconds);
  std::unique_lock<std::mutex> guard(mutex_);
  const auto span = std::chrono::milliseconds(milliseconds);
  changed_.wait_for(guard, span, [this] { return signalled_; });
  return consume() ? wait_signalled : wait_timed_out;
}

// The lock is not held while sleeping, so that the replacement's sleep may signal the event.
int CEvent::sleep_by_clock(unsigned milliseconds) noexcept {
  for (const bool has_slept : {false, true}) {
    if (has_slept) Misc::msleep(milliseconds);
    const std::lock_guard<std::mutex> guard(mutex_);
    if (consume()) return wait_signalled;
  }
  return wait_timed_out;
}

int CWaiter::Wait(unsigned milliseconds) noexcept {
  return event_.Wait(milliseconds);
}

CWaitInterval::CWaitInterval(unsigned milliseconds) noexcept : span_(milliseconds) {
  Restart();
}

unsigned CWaitInterval::Remaining() const noexcept {
  const auto left = end_ - Misc::steady_now();
  if (left <= left.zero()) return 0;
  return static_cast<unsigned>(std::chrono::ceil<std::chrono::milliseconds>(left).count());
}

void CWaitInterval::Restart() noexcept {
  end_ = Misc::steady_now() + span_;
}

}  // namespace BRQ::Threading
