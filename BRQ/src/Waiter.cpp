#include "BRQ/Waiter.h"

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

int CEvent::Wait(unsigned milliseconds) noexcept {
  std::unique_lock<std::mutex> guard(mutex_);
  const auto span = std::chrono::milliseconds(milliseconds);
  if (!changed_.wait_for(guard, span, [this] { return signalled_; })) return wait_timed_out;
  if (!manual_reset_) signalled_ = false;
  return wait_signalled;
}

int CWaiter::Wait(unsigned milliseconds) noexcept {
  return event_.Wait(milliseconds);
}

CWaitInterval::CWaitInterval(unsigned milliseconds) noexcept : span_(milliseconds) {
  Restart();
}

unsigned CWaitInterval::Remaining() const noexcept {
  const auto left = end_ - std::chrono::steady_clock::now();
  if (left <= left.zero()) return 0;
  return static_cast<unsigned>(std::chrono::ceil<std::chrono::milliseconds>(left).count());
}

void CWaitInterval::Restart() noexcept {
  end_ = std::chrono::steady_clock::now() + span_;
}

}  // namespace BRQ::Threading
