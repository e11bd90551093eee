#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <vector>

#include "BRQ/replaced_clock.h"
#include "CIMlistener/reader_run.h"
#include "CIMlistener/socket_faults.h"
#include "CIMlistener/thread_watch.h"
#include "support/trace_recorder.h"
#include "zuCIM/vocabulary.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using zuCIM::CIMindication;
namespace trace_level = zuCIM::trace_level;

constexpr const char* text_of_closed = "readerThread: connection has been gracefully closed";

const std::string request = export_request("1042");
const std::string body = export_request_body("1042");
const std::string answer = export_answer("1042", "000000236");

// Whether the only line was traced with this level, line and text.
bool is_only_line(const TraceRecorder& recorder, unsigned level, int line, const char* text) {
  return recorder.has_only(level, "Src/CIMlistener", line, text);
}

TEST(Reader, WithoutARecordItDoesNothing) {
  EXPECT_EQ(CIMindication::readerThread(nullptr), nullptr);
}

TEST(Reader, AnswersAndThenHandsOver) {
  Received received;
  ReaderRun run;
  std::string answered_before;
  received.on_each([&](const std::string&) {
    answered_before.resize(answer.size());
    const auto size = ::recv(run.sender.number(), answered_before.data(), answer.size(), 0);
    answered_before.resize(static_cast<std::size_t>(size));
  });
  const TraceRecorder recorder;
  EXPECT_EQ(run.send(request).answer(), "");
  EXPECT_EQ(answered_before, answer);
  EXPECT_THAT(received.texts(), ElementsAre(body));
  EXPECT_THAT(recorder.lines(), IsEmpty());
}

TEST(Reader, ClosesTheConnectionAfterTheCallbackOnly) {
  Received received;
  ReaderRun run;
  ssize_t result = 0;
  received.on_each([&](const std::string&) {
    std::string all(answer.size(), ' ');
    ::recv(run.sender.number(), all.data(), all.size(), 0);
    result = ::recv(run.sender.number(), all.data(), all.size(), MSG_DONTWAIT);
  });
  run.send(request).run();
  EXPECT_EQ(result, -1);
  EXPECT_EQ(receive_all(run.sender), "");
}

TEST(Reader, IsCountedWhileItLives) {
  Received received;
  ReaderRun run;
  const int before = active_readers();
  int meanwhile = 0;
  received.on_each([&](const std::string&) { meanwhile = active_readers(); });
  run.send(request).run();
  EXPECT_EQ(meanwhile, before + 1);
  EXPECT_EQ(active_readers(), before);
}

TEST(Reader, IsNotCountedAfterAFailureEither) {
  Received received;
  const int before = active_readers();
  for (const char* text : {"", "GET / HTTP/1.1\r\n\r\n", "Content-Length: 10\r\n\r\n<?xml"}) {
    ReaderRun run;
    run.send(text).sender.close();
    run.run();
    EXPECT_EQ(active_readers(), before);
  }
}

// The reader that runs on the listener's own thread.
TEST(Reader, WithoutAConnectionItFindsItClosed) {
  Received received;
  const TraceRecorder recorder;
  EXPECT_EQ(CIMindication::readerThread(new zuCIM::ConnectionRecord), nullptr);
  EXPECT_TRUE(is_only_line(recorder, trace_level::detail, 179, text_of_closed));
  EXPECT_THAT(received.texts(), IsEmpty());
}

TEST(Reader, ASilentSenderIsDisconnectedAfterFiveSeconds) {
  Received received;
  ReaderRun run;
  const TraceRecorder recorder;
  SocketFaults faults;
  std::vector<int> waits;
  faults.on(Call::poll, keeping_arguments(waits, Outcome::result(0)));
  EXPECT_EQ(run.answer(), "");
  EXPECT_THAT(waits, ElementsAre(5000));
  EXPECT_THAT(recorder.lines(), IsEmpty());
  EXPECT_THAT(received.texts(), IsEmpty());
}

TEST(Reader, AFailedWaitForTheFirstByteEndsIt) {
  Received received;
  ReaderRun run;
  run.send(request);
  const TraceRecorder recorder;
  SocketFaults faults;
  faults.on(Call::poll, in_turn({Outcome::failure(ENOMEM)}));
  run.run();
  EXPECT_TRUE(is_only_line(recorder, trace_level::error, 117, "mySelect: ERROR in 'select'"));
  EXPECT_THAT(received.texts(), IsEmpty());
}

