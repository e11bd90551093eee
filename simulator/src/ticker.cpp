#include "ticker.h"

#include <chrono>
#include <exception>
#include <utility>

namespace simulator {

Ticker::Ticker(double per_second, std::function<void()> work, Report report)
    : work_(std::move(work)),
      report_(std::move(report)),
      thread_([this, per_second] { run(per_second); }) {}

Ticker::~Ticker() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void Ticker::run(double per_second) {
  using Clock = std::chrono::steady_clock;
  const auto period =
      std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1.0 / per_second));
  auto next = Clock::now() + period;
  std::unique_lock lock(mutex_);
  while (!changed_.wait_until(lock, next, [this] { return stopping_; })) {
    lock.unlock();
    work_once();
    lock.lock();
    next += period;
  }
}

void Ticker::work_once() {
  try {
    work_();
  } catch (const std::exception& error) {
    report_(error.what());
  }
}

}  // namespace simulator
