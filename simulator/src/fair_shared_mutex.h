#pragma once

#include <mutex>
#include <shared_mutex>

namespace simulator {

// A shared mutex that serves threads in the order in which they come, so that an endless stream of
// readers cannot keep a writer out.
class FairSharedMutex {
 public:
  void lock() {
    const std::lock_guard turn(turn_);
    mutex_.lock();
  }
  void unlock() { mutex_.unlock(); }

  void lock_shared() {
    const std::lock_guard turn(turn_);
    mutex_.lock_shared();
  }
  void unlock_shared() { mutex_.unlock_shared(); }

 private:
  std::mutex turn_;
  std::shared_mutex mutex_;
};

}  // namespace simulator
