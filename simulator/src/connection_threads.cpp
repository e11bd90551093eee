#include "connection_threads.h"

#include <utility>

namespace simulator {

namespace {

constexpr std::size_t most_threads = 256;

}  // namespace

void ConnectionThreads::enqueue(std::function<void()> serve_connection) {
  {
    const std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(serve_connection));
    if (waiting_.size() > idle_ && threads_.size() < most_threads) {
      threads_.emplace_back([this] { work(); });
    }
  }
  changed_.notify_one();
}

void ConnectionThreads::shutdown() {
  {
    const std::lock_guard lock(mutex_);
    closing_ = true;
  }
  changed_.notify_all();
  for (std::thread& each : threads_) each.join();
}

void ConnectionThreads::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    ++idle_;
    changed_.wait(lock, [this] { return closing_ || !waiting_.empty(); });
    --idle_;
    if (waiting_.empty()) return;
    const auto serve_connection = std::move(waiting_.front());
    waiting_.pop_front();
    lock.unlock();
    serve_connection();
    lock.lock();
  }
}

}  // namespace simulator
