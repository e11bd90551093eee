#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "BRQ/replaced_clock.h"
#include "CIMlistener/reader_run.h"
#include "CIMlistener/running_listener.h"
#include "CIMlistener/socket_faults.h"
#include "support/trace_recorder.h"
#include "zuCIM/vocabulary.h"

// Limits that a user changed, at the limit and one past it.
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using zuCIM::ListenerLimits;

const std::string request = export_request("1042");
const std::string body = export_request_body("1042");
const std::string answer = export_answer("1042", "000000236");

// What became of a request under these limits.
struct Result {
  std::string answer;
  std::vector<std::string> errors;
};

Result receive(const ListenerLimits& limits) {
  const Received received;
  ReaderRun run;
  run.use(limits).send(request);
  const TraceRecorder recorder;
  Result result{run.answer(), recorder.texts(zuCIM::trace_level::error)};
  EXPECT_EQ(received.texts().empty(), result.answer.empty());
  return result;
}

// The waits of a reader under these limits, in milliseconds. Its first receive gives all but the
// last byte and takes so long.
std::vector<int> waits(const ListenerLimits& limits, std::chrono::milliseconds time,
                       const std::string& expected_answer) {
  const Received received;
  ReplacedClock clock;
  ReaderRun run;
  run.use(limits).send(request);
  SocketFaults faults;
  std::vector<int> waits;
  faults.on(Call::recv, [&](const CallDetails&) {
    clock.advance(time);
    return Outcome::at_most(request.size() - 1);
  });
  faults.on(Call::poll, keeping_arguments(waits, Outcome::as_usual()));
  run.run();
  faults.on(Call::recv, in_turn({}));
  EXPECT_EQ(run.rest(), expected_answer);
  return waits;
}

TEST(ListenerLimits, AreThoseOfTheHeaderUnlessChanged) {
  const zuCIM::CIMindication listener;
  EXPECT_EQ(listener.limits.largestBody, std::size_t{16} << 20U);
  EXPECT_EQ(listener.limits.mostBytes, std::size_t{256} << 20U);
  EXPECT_EQ(listener.limits.mostReaders, 256);
  EXPECT_EQ(listener.limits.firstDataSeconds, 5);
  EXPECT_EQ(listener.limits.stallSeconds, 30);
  EXPECT_EQ(listener.limits.requestSeconds, 120);
}

TEST(ListenerLimits, LargestBodyIsTheLastLengthThatIsTaken) {
  ListenerLimits limits;
  limits.largestBody = body.size();
  EXPECT_EQ(receive(limits).answer, answer);
  --limits.largestBody;
  const Result result = receive(limits);
  EXPECT_EQ(result.answer, "");
  EXPECT_THAT(result.errors, ElementsAre("readerThread: Content-Length is too large"));
}

TEST(ListenerLimits, MostBytesIsAllThatMayBeHeld) {
  ListenerLimits limits;
  limits.mostBytes = body.size();
  EXPECT_EQ(receive(limits).answer, answer);
  --limits.mostBytes;
  const Result result = receive(limits);
  EXPECT_EQ(result.answer, "");
  EXPECT_THAT(result.errors, ElementsAre("readerThread: too much is being received at once"));
}

TEST(ListenerLimits, MostBytesMayBecomeLessThanIsHeld) {
  ReaderRun run;
  EXPECT_TRUE(run.state->hold(10));
  ListenerLimits limits;
  limits.mostBytes = 9;
  run.use(limits);
  EXPECT_FALSE(run.state->hold(1));
  run.state->drop(10);
  EXPECT_TRUE(run.state->hold(9));
  EXPECT_FALSE(run.state->hold(1));
}

TEST(ListenerLimits, MostReadersAreServedAtOnceAndTheNextOneLater) {
  Received received;
  SocketFaults faults;
  std::atomic<int> most = 0;
  faults.on(Call::poll, only_with(5000, [](const CallDetails&) { return Outcome::patient(); }));
  faults.on(Call::accept, [&](const CallDetails&) {
    most.store(std::max(most.load(), active_readers()));
    return Outcome::as_usual();
  });
  ListenerLimits limits;
  limits.mostReaders = 2;
  const RunningListener running(limits);
  std::vector<Descriptor> sockets;
  for (int i = 0; i < 3; ++i) sockets.push_back(running.connect());
  EXPECT_TRUE(comes_true([] { return active_readers() == 2; }));
  for (const Descriptor& socket : sockets) {
    send_all(socket, request);
    EXPECT_EQ(receive_all(socket), answer);
  }
  EXPECT_EQ(received.wait_for(3).size(), 3U);
  // Readers that have been started may not have begun yet when the next one is accepted.
  EXPECT_LE(most.load(), 1);
}

TEST(ListenerLimits, WithoutReadersNothingIsAccepted) {
  for (const int readers : {0, -1}) {
    ReaderRun run;
    ListenerLimits limits;
    limits.mostReaders = readers;
    EXPECT_FALSE(run.use(limits).state->admit_reader());
  }
}

TEST(ListenerLimits, SecondsAreThoseThatAreWaited) {
  ListenerLimits limits;
  limits.firstDataSeconds = 2;
  limits.stallSeconds = 3;
  limits.requestSeconds = 10;
  EXPECT_THAT(waits(limits, std::chrono::seconds(0), answer), ElementsAre(2000, 3000));
  limits.firstDataSeconds = 20;
  EXPECT_THAT(waits(limits, std::chrono::seconds(0), answer), ElementsAre(10000, 3000));
}

TEST(ListenerLimits, ARequestMayTakeItsSecondsAndNoLonger) {
  ListenerLimits limits;
  limits.requestSeconds = 10;
  EXPECT_THAT(waits(limits, std::chrono::milliseconds(9999), answer), ElementsAre(5000, 1000));
  EXPECT_THAT(waits(limits, std::chrono::milliseconds(10000), ""), ElementsAre(5000));
}

TEST(ListenerLimits, WithoutSecondsNothingIsWaitedFor) {
  for (const int seconds : {0, -1}) {
    ListenerLimits limits;
    limits.firstDataSeconds = seconds;
    EXPECT_THAT(waits(limits, std::chrono::seconds(0), ""), IsEmpty());
    limits = {};
    limits.requestSeconds = seconds;
    EXPECT_THAT(waits(limits, std::chrono::seconds(0), ""), IsEmpty());
    limits = {};
    limits.stallSeconds = seconds;
    EXPECT_THAT(waits(limits, std::chrono::seconds(0), ""), ElementsAre(5000));
  }
}

TEST(ListenerLimits, TheLargestOfAllAreGood) {
  constexpr int most = std::numeric_limits<int>::max();
  const ListenerLimits limits{std::numeric_limits<std::size_t>::max(),
                              std::numeric_limits<std::size_t>::max(),
                              most,
                              most,
                              most,
                              most};
  constexpr int longest_wait = most / 1000 * 1000;
  EXPECT_THAT(waits(limits, std::chrono::seconds(1000), answer),
              ElementsAre(longest_wait, longest_wait - 1000000));
}

TEST(ListenerLimits, AreReadWhenTheListenerIsStarted) {
  const Received received;
  ReaderRun run;
  ListenerLimits limits;
  limits.mostReaders = 1;
  run.use(limits);
  EXPECT_FALSE(run.state->admit_reader());
  run.listener.limits.mostReaders = 2;
  EXPECT_FALSE(run.state->admit_reader());
  run.state->begin();
  EXPECT_TRUE(run.state->admit_reader());
  EXPECT_FALSE(run.state->admit_reader());
}

}  // namespace
