#pragma once

#include <atomic>

namespace zuCIM {

// Counts an exchange while it runs. A process may end while other threads are in the midst of one;
// what they use must not be taken from them then.
class RunningExchange {
 public:
  RunningExchange() noexcept { ++count_; }
  ~RunningExchange() { --count_; }
  RunningExchange(const RunningExchange&) = delete;
  RunningExchange& operator=(const RunningExchange&) = delete;

  // Whether any thread is in an exchange.
  static bool is_any() noexcept { return count_ != 0; }

 private:
  static inline std::atomic<int> count_ = 0;
};

}  // namespace zuCIM
