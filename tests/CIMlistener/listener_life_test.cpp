#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/tcp.h>

#include <cerrno>
#include <future>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "BRQ/replaced_clock.h"
#include "CIMlistener/running_listener.h"
#include "CIMlistener/socket_faults.h"
#include "support/trace_recorder.h"
#include "zuCIM/vocabulary.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using zuCIM::CIMindication;
namespace trace_level = zuCIM::trace_level;

constexpr const char* source = "Src/CIMlistener";
constexpr const char* text_of_end = "listenerThread: Listener: Beendet!";

const std::string request = export_request("1042");
const std::string answer = export_answer("1042", "000000236");

// Whether the listener's thread has told that it is gone.
bool has_ended(CIMindication& listener) {
  return std::atomic_ref<zuCIM::IndicationCallback>(listener.pCallBack).load() == nullptr;
}

TEST(ListenerLife, IsMadeWithoutCallbackAndPort) {
  CIMindication listener;
  EXPECT_EQ(listener.pCallBack, nullptr);
  EXPECT_EQ(listener.port, -1);
  EXPECT_EQ(listener.listenSocket, -1);
  EXPECT_EQ(listener.startResult, 0);
}

TEST(ListenerLife, CheckSaysOneUnlessItListens) {
  Received received;
  RunningListener running;
  EXPECT_EQ(CIMindication().check_Listener(), 1);
  EXPECT_EQ(running.listener->check_Listener(), 0);
  running.listener->stop_Listener();
  EXPECT_EQ(running.listener->check_Listener(), 1);
}

TEST(ListenerLife, StartAndStopAreTraced) {
  Received received;
  const TraceRecorder recorder;
  {
    RunningListener running;
    EXPECT_EQ(recorder.count(trace_level::warning, source, 381,
                             "start_Listener: Listener-Thread started\n"),
              1);
    EXPECT_TRUE(running.has_callback());
    running.listener->stop_Listener();
    EXPECT_FALSE(running.has_callback());
    EXPECT_EQ(recorder.count(trace_level::warning, source, 330, text_of_end), 1);
    EXPECT_EQ(recorder.count(trace_level::warning, source, 428,
                             "stop_Listener: Listener-Thread stopped."),
              1);
  }
  EXPECT_EQ(recorder.lines().size(), 3U);
}

TEST(ListenerLife, AConnectionIsTraced) {
  Received received;
  const TraceRecorder recorder;
  {
    RunningListener running;
    EXPECT_EQ(running.ask(request), answer);
    received.wait_for(1);
  }
  EXPECT_EQ(
      recorder.count(trace_level::detail, source, 322, "listenerThread: start eventreader-thread"),
      1);
  // The run of the reader on the listener's own thread.
  EXPECT_EQ(recorder.count(trace_level::detail, source, 179,
                           "readerThread: connection has been gracefully closed"),
            1);
  EXPECT_THAT(recorder.texts(trace_level::error), IsEmpty());
}

TEST(ListenerLife, ASecondStartIsRefused) {
  Received received;
  RunningListener running;
  const TraceRecorder recorder;
  EXPECT_EQ(running.listener->start_Listener(), 1001);
  EXPECT_TRUE(recorder.has_only(trace_level::warning, source, 358,
                                "start_Listener: Listener is already running"));
  EXPECT_EQ(running.ask(request), answer);
}

TEST(ListenerLife, AStartWithoutCallbackIsRefused) {
  CIMindication listener;
  listener.port = 0;
  const TraceRecorder recorder;
  EXPECT_EQ(listener.start_Listener(), 1001);
  EXPECT_TRUE(recorder.has_only(trace_level::error, source, 363,
                                "start_Listener: pCallBack (null) not set!"));
  EXPECT_EQ(listener.startResult, 0);
}

TEST(ListenerLife, AThreadThatCannotBeStartedIsReported) {
  CIMindication listener;
  listener.pCallBack = &Received::take;
  listener.port = 0;
  const TraceRecorder recorder;
  SocketFaults faults;
  faults.on(Call::thread, in_turn({Outcome::failure(EAGAIN)}));
  EXPECT_EQ(listener.start_Listener(), 1001);
  EXPECT_EQ(listener.startResult, EAGAIN);
  EXPECT_TRUE(recorder.has_only(trace_level::error, source, 376,
                                "start_Listener: Cannot start listener-thread"));
}

