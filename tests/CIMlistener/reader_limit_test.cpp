#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <string>
#include <vector>

#include "CIMlistener/running_listener.h"
#include "CIMlistener/socket_faults.h"

// Silent senders and how many of them a listener bears. Their readers wait without end here.
namespace {

const std::string request = export_request("1042");
const std::string answer = export_answer("1042", "000000236");

Outcome wait_without_end(const CallDetails&) {
  return Outcome::patient();
}

// A connection that finds the backlog full is tried again only after a second, so each waits until
// there is room for it.
std::vector<Descriptor> connect_many(const RunningListener& running, int count) {
  std::vector<Descriptor> sockets;
  for (int made = 0; made < count; ++made) {
    const int with_a_reader = std::min(made, zuCIM::listener_limit::most_readers);
    EXPECT_TRUE(comes_true([=] { return active_readers() + 64 > with_a_reader; }));
    sockets.push_back(running.connect());
  }
  return sockets;
}

bool is_open(const Descriptor& socket) {
  char byte = 0;
  return ::recv(socket.number(), &byte, 1, MSG_DONTWAIT | MSG_PEEK) < 0 && errno == EAGAIN;
}

// Connections are accepted in their order, so all the silent ones have a reader by then.
TEST(ReaderLimit, SilentSendersKeepNobodyWaiting) {
  Received received;
  SocketFaults faults;
  faults.on(Call::poll, only_with(5000, wait_without_end));
  const RunningListener running;
  const std::vector<Descriptor> silent = connect_many(running, 200);
  EXPECT_EQ(running.ask(request), answer);
  EXPECT_EQ(received.wait_for(1).size(), 1U);
  EXPECT_TRUE(std::ranges::all_of(silent, is_open));
}

// The listener accepts only when fewer readers than the most live, and goes on when one ends.
TEST(ReaderLimit, BeyondTheMostReadersSendersWaitAndNothingIsLost) {
  constexpr int connections = zuCIM::listener_limit::most_readers + 44;
  Received received;
  SocketFaults faults;
  std::atomic<int> most = 0;
  faults.on(Call::poll, only_with(5000, wait_without_end));
  faults.on(Call::accept, [&](const CallDetails&) {
    most.store(std::max(most.load(), active_readers()));
    return Outcome::as_usual();
  });
  const RunningListener running;
  const std::vector<Descriptor> sockets = connect_many(running, connections);
  EXPECT_TRUE(comes_true([] { return active_readers() == zuCIM::listener_limit::most_readers; }));
  for (const Descriptor& socket : sockets) {
    send_all(socket, request);
    EXPECT_EQ(receive_all(socket), answer);
  }
  EXPECT_EQ(received.wait_for(connections).size(), static_cast<std::size_t>(connections));
  EXPECT_LT(most.load(), zuCIM::listener_limit::most_readers);
}

TEST(ReaderLimit, AListenerThatWaitsForAReaderCanBeStopped) {
  Received received;
  SocketFaults faults;
  faults.on(Call::poll, only_with(5000, wait_without_end));
  RunningListener running;
  const std::vector<Descriptor> sockets =
      connect_many(running, zuCIM::listener_limit::most_readers + 1);
  EXPECT_TRUE(comes_true([] { return active_readers() == zuCIM::listener_limit::most_readers; }));
  running.listener->stop_Listener();
  EXPECT_FALSE(running.has_callback());
  EXPECT_TRUE(is_open(sockets.front()));
}

}  // namespace
