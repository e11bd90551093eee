#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "CIMlistener/socket_faults.h"
#include "zuCIM/indication.h"

// Waits until `condition` holds; false when it does not within a minute.
template <class Condition>
bool comes_true(const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}

// How many readers the listeners of this process have.
inline int active_readers() {
  return std::atomic_ref<int>(zuCIM::ListenerThreadIsActive).load();
}

// Nobody joins the threads of a listener. At its end this waits until those that were started in
// its life have gone, so that none disturbs the next test.
class ThreadWatch {
 public:
  ThreadWatch() = default;
  ~ThreadWatch() {
    EXPECT_TRUE(wait_for_threads());
    std::atomic_ref<int>(zuCIM::ListenerThreadIsActive).store(0);
  }
  ThreadWatch(const ThreadWatch&) = delete;
  ThreadWatch& operator=(const ThreadWatch&) = delete;

  // Whether the threads go within a minute.
  bool wait_for_threads() const {
    return comes_true([this] { return living_threads() <= before_; });
  }

 private:
  const int before_ = living_threads();
};
