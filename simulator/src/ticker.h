#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace simulator {

// Does something again and again, so many times a second, on a thread of its own. When it throws,
// that is reported, and the next time comes all the same. Ends with this object, which waits for
// what is at work.
class Ticker {
 public:
  using Report = std::function<void(const std::string& line)>;

  // `per_second` is above 0. `report` is called on the thread.
  Ticker(double per_second, std::function<void()> work, Report report);
  ~Ticker();
  Ticker(const Ticker&) = delete;
  Ticker& operator=(const Ticker&) = delete;

 private:
  void run(double per_second);
  void work_once();

  std::function<void()> work_;
  Report report_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool stopping_ = false;
  std::thread thread_;  // last, so that it starts when all else is there
};

}  // namespace simulator
