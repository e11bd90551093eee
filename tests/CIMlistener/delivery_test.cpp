#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "CIMlistener/running_listener.h"
#include "CIMlistener/socket_faults.h"
#include "support/channel.h"
#include "support/failing_allocator.h"

// Whole deliveries over TCP.
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string request = export_request("1042");
const std::string body = export_request_body("1042");
const std::string answer = export_answer("1042", "000000236");

// Only the library receives with this flag.
Fault for_readers(Fault fault) {
  return only_with(MSG_DONTWAIT, std::move(fault));
}

// Holds a thread until it is opened.
class Gate {
 public:
  void open() { opened_.set_value(); }
  void pass() {
    is_reached_.store(true);
    future_.wait();
  }
  bool is_reached() const { return is_reached_.load(); }

 private:
  std::promise<void> opened_;
  std::shared_future<void> future_ = opened_.get_future().share();
  std::atomic<bool> is_reached_ = false;
};

TEST(Delivery, ARequestIsAnsweredAndItsTextHandedToTheCallback) {
  Received received;
  const RunningListener running;
  EXPECT_EQ(running.ask(request), answer);
  EXPECT_THAT(received.wait_for(1), ElementsAre(body));
}

// Each piece is sent only when the one before has been received and the next one is waited for.
TEST(Delivery, ABodyInPiecesIsPutTogether) {
  Received received;
  SocketFaults faults;
  std::atomic<int> receives = 0;
  faults.on(Call::recv, for_readers([&](const CallDetails&) {
              receives.fetch_add(1);
              return Outcome::as_usual();
            }));
  std::atomic<int> waits = 0;
  faults.on(Call::poll, only_with(30000, [&](const CallDetails&) {
              waits.fetch_add(1);
              return Outcome::as_usual();
            }));
  const RunningListener running;
  const std::size_t head = request.size() - body.size();
  const Descriptor socket = running.connect();
  int pieces = 0;
  for (std::size_t begin = 0, end = head; begin < request.size(); begin = end, end += 29) {
    EXPECT_TRUE(comes_true([&] { return waits.load() >= pieces; }));
    end = std::min(end, request.size());
    send_all(socket, request.substr(begin, end - begin));
    ++pieces;
  }
  EXPECT_EQ(receive_all(socket), answer);
  EXPECT_THAT(received.wait_for(1), ElementsAre(body));
  EXPECT_EQ(receives.load(), pieces);
  EXPECT_EQ(waits.load(), pieces - 1);
}

TEST(Delivery, ASenderThatResetsItsConnectionDoesNotStopTheListener) {
  Received received;
  const RunningListener running;
  for (const std::string& sent :
       {std::string(), request.substr(0, 50), request.substr(0, request.size() - 1), request}) {
    Descriptor socket = running.connect_and_send(sent);
    reset_socket(socket);
  }
  EXPECT_EQ(running.ask(export_request("7")), export_answer("7", "000000233"));
  EXPECT_TRUE(comes_true(
      [&] { return std::ranges::count(received.texts(), export_request_body("7")) == 1; }));
}

TEST(Delivery, ASenderThatClosesItsDirectionGetsItsAnswer) {
  Received received;
  const RunningListener running;
  const Descriptor socket = running.connect_and_send(request);
  ::shutdown(socket.number(), SHUT_WR);
  EXPECT_EQ(receive_all(socket), answer);
  EXPECT_THAT(received.wait_for(1), ElementsAre(body));
}

// Two runs of the reader serve each connection; only one may answer and call.
TEST(Delivery, EachRequestGetsOneAnswerAndOneCallback) {
  Received received;
  {
    const RunningListener running;
    for (int round = 0; round < 20; ++round) EXPECT_EQ(running.ask(request), answer);
  }
  EXPECT_EQ(received.texts(), std::vector<std::string>(20, body));
}

// The first callback waits for the second one.
TEST(Delivery, ACallbackThatTakesLongKeepsNobodyWaiting) {
  Received received;
  Gate gate;
  received.on_each([&](const std::string& text) {
    if (text == body) gate.pass();
  });
  const RunningListener running;
  const Descriptor slow = running.connect_and_send(request);
  EXPECT_TRUE(comes_true([&] { return gate.is_reached(); }));
  EXPECT_EQ(running.ask(export_request("7")), export_answer("7", "000000233"));
  EXPECT_EQ(received.wait_for(2).size(), 2U);
  gate.open();
  EXPECT_EQ(receive_all(slow), answer);
}

