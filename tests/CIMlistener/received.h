#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

// The callback of the tests and what it received. One at a time.
class Received {
 public:
  Received() { make_current(this); }
  ~Received() { make_current(nullptr); }
  Received(const Received&) = delete;
  Received& operator=(const Received&) = delete;

  // The callback to give to a listener. Without a living Received it does nothing.
  static int take(std::string& text) {
    std::function<void(std::string&)> action;
    {
      const std::lock_guard<std::mutex> guard(mutex_);
      if (current_ == nullptr) return 0;
      current_->texts_.push_back(text);
      action = current_->action_;
      changed_.notify_all();
    }
    if (action) action(text);
    return 1001;  // Nobody looks at it.
  }

  // Has `action` run in every callback from now on, on its thread.
  void on_each(std::function<void(std::string&)> action) {
    const std::lock_guard<std::mutex> guard(mutex_);
    action_ = std::move(action);
  }

  // Waits until `count` texts are there; returns what came within a minute.
  std::vector<std::string> wait_for(std::size_t count) {
    std::unique_lock<std::mutex> guard(mutex_);
    changed_.wait_for(guard, std::chrono::minutes(1), [&] { return texts_.size() >= count; });
    return texts_;
  }

  // What has come so far.
  std::vector<std::string> texts() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return texts_;
  }

  // Forgets what has come so far.
  void clear() {
    const std::lock_guard<std::mutex> guard(mutex_);
    texts_.clear();
  }

 private:
  // Late readers may be looking.
  static void make_current(Received* received) {
    const std::lock_guard<std::mutex> guard(mutex_);
    current_ = received;
  }

  inline static std::mutex mutex_;
  inline static std::condition_variable changed_;
  inline static Received* current_ = nullptr;
  std::vector<std::string> texts_;
  std::function<void(std::string&)> action_;
};
