#pragma once

#include <httplib.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace simulator {

// Threads for connections. A connection that is kept alive holds its thread, so a fixed small pool
// would let idle clients lock out others: this one grows as long as nobody is free.
class ConnectionThreads : public httplib::TaskQueue {
 public:
  void enqueue(std::function<void()> serve_connection) override;
  void shutdown() override;

 private:
  void work();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> waiting_;
  std::vector<std::thread> threads_;
  std::size_t idle_ = 0;
  bool closing_ = false;
};

}  // namespace simulator