// Its callback stays set, and that is what a stop waits for.
TEST(ListenerLife, AStopAfterAFailedStartWaitsForThirtySeconds) {
  CIMindication listener;
  listener.pCallBack = &Received::take;
  const TraceRecorder recorder;
  SocketFaults faults;
  faults.on(Call::thread, in_turn({Outcome::failure(EAGAIN)}));
  listener.start_Listener();
  const ReplacedClock clock;
  listener.stop_Listener();
  EXPECT_EQ(clock.sleeps(), std::vector<unsigned>(30, 1000));
  EXPECT_EQ(listener.startResult, 0);
  EXPECT_EQ(recorder.count(trace_level::error, source, 421,
                           "stop_Listener: Listener-Thread is not stopped yet!"),
            1);
  EXPECT_EQ(recorder.lines().size(), 2U);
}

TEST(ListenerLife, AListenerCanBeStartedAfterAFailedStart) {
  Received received;
  const ThreadWatch threads;
  CIMindication listener;
  listener.pCallBack = &Received::take;
  listener.port = 0;
  SocketFaults faults;
  faults.on(Call::thread, in_turn({Outcome::failure(EAGAIN)}));
  EXPECT_EQ(listener.start_Listener(), 1001);
  EXPECT_EQ(listener.start_Listener(), 0);
  EXPECT_TRUE(comes_true([&] { return listener.check_Listener() == 0; }));
  listener.stop_Listener();
  EXPECT_EQ(listener.pCallBack, nullptr);
}

TEST(ListenerLife, StoppingWhatDoesNotListenDoesNothing) {
  const TraceRecorder recorder;
  CIMindication listener;
  listener.pCallBack = &Received::take;
  listener.stop_Listener();
  EXPECT_NE(listener.pCallBack, nullptr);
  EXPECT_THAT(recorder.lines(), IsEmpty());
}

TEST(ListenerLife, AfterAStopAllIsAsBefore) {
  Received received;
  RunningListener running;
  const std::uint16_t port = running.port;
  running.listener->stop_Listener();
  EXPECT_EQ(running.listener->listenSocket, -1);
  EXPECT_EQ(running.listener->pCallBack, nullptr);
  EXPECT_EQ(running.listener->startResult, 0);
  EXPECT_EQ(running.listener->port, 0);
  EXPECT_EQ(active_readers(), 0);
  EXPECT_THROW(connect_to("127.0.0.1", port), std::system_error);
  running.listener->stop_Listener();
  EXPECT_EQ(running.listener->start_Listener(), 1001);  // It has no callback any more.
}

// A wait of ten seconds would be seen: no wait expires here.
TEST(ListenerLife, AStopWakesTheThreadAtOnce) {
  Received received;
  SocketFaults faults;
  faults.on(Call::poll, only_with(10000, [](const CallDetails&) { return Outcome::patient(); }));
  RunningListener running;
  running.listener->stop_Listener();
  EXPECT_FALSE(running.has_callback());
}

// The thread hangs, so all the waiting there is is that for its end.
TEST(ListenerLife, AStopGivesUpAfterThirtyPolls) {
  Received received;
  std::promise<void> is_stuck;
  std::promise<void> may_go_on;
  SocketFaults faults;
  RunningListener running;
  faults.on(Call::accept, [&, gate = may_go_on.get_future().share()](const CallDetails&) {
    is_stuck.set_value();
    gate.wait();
    return Outcome::as_usual();
  });
  const Descriptor socket = running.connect();
  is_stuck.get_future().wait();
  const TraceRecorder recorder;
  {
    const ReplacedClock clock;
    running.listener->stop_Listener();
    EXPECT_EQ(clock.sleeps(), std::vector<unsigned>(30, 1000));
  }
  EXPECT_TRUE(running.has_callback());
  EXPECT_EQ(running.listener->startResult, 0);
  EXPECT_EQ(running.listener->check_Listener(), 1);
  EXPECT_TRUE(recorder.has_only(trace_level::error, source, 421,
                                "stop_Listener: Listener-Thread is not stopped yet!"));
  may_go_on.set_value();
  EXPECT_TRUE(comes_true([&] { return !running.has_callback(); }));
  EXPECT_THAT(received.texts(), IsEmpty());
}

