#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <optional>
#include <string>
#include <vector>

#include "BRQ/Time.h"
#include "BRQ/replaced_clock.h"
#include "CIMlistener/reader_run.h"
#include "CIMlistener/running_listener.h"
#include "CIMlistener/socket_faults.h"
#include "support/failing_allocator.h"
#include "support/trace_recorder.h"
#include "zuCIM/vocabulary.h"

// Every allocation of the listener and its readers is made to fail once.
namespace {

const std::string request = export_request("1042");
const std::string body = export_request_body("1042");
const std::string answer = export_answer("1042", "000000236");

std::atomic<int> calls = 0;

// While it lives, nobody's sleep takes time.
class NoSleep {
 public:
  NoSleep() { BRQ::Misc::set_clock(&clock_); }
  ~NoSleep() { BRQ::Misc::set_clock(nullptr); }
  NoSleep(const NoSleep&) = delete;
  NoSleep& operator=(const NoSleep&) = delete;

 private:
  static void skip(unsigned) {}

  // Threads that go on may still look at it.
  inline static const BRQ::Misc::Clock clock_{BRQ::Misc::system_clock.seconds, &skip};
};

int count_call(std::string& text) {
  EXPECT_EQ(text, body);
  calls.fetch_add(1);
  return 0;
}

// A request is either answered and handed over, or neither; its connection is closed in any case.
TEST(ListenerMemory, AReaderWithoutMemoryClosesItsConnection) {
  const unsigned allocations = for_each_failing_allocation([](AllocationFailure& failure) {
    ReaderRun run;
    run.listener.pCallBack = &count_call;
    run.send(request);
    calls.store(0);
    const NoSleep impatience;
    failure.arm();
    run.run();
    failure.disarm();
    EXPECT_EQ(receive_all(run.sender), calls.load() == 1 ? answer : "");
    EXPECT_TRUE(calls.load() == 1 || failure.happened());
  });
  EXPECT_GT(allocations, 1U);
}

TEST(ListenerMemory, AShortageIsTraced) {
  ReaderRun run;
  run.listener.pCallBack = &count_call;
  run.send(request);
  const TraceRecorder recorder;
  SocketFaults faults;
  AllocationFailure failure(1, AllocationKind::cpp);
  failure.disarm();
  faults.on(Call::recv, [&failure](const CallDetails&) {
    failure.arm();
    return Outcome::as_usual();
  });
  run.run();
  failure.disarm();
  EXPECT_THAT(recorder.texts(),
              testing::ElementsAre("readerThread: Exception raised: std::bad_alloc"));
}

// A start that fails can be repeated.
TEST(ListenerMemory, AStartWithoutMemoryFails) {
  for_each_failing_allocation([](AllocationFailure& failure) {
    const ThreadWatch threads;
    zuCIM::CIMindication listener;
    listener.pCallBack = &count_call;
    listener.port = 0;
    failure.arm();
    const int result = listener.start_Listener();
    failure.disarm();
    EXPECT_EQ(result, failure.happened() ? 1001 : 0);
    EXPECT_EQ(listener.startResult == 0, result == 0);
  });
}

// A listener that was made while there was no memory.
class PoorListener {
 public:
  PoorListener() {
    {
      const AllocationFailure failure(1, AllocationKind::cpp, FailureSpan::from_then_on);
      listener.emplace();
    }
    listener->pCallBack = &count_call;
    listener->port = 0;
  }

  // Starts it while there is no memory for what it lacks.
  int start() {
    const AllocationFailure failure(1, AllocationKind::cpp);
    return listener->start_Listener();
  }

  std::optional<zuCIM::CIMindication> listener;
};

TEST(ListenerMemory, AListenerThatWasMadeWithoutMemoryIsStartedOnceThereIsSome) {
  const ThreadWatch threads;
  PoorListener poor;
  zuCIM::CIMindication& listener = *poor.listener;
  EXPECT_EQ(listener.startResult, 0);
  {
    const TraceRecorder recorder;
    EXPECT_EQ(poor.start(), 1001);
    EXPECT_EQ(listener.startResult, ENOMEM);
    EXPECT_TRUE(recorder.has_only(zuCIM::trace_level::error, "Src/CIMlistener", 376,
                                  "start_Listener: Cannot start listener-thread"));
  }
  EXPECT_EQ(listener.check_Listener(), 1);
  calls.store(0);
  ASSERT_EQ(listener.start_Listener(), 0);
  ASSERT_TRUE(comes_true([&] { return listener.check_Listener() == 0; }));
  const Descriptor socket = connect_to("127.0.0.1", port_of(listener));
  send_all(socket, request);
  EXPECT_EQ(receive_all(socket), answer);
  EXPECT_TRUE(comes_true([] { return calls.load() == 1; }));
  listener.stop_Listener();
}

TEST(ListenerMemory, AListenerThatWasMadeWithoutMemoryIsStoppedLikeAnyOther) {
  PoorListener poor;
  const ReplacedClock clock;
  poor.listener->stop_Listener();
  EXPECT_EQ(clock.sleeps(), std::vector<unsigned>());
  poor.start();
  poor.listener->stop_Listener();
  EXPECT_EQ(clock.sleeps(), std::vector<unsigned>(30, 1000));
  EXPECT_EQ(poor.listener->startResult, 0);
}

TEST(ListenerMemory, AListenerThatWasMadeWithoutMemoryDoesNotListen) {
  PoorListener poor;
  EXPECT_EQ(zuCIM::CIMindication::listenerThread(&*poor.listener), nullptr);
  EXPECT_EQ(poor.listener->pCallBack, nullptr);
  EXPECT_EQ(poor.listener->check_Listener(), 1);
}

// Runs the listener's thread as this one. The first connection comes while memory is short; the
// listener must be there for the second. Returns whether that one was answered.
bool survives(AllocationFailure& failure) {
  const ThreadWatch threads;
  const NoSleep impatience;
  SocketFaults faults;
  zuCIM::CIMindication listener;
  listener.pCallBack = &count_call;
  listener.port = 0;
  std::array<Descriptor, 2> sockets;
  std::size_t waits = 0;
  bool is_answered = false;
  faults.on(Call::poll, only_with(10000, [&](const CallDetails&) {
              failure.disarm();
              if (waits < sockets.size()) {
                sockets[waits] = connect_to("127.0.0.1", port_of(listener));
                send_all(sockets[waits], request);
                if (++waits == 1) failure.arm();
                return Outcome::as_usual();
              }
              is_answered = receive_all(sockets[1]) == answer;
              std::atomic_ref<int>(listener.listenSocket).store(-1);
              return Outcome::result(0);
            }));
  zuCIM::CIMindication::listenerThread(&listener);
  return is_answered;
}

// The wait for the next connection needs memory, too.
TEST(ListenerMemory, AListenerThatRunsOutOfMemoryGoesOn) {
  for_each_failing_allocation([](AllocationFailure& failure) { EXPECT_TRUE(survives(failure)); });
}

}  // namespace
