#pragma once

#include <sys/types.h>

#include <array>
#include <string>

namespace bench {

// A process of its own that sends indications on command, several at once and each over a
// connection of its own.
class IndicationSender {
 public:
  // Make it before the program has other threads. It sends `count` at a time; `request` is the
  // whole HTTP request.
  IndicationSender(int count, const std::string& request);
  ~IndicationSender();
  IndicationSender(const IndicationSender&) = delete;
  IndicationSender& operator=(const IndicationSender&) = delete;

  // Starts to send to this port of this machine.
  void start(int port);
  // Waits until all have been answered.
  void wait();

 private:
  [[noreturn]] void obey(int count, const std::string& request);

  std::array<int, 2> orders_{};
  std::array<int, 2> reports_{};
  pid_t process_ = -1;
};

}  // namespace bench
