#include "indication_sender.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>
#include <vector>

#include "sockets.h"

namespace bench {
namespace {

constexpr int threads_at_once = 4;
constexpr int addresses = 100;

// The addresses take turns, so that none runs out of ports.
void send_some(int count, int port, const std::string& request) {
  for (int i = 0; i < count; ++i) {
    const Socket socket = Socket::connected(1 + i % addresses, port);
    std::string answer;
    if (!socket.send(request)) std::abort();
    while (socket.receive(answer)) continue;
    if (answer.empty()) std::abort();
  }
}

void send_all(int count, int port, const std::string& request) {
  std::vector<std::thread> threads;
  for (int i = 0; i < threads_at_once; ++i)
    threads.emplace_back([&] { send_some(count / threads_at_once, port, request); });
  for (std::thread& thread : threads) thread.join();
}

// False when the other end of the pipe is gone.
bool pass(int pipe, int number) {
  return ::write(pipe, &number, sizeof number) == sizeof number;
}
bool take(int pipe, int& number) {
  return ::read(pipe, &number, sizeof number) == sizeof number;
}

}  // namespace

IndicationSender::IndicationSender(int count, const std::string& request) {
  if (::pipe(orders_.data()) != 0 || ::pipe(reports_.data()) != 0) std::abort();
  process_ = ::fork();
  if (process_ == 0) obey(count, request);
  ::close(orders_[0]);
  ::close(reports_[1]);
}

IndicationSender::~IndicationSender() {
  ::close(orders_[1]);
  ::close(reports_[0]);
  ::waitpid(process_, nullptr, 0);
}

// The routine of the sending process, which ends with the one that commands it.
void IndicationSender::obey(int count, const std::string& request) {
  ::close(orders_[1]);
  ::close(reports_[0]);
  for (int port = 0; take(orders_[0], port);) {
    send_all(count, port, request);
    pass(reports_[1], port);
  }
  std::_Exit(0);
}

void IndicationSender::start(int port) {
  if (!pass(orders_[1], port)) std::abort();
}

void IndicationSender::wait() {
  int port = 0;
  if (!take(reports_[0], port)) std::abort();
}

}  // namespace bench