// By the time that a connection is accepted the listener has been stopped.
TEST(ListenerLife, AConnectionThatComesWithTheStopHasNoReader) {
  Received received;
  SocketFaults faults;
  RunningListener running;
  const TraceRecorder recorder;
  faults.on(Call::accept, [&](const CallDetails&) {
    std::atomic_ref<int>(running.listener->listenSocket).store(-1);
    return Outcome::as_usual();
  });
  const Descriptor socket = running.connect();
  EXPECT_EQ(receive_all(socket), "");
  EXPECT_TRUE(comes_true([&] { return !running.has_callback(); }));
  EXPECT_THAT(recorder.texts(), ElementsAre(text_of_end));
}

// The documented way to ask for the end from outside.
TEST(ListenerLife, ASocketThatIsTakenAwayEndsTheThreadWithItsNextWait) {
  CIMindication listener;
  listener.pCallBack = &Received::take;
  listener.port = 0;
  int waits = 0;
  SocketFaults faults;
  faults.on(Call::poll, [&](const CallDetails& call) {
    EXPECT_EQ(call.argument, 10000);
    EXPECT_EQ(call.descriptor, listener.listenSocket);
    if (++waits == 2) listener.listenSocket = -1;
    return Outcome::result(0);
  });
  CIMindication::listenerThread(&listener);
  EXPECT_EQ(waits, 2);
  EXPECT_EQ(listener.listenSocket, -1);
  EXPECT_EQ(listener.pCallBack, nullptr);
}

TEST(ListenerLife, ItGoesOnAfterWaitsWithoutAConnection) {
  Received received;
  std::atomic<int> waits = 0;
  SocketFaults faults;
  faults.on(Call::poll, only_with(10000, [&](const CallDetails&) {
              return waits.fetch_add(1) < 5 ? Outcome::result(0) : Outcome::as_usual();
            }));
  RunningListener running;
  EXPECT_TRUE(comes_true([&] { return waits.load() > 5; }));
  EXPECT_EQ(running.ask(request), answer);
}

TEST(ListenerLife, AFailedWaitEndsIt) {
  Received received;
  SocketFaults faults;
  const TraceRecorder recorder;
  faults.on(Call::poll, only_with(10000, in_turn({Outcome::result(0), Outcome::failure(EINVAL)})));
  CIMindication listener;
  listener.pCallBack = &Received::take;
  listener.port = 0;
  EXPECT_EQ(CIMindication::listenerThread(&listener), nullptr);
  EXPECT_EQ(listener.pCallBack, nullptr);
  EXPECT_EQ(listener.listenSocket, -1);
  EXPECT_THAT(recorder.texts(), ElementsAre("mySelect: ERROR in 'select'", text_of_end));
}

TEST(ListenerLife, TheRoutineWithoutAListenerDoesNothing) {
  const TraceRecorder recorder;
  EXPECT_EQ(CIMindication::listenerThread(nullptr), nullptr);
  EXPECT_THAT(recorder.lines(), IsEmpty());
}

// What becomes of a listener whose thread runs with these faults.
void expect_that_it_does_not_open(Call call, int error, int line, const char* text) {
  const TraceRecorder recorder;
  SocketFaults faults;
  faults.on(call, in_turn({Outcome::failure(error)}));
  CIMindication listener;
  listener.pCallBack = &Received::take;
  listener.port = 0;
  std::atomic_ref<int>(zuCIM::ListenerThreadIsActive).store(5);
  CIMindication::listenerThread(&listener);
  EXPECT_EQ(listener.pCallBack, nullptr);
  EXPECT_EQ(listener.listenSocket, -1);
  EXPECT_EQ(active_readers(), 0);
  EXPECT_EQ(recorder.count(trace_level::error, source, line, text), 1);
  EXPECT_EQ(recorder.count(trace_level::warning, source, 330, text_of_end), 1);
  EXPECT_EQ(recorder.lines().size(), 2U);
}