TEST(Reader, AsksFor8191BytesAtOnce) {
  Received received;
  ReaderRun run;
  std::vector<std::size_t> sizes;
  SocketFaults faults;
  faults.on(Call::recv, only_with(MSG_DONTWAIT, [&](const CallDetails& call) {
              sizes.push_back(call.size);
              return Outcome::as_usual();
            }));
  const std::string large = body + std::string(std::size_t{3} * 8191, ' ');
  EXPECT_EQ(run.send(export_request_with(large)).answer(), answer);
  EXPECT_THAT(received.texts(), ElementsAre(large));
  EXPECT_EQ(sizes, std::vector<std::size_t>(4, 8191));
}

TEST(Reader, ASenderThatStallsFor30SecondsCountsAsOneThatClosed) {
  Received received;
  ReaderRun run;
  run.send(request.substr(0, request.size() - 1));
  const TraceRecorder recorder;
  SocketFaults faults;
  faults.on(Call::poll, only_with(30000, [](const CallDetails&) { return Outcome::result(0); }));
  EXPECT_EQ(run.answer(), "");
  EXPECT_TRUE(is_only_line(recorder, trace_level::detail, 179, text_of_closed));
  EXPECT_THAT(received.texts(), IsEmpty());
}

TEST(Reader, ARequestThatTakesLongerThan120SecondsCountsAsOneThatClosed) {
  Received received;
  ReaderRun run;
  run.send(request);
  const TraceRecorder recorder;
  ReplacedClock clock;
  SocketFaults faults;
  std::vector<int> waits;
  faults.on(Call::recv, [&](const CallDetails&) {
    clock.advance(std::chrono::seconds(25));
    return Outcome::at_most(waits.size() > 1 ? 1 : 300);
  });
  faults.on(Call::poll, keeping_arguments(waits, Outcome::as_usual()));
  run.run();
  EXPECT_THAT(waits, ElementsAre(5000, 30000, 30000, 30000, 20000));
  EXPECT_TRUE(is_only_line(recorder, trace_level::detail, 179, text_of_closed));
  EXPECT_THAT(received.texts(), IsEmpty());
}

TEST(Reader, WhatIsLeftOfTheTimeIsRoundedUp) {
  Received received;
  ReaderRun run;
  run.send(request);
  ReplacedClock clock;
  SocketFaults faults;
  std::vector<int> waits;
  faults.on(Call::recv, [&](const CallDetails&) {
    clock.advance(std::chrono::milliseconds(119001));
    return Outcome::at_most(request.size() - 1);
  });
  faults.on(Call::poll, keeping_arguments(waits, Outcome::as_usual()));
  run.run();
  EXPECT_THAT(waits, ElementsAre(5000, 1000));
  EXPECT_THAT(received.texts(), ElementsAre(body));
}

TEST(Reader, AnInterruptedReceiveWithinTheRequestIsRepeated) {
  for (const int error : {EINTR, EAGAIN}) {
    Received received;
    ReaderRun run;
    const ReplacedClock clock;
    const TraceRecorder recorder;
    SocketFaults faults;
    faults.on(Call::recv, in_turn({Outcome::at_most(request.size() - 3), Outcome::failure(error),
                                   Outcome::failure(error)}));
    EXPECT_EQ(run.send(request).answer(), answer);
    EXPECT_THAT(received.texts(), ElementsAre(body));
    EXPECT_THAT(clock.sleeps(),
                testing::ElementsAreArray(std::vector<unsigned>(error == EAGAIN ? 2 : 0, 1000)));
    EXPECT_THAT(recorder.lines(), IsEmpty());
  }
}

// Without a length the request counts as read.
TEST(Reader, AnInterruptedReceiveBeforeTheFirstByteEndsIt) {
  for (const int error : {EINTR, EAGAIN}) {
    Received received;
    ReaderRun run;
    const ReplacedClock clock;
    const TraceRecorder recorder;
    SocketFaults faults;
    faults.on(Call::recv, in_turn({Outcome::failure(error)}));
    run.send(request).run();
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(run.rest(), "");
    EXPECT_EQ(clock.sleeps().size(), error == EAGAIN ? 1U : 0U);
    EXPECT_THAT(received.texts(), IsEmpty());
    EXPECT_THAT(recorder.lines(), IsEmpty());
  }
}

TEST(Reader, AFailedReceiveEndsIt) {
  for (const std::size_t first : {std::size_t{0}, request.size() - 1}) {
    Received received;
    ReaderRun run;
    run.send(request);
    const TraceRecorder recorder;
    SocketFaults faults;
    if (first == 0)
      faults.on(Call::recv, in_turn({Outcome::failure(ECONNRESET)}));
    else
      faults.on(Call::recv, in_turn({Outcome::at_most(first), Outcome::failure(ECONNRESET)}));
    run.run();
    EXPECT_EQ(errno, 0);
    EXPECT_TRUE(is_only_line(recorder, trace_level::error, 154, "readerThread: ERROR in 'recv'"));
    EXPECT_THAT(received.texts(), IsEmpty());
  }
}

