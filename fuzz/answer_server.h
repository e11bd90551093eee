#pragma once

#include <mutex>
#include <string>
#include <thread>

#include "support/loopback.h"

// A server that reads one request from each connection, sends the same bytes to each of them and
// closes it, whatever the bytes say. It lives until the process ends.
class AnswerServer {
 public:
  AnswerServer();
  AnswerServer(const AnswerServer&) = delete;
  AnswerServer& operator=(const AnswerServer&) = delete;

  static constexpr const char* address = "127.0.0.2";
  std::string port() const { return std::to_string(local_port(listener_)); }
  // What it sends from now on.
  void set_answer(std::string bytes);

 private:
  [[noreturn]] void serve();
  void answer(const Descriptor& connection);

  Descriptor listener_;
  std::mutex mutex_;
  std::string answer_;
  std::thread thread_;
};
