#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace bench {

// An answer for the requests that contain `mark`.
struct Replay {
  std::string mark;
  std::string body;
};

// A web server in a process of its own that sends prepared answers, so that what is measured is the
// client. It keeps connections open and takes a thread for each. It listens on every address of
// this machine, so each address can stand for a server of its own.
class ReplayServer {
 public:
  // Make it before the program has other threads. Throws std::runtime_error.
  explicit ReplayServer(const std::vector<Replay>& replays);
  // Ends the process.
  ~ReplayServer();
  ReplayServer(const ReplayServer&) = delete;
  ReplayServer& operator=(const ReplayServer&) = delete;

  const std::string& port() const { return port_; }

 private:
  pid_t process_ = -1;
  std::string port_;
};

}  // namespace bench