TEST(ListenerLife, WithoutASocketItEnds) {
  expect_that_it_does_not_open(Call::socket, EMFILE, 265, "listenerThread: socket");
}

TEST(ListenerLife, WithoutListeningItEnds) {
  expect_that_it_does_not_open(Call::listen, EADDRINUSE, 284, "listenerThread: listen");
}

TEST(ListenerLife, APortInUseOrOutOfRangeEndsIt) {
  const Descriptor holder = listen_on("127.0.0.1", 0);
  for (const int port : {static_cast<int>(local_port(holder)), -1, 65536, 1 << 30}) {
    const ThreadWatch threads;
    const TraceRecorder recorder;
    CIMindication listener;
    listener.pCallBack = &Received::take;
    listener.port = port;
    std::atomic_ref<int>(zuCIM::ListenerThreadIsActive).store(5);
    EXPECT_EQ(listener.start_Listener(), 0);
    EXPECT_TRUE(comes_true([&] { return has_ended(listener); }));
    EXPECT_EQ(listener.check_Listener(), 1);
    EXPECT_EQ(active_readers(), 0);
    EXPECT_EQ(recorder.count(trace_level::error, source, 279, "listenerThread: bind"), 1);
    EXPECT_EQ(listener.start_Listener(), 1001);
    EXPECT_EQ(recorder.count(trace_level::error, source, 363,
                             "start_Listener: pCallBack (null) not set!"),
              1);
  }
}

TEST(ListenerLife, ItCanBeStartedAgainWithANewCallback) {
  Received received;
  RunningListener running;
  EXPECT_EQ(running.ask(request), answer);
  running.listener->stop_Listener();
  running.listener->pCallBack = &Received::take;
  running.listener->port = running.port;
  EXPECT_EQ(running.listener->start_Listener(), 0);
  // The port is free although the connection before has not been forgotten yet.
  EXPECT_TRUE(comes_true([&] { return running.is_listening() || !running.has_callback(); }));
  EXPECT_EQ(running.ask(request), answer);
  EXPECT_EQ(received.wait_for(2).size(), 2U);
}

TEST(ListenerLife, ListensAtAnyAddressWithItsOptionsAndItsBacklog) {
  Received received;
  SocketFaults faults;
  int backlog = 0;
  faults.on(Call::listen, [&](const CallDetails& call) {
    backlog = call.argument;
    return Outcome::as_usual();
  });
  RunningListener running;
  EXPECT_EQ(backlog, 128);
  using Option = std::pair<int, int>;
  for (const auto& [level, name] :
       {Option{IPPROTO_TCP, TCP_NODELAY}, Option{SOL_SOCKET, SO_REUSEADDR}}) {
    int value = 0;
    socklen_t size = sizeof value;
    EXPECT_EQ(::getsockopt(running.listener->listenSocket, level, name, &value, &size), 0);
    EXPECT_EQ(value, 1);
  }
  const Descriptor socket = connect_to("127.0.0.99", running.port);
  send_all(socket, request);
  EXPECT_EQ(receive_all(socket), answer);
}

TEST(ListenerLife, AFailedAcceptIsTracedAndTriedAgain) {
  Received received;
  SocketFaults faults;
  RunningListener running;
  const TraceRecorder recorder(trace_level::error);
  faults.on(Call::accept, in_turn({Outcome::failure(EMFILE), Outcome::failure(ECONNABORTED)}));
  EXPECT_EQ(running.ask(request), answer);
  EXPECT_EQ(recorder.count(trace_level::error, source, 307, "listenerThread: ERROR in 'accept'"),
            2);
  EXPECT_EQ(recorder.lines().size(), 2U);
}

// The connection is lost, but neither its descriptor nor its place.
TEST(ListenerLife, AReaderThatCannotBeStartedDoesNotStopIt) {
  Received received;
  SocketFaults faults;
  RunningListener running;
  const TraceRecorder recorder;
  faults.on(Call::thread, in_turn(std::vector<Outcome>(zuCIM::listener_limit::most_readers + 1,
                                                       Outcome::failure(EAGAIN))));
  for (int failed = 0; failed <= zuCIM::listener_limit::most_readers; ++failed)
    EXPECT_EQ(receive_all(running.connect()), "");
  EXPECT_EQ(running.ask(request), answer);
  EXPECT_EQ(recorder.count(trace_level::error, source, 318,
                           "listenerThread: Cannot start eventreader-thread"),
            zuCIM::listener_limit::most_readers + 1);
  EXPECT_EQ(received.wait_for(1).size(), 1U);
}

