#pragma once

#include <gtest/gtest.h>

#include <atomic>

#include "CIMlistener/socket_faults.h"
#include "support/comes_true.h"
#include "zuCIM/indication.h"

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
