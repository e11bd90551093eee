#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace simulator {

// Does something again and again, so many times a second, on a thread of its own. Ends with this
// object, which waits for what is at work.
class Ticker {
 public:
  // `per_second` is above 0.
  Ticker(double per_second, std::function<void()> work);
  ~Ticker();
  Ticker(const Ticker&) = delete;
  Ticker& operator=(const Ticker&) = delete;

 private:
  void run(double per_second);

  std::function<void()> work_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool stopping_ = false;
  std::thread thread_;  // last, so that it starts when all else is there
};

}  // namespace simulator