// Until the port is open a second start is not refused; its thread finds the port taken. Of two
// that listen at the very same moment the system may refuse both, so one comes first.
TEST(ListenerLife, StartingTwiceAtOnceLeavesItListening) {
  Received received;
  const ThreadWatch threads;
  CIMindication listener;
  listener.pCallBack = &Received::take;
  listener.port = unused_port("0.0.0.0");
  SocketFaults faults;
  std::promise<void> both_started;
  std::atomic<int> calls = 0;
  faults.on(Call::listen, [&, gate = both_started.get_future().share()](const CallDetails&) {
    gate.wait();
    EXPECT_TRUE(calls.fetch_add(1) == 0 ||
                comes_true([&] { return listener.check_Listener() == 0; }));
    return Outcome::as_usual();
  });
  const TraceRecorder recorder;
  EXPECT_EQ(listener.start_Listener(), 0);
  EXPECT_EQ(listener.start_Listener(), 0);
  both_started.set_value();
  EXPECT_TRUE(comes_true([&] {
    return listener.check_Listener() == 0 &&
           recorder.count(trace_level::warning, source, 330, text_of_end) == 1;
  }));
  EXPECT_FALSE(has_ended(listener));
  const Descriptor socket = connect_to("127.0.0.1", static_cast<std::uint16_t>(listener.port));
  send_all(socket, request);
  EXPECT_EQ(receive_all(socket), answer);
  EXPECT_EQ(received.wait_for(1).size(), 1U);
  listener.stop_Listener();
  EXPECT_TRUE(has_ended(listener));
}

// With a port that the system chooses both threads can listen: the later one stays.
TEST(ListenerLife, OfTwoThreadsThatListenOneStays) {
  Received received;
  const ThreadWatch threads;
  const TraceRecorder recorder;
  SocketFaults faults;
  std::promise<void> both_started;
  faults.on(Call::listen, [gate = both_started.get_future().share()](const CallDetails&) {
    gate.wait();
    return Outcome::as_usual();
  });
  CIMindication listener;
  listener.pCallBack = &Received::take;
  listener.port = 0;
  EXPECT_EQ(listener.start_Listener(), 0);
  EXPECT_EQ(listener.start_Listener(), 0);
  both_started.set_value();
  EXPECT_TRUE(comes_true(
      [&] { return recorder.count(trace_level::warning, source, 330, text_of_end) == 1; }));
  EXPECT_EQ(listener.check_Listener(), 0);
  const Descriptor socket = connect_to("127.0.0.1", port_of(listener));
  send_all(socket, request);
  EXPECT_EQ(receive_all(socket), answer);
  listener.stop_Listener();
  EXPECT_TRUE(has_ended(listener));
}

TEST(ListenerLife, DestroyingItStopsItAtAnyMoment) {
  Received received;
  const ThreadWatch threads;
  std::uint16_t port = 0;
  {
    CIMindication listener;
    listener.pCallBack = &Received::take;
    listener.port = 0;
    listener.start_Listener();
    EXPECT_TRUE(comes_true([&] { return listener.check_Listener() == 0; }));
    port = port_of(listener);
  }
  EXPECT_TRUE(threads.wait_for_threads());
  EXPECT_THROW(connect_to("127.0.0.1", port), std::system_error);
}

// Its thread may find nobody before it has opened the port, or after.
TEST(ListenerLife, DestroyingItWhileItStartsIsSafe) {
  const ThreadWatch threads;
  for (int round = 0; round < 100; ++round) {
    CIMindication listener;
    listener.pCallBack = &Received::take;
    listener.port = 0;
    EXPECT_EQ(listener.start_Listener(), 0);
    if (round % 2 == 0) std::this_thread::yield();
  }
  EXPECT_TRUE(threads.wait_for_threads());
}

}  // namespace