TEST(Delivery, ACallbackThatThrowsDoesNotStopTheListener) {
  Received received;
  received.on_each([](const std::string&) { throw 1; });
  const RunningListener running;
  EXPECT_EQ(running.ask(request), answer);
  EXPECT_EQ(running.ask(request), answer);
  EXPECT_EQ(received.wait_for(2).size(), 2U);
}

TEST(Delivery, ACallbackMayStopItsListener) {
  Received received;
  RunningListener running;
  std::promise<bool> stopped;
  received.on_each([&](const std::string&) {
    running.listener->stop_Listener();
    stopped.set_value(running.is_listening() || running.has_callback());
  });
  EXPECT_EQ(running.ask(request), answer);
  EXPECT_FALSE(stopped.get_future().get());
  EXPECT_THROW(running.connect(), std::system_error);
}

TEST(Delivery, ACallbackMayDestroyItsListener) {
  for (const bool is_stopped_before : {true, false}) {
    Received received;
    RunningListener running;
    std::promise<void> destroyed;
    received.on_each([&](const std::string&) {
      if (is_stopped_before) running.listener->stop_Listener();
      running.listener.reset();
      destroyed.set_value();
    });
    EXPECT_EQ(running.ask(request), answer);
    destroyed.get_future().wait();
    EXPECT_THAT(received.texts(), ElementsAre(body));
  }
}

// The reader is held before it reads; by then its listener has gone.
TEST(Delivery, AReaderThatOutlivesItsListenerAnswersWithoutACallback) {
  for (const bool is_destroyed : {true, false}) {
    Received received;
    Gate gate;
    SocketFaults faults;
    faults.on(Call::recv, for_readers([&](const CallDetails&) {
                gate.pass();
                return Outcome::as_usual();
              }));
    RunningListener running;
    const Descriptor socket = running.connect_and_send(request);
    EXPECT_TRUE(comes_true([&] { return gate.is_reached(); }));
    running.listener->stop_Listener();
    if (is_destroyed) running.listener.reset();
    gate.open();
    EXPECT_EQ(receive_all(socket), answer);
    EXPECT_THAT(received.texts(), IsEmpty());
  }
}

TEST(Delivery, ListenersAreIndependent) {
  Received received;
  const RunningListener one;
  {
    const RunningListener other;
    EXPECT_EQ(other.ask(request), answer);
  }
  EXPECT_EQ(one.ask(request), answer);
  EXPECT_EQ(received.wait_for(2).size(), 2U);
}

// The listener is stopped and destroyed while senders are sending: they get a whole answer or none.
TEST(Delivery, StoppingDuringDeliveryIsSafe) {
  Received received;
  std::atomic<bool> is_over = false;
  std::vector<std::jthread> senders;
  RunningListener running;
  const auto send_on = [&] {
    while (!is_over.load()) {
      try {
        const std::string got = running.ask(request);
        EXPECT_TRUE(got.empty() || got == answer) << got;
      } catch (const std::system_error&) {
        // The port is closed, or the connection was in the backlog when it was.
      }
    }
  };
  for (int sender = 0; sender < 3; ++sender) senders.emplace_back(send_on);
  EXPECT_GE(received.wait_for(50).size(), 50U);
  running.listener->stop_Listener();
  running.listener.reset();
  is_over.store(true);
  senders.clear();
}

constexpr int senders = 8;
constexpr int indications = malloc_can_fail ? 10000 : 2000;  // Sanitizers are slow.

TEST(Delivery, ManySendersAtOnceLoseNothing) {
  Received received;
  {
    const RunningListener running;
    std::vector<std::jthread> threads;
    for (int sender = 0; sender < senders; ++sender)
      threads.emplace_back([&running, sender] {
        for (int id = 1 + sender; id <= indications; id += senders) {
          const std::string got = running.ask(export_request(std::to_string(id)));
          EXPECT_NE(got.find("ID=\"" + std::to_string(id) + "\""), std::string::npos);
        }
      });
    threads.clear();
    received.wait_for(indications);
  }
  std::vector<std::string> expected;
  for (int id = 1; id <= indications; ++id)
    expected.push_back(export_request_body(std::to_string(id)));
  std::vector<std::string> texts = received.texts();
  std::ranges::sort(texts);
  std::ranges::sort(expected);
  EXPECT_TRUE(texts == expected);
}

}  // namespace
