#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <string>
#include <vector>

#include "BRQ/replaced_clock.h"
#include "CIMlistener/socket_faults.h"
#include "support/failing_allocator.h"
#include "support/loopback.h"
#include "support/trace_recorder.h"
#include "zuCIM/indication.h"
#include "zuCIM/vocabulary.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using zuCIM::CIMindication;

constexpr const char* text_of_error = "mySelect: ERROR in 'select'";

// The waits that a call asks for, in milliseconds; each expires at once.
std::vector<int> waits_of(int descriptor, int seconds) {
  std::vector<int> waits;
  SocketFaults faults;
  faults.on(Call::poll, keeping_arguments(waits, Outcome::result(0)));
  EXPECT_EQ(CIMindication::mySelect(descriptor, seconds), 0);
  return waits;
}

TEST(MySelect, SaysThatADescriptorCanBeRead) {
  const WakeUp event;
  event.set();
  EXPECT_EQ(CIMindication::mySelect(event.number(), 60), 1);
}

TEST(MySelect, SaysThatTheTimeIsOver) {
  const WakeUp event;
  EXPECT_EQ(CIMindication::mySelect(event.number(), 0), 0);
}

TEST(MySelect, WaitsForWholeSeconds) {
  const WakeUp event;
  EXPECT_THAT(waits_of(event.number(), 10), ElementsAre(10000));
  EXPECT_THAT(waits_of(event.number(), 0), ElementsAre(0));
  EXPECT_THAT(waits_of(event.number(), -3), ElementsAre(0));
}

TEST(MySelect, AnAbsurdTimeDoesNotOverflow) {
  const WakeUp event;
  EXPECT_THAT(waits_of(event.number(), INT_MAX), ElementsAre(INT_MAX / 1000 * 1000));
}

TEST(MySelect, WithoutADescriptorItWaitsTheWholeTime) {
  const TraceRecorder recorder;
  EXPECT_EQ(CIMindication::mySelect(-1, 0), 0);
  EXPECT_THAT(waits_of(-1, 10), ElementsAre(10000));
  EXPECT_THAT(recorder.lines(), IsEmpty());
}

TEST(MySelect, WithoutADescriptorAnInterruptionEndsIt) {
  const TraceRecorder recorder;
  SocketFaults faults;
  faults.on(Call::poll, in_turn({Outcome::failure(EINTR)}));
  EXPECT_EQ(CIMindication::mySelect(-1, 60), -1);
  EXPECT_THAT(recorder.lines(), IsEmpty());
}

TEST(MySelect, AnInterruptedWaitIsRepeatedAtOnce) {
  const WakeUp event;
  event.set();
  const TraceRecorder recorder;
  const ReplacedClock clock;
  SocketFaults faults;
  faults.on(Call::poll, in_turn({Outcome::failure(EINTR), Outcome::failure(EINTR)}));
  EXPECT_EQ(CIMindication::mySelect(event.number(), 60), 1);
  EXPECT_EQ(errno, 0);
  EXPECT_THAT(clock.sleeps(), IsEmpty());
  EXPECT_THAT(recorder.lines(), IsEmpty());
}

TEST(MySelect, ALackOfResourcesIsWaitedOut) {
  const WakeUp event;
  event.set();
  const TraceRecorder recorder;
  const ReplacedClock clock;
  SocketFaults faults;
  faults.on(Call::poll, in_turn({Outcome::failure(EAGAIN), Outcome::failure(EAGAIN)}));
  EXPECT_EQ(CIMindication::mySelect(event.number(), 60), 1);
  EXPECT_EQ(errno, 0);
  EXPECT_THAT(clock.sleeps(), ElementsAre(1000, 1000));
  EXPECT_THAT(recorder.lines(), IsEmpty());
}

TEST(MySelect, AShortageOfMemoryIsWaitedOut) {
  const WakeUp event;
  event.set();
  const ReplacedClock clock;
  AllocationFailure failure(1, AllocationKind::cpp);
  const int ready = CIMindication::mySelect(event.number(), 60);
  failure.disarm();
  EXPECT_TRUE(failure.happened());
  EXPECT_EQ(ready, 1);
  EXPECT_THAT(clock.sleeps(), ElementsAre(1000));
}

TEST(MySelect, AnyOtherErrorIsTraced) {
  const TraceRecorder recorder;
  const WakeUp event;
  SocketFaults faults;
  faults.on(Call::poll, in_turn({Outcome::failure(EINVAL)}));
  EXPECT_EQ(CIMindication::mySelect(event.number(), 60), -1);
  EXPECT_TRUE(recorder.has_only(zuCIM::trace_level::error, "Src/CIMlistener", 117, text_of_error));
}

TEST(MySelect, ADescriptorThatIsNotOpenIsAnError) {
  for (const int descriptor : {-2, INT_MIN, 1000000}) {
    const TraceRecorder recorder;
    EXPECT_EQ(CIMindication::mySelect(descriptor, 60), -1);
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{text_of_error});
  }
}

}  // namespace