TEST(Reader, AnAnswerThatGoesOutInPiecesIsComplete) {
  Received received;
  ReaderRun run;
  run.send(request);
  const TraceRecorder recorder;
  SocketFaults faults;
  std::size_t sends = 0;
  faults.on(Call::send, [&](const CallDetails&) {
    ++sends;
    return Outcome::at_most(3);
  });
  EXPECT_EQ(run.answer(), answer);
  EXPECT_EQ(sends, (answer.size() + 2) / 3);
  EXPECT_THAT(recorder.lines(), IsEmpty());
}

TEST(Reader, AnInterruptedSendIsRepeated) {
  for (const int error : {EINTR, EAGAIN}) {
    Received received;
    ReaderRun run;
    run.send(request);
    const ReplacedClock clock;
    const TraceRecorder recorder;
    SocketFaults faults;
    faults.on(Call::send, in_turn({Outcome::failure(error), Outcome::at_most(100),
                                   Outcome::failure(error), Outcome::at_most(1)}));
    EXPECT_EQ(run.answer(), answer);
    EXPECT_THAT(clock.sleeps(),
                testing::ElementsAreArray(std::vector<unsigned>(error == EAGAIN ? 2 : 0, 1000)));
    EXPECT_THAT(received.texts(), ElementsAre(body));
    EXPECT_THAT(recorder.lines(), IsEmpty());
  }
}

TEST(Reader, AFailedAnswerDoesNotPreventTheCallback) {
  for (const Outcome& outcome :
       {Outcome::failure(EPIPE), Outcome::failure(ENOBUFS), Outcome::result(0)}) {
    Received received;
    ReaderRun run;
    run.send(request);
    const TraceRecorder recorder;
    SocketFaults faults;
    faults.on(Call::send, in_turn({Outcome::at_most(116), outcome}));
    EXPECT_EQ(run.answer(), answer.substr(0, 116));
    EXPECT_TRUE(is_only_line(recorder, trace_level::error, 224, "readerThread: ERROR in 'send'"));
    EXPECT_THAT(received.texts(), ElementsAre(body));
  }
}

// Without protection, sending to it would end the process by a signal.
TEST(Reader, ASenderThatClosedAfterItsRequestHasItsIndicationHandedOver) {
  Received received;
  ReaderRun run;
  run.send(request).sender.close();
  const TraceRecorder recorder;
  run.run();
  EXPECT_TRUE(is_only_line(recorder, trace_level::error, 224, "readerThread: ERROR in 'send'"));
  EXPECT_THAT(received.texts(), ElementsAre(body));
}

TEST(Reader, WhatTheCallbackThrowsIsTracedAndGoesNoFurther) {
  Received received;
  for (const bool is_standard : {true, false}) {
    received.on_each([is_standard](const std::string&) {
      if (is_standard) throw std::runtime_error("the callback's own");
      throw 42;
    });
    ReaderRun run;
    const TraceRecorder recorder;
    EXPECT_EQ(run.send(request).answer(), answer);
    EXPECT_THAT(recorder.texts(trace_level::error),
                ElementsAre(is_standard ? "readerThread: Exception raised: the callback's own"
                                        : "readerThread: Exception raised: unknown"));
    EXPECT_EQ(recorder.lines().size(), 1U);
  }
}

TEST(Reader, TheCallbackMayTakeTheText) {
  Received received;
  std::string taken;
  received.on_each([&](std::string& text) { taken = std::move(text); });
  ReaderRun run;
  EXPECT_EQ(run.send(request).answer(), answer);
  EXPECT_EQ(taken, body);
}

// The callback is looked up only when the request is there and answered.
TEST(Reader, ALateReaderSkipsTheCallback) {
  for (const bool is_destroyed : {true, false}) {
    Received received;
    ReaderRun run;
    run.send(request);
    const TraceRecorder recorder;
    SocketFaults faults;
    faults.on(Call::send, [&](const CallDetails&) {
      if (is_destroyed)
        run.state->abandon();
      else
        run.listener.pCallBack = nullptr;
      return Outcome::as_usual();
    });
    EXPECT_EQ(run.answer(), answer);
    EXPECT_THAT(received.texts(), IsEmpty());
    EXPECT_THAT(recorder.lines(), IsEmpty());
  }
}

TEST(Reader, GivesItsPlaceBack) {
  Received received;
  ReaderRun run;
  for (int more = 1; more < zuCIM::listener_limit::most_readers; ++more)
    EXPECT_TRUE(run.state->admit_reader());
  EXPECT_FALSE(run.state->admit_reader());
  run.send(request).run();
  EXPECT_TRUE(run.state->admit_reader());
  EXPECT_FALSE(run.state->admit_reader());
}

}  // namespace
