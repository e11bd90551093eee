#include <gtest/gtest.h>

#include <cstdlib>
#include <system_error>
#include <utility>

#include "CIMconnection/sample_server.h"
#include "CIMindication/generous_server.h"
#include "CIMindication/subscription_test.h"
#include "CIMlistener/running_listener.h"
#include "CIMoperations/recording_clock.h"
#include "support/registry_cleaner.h"

namespace {

using namespace zuCIM;

constexpr const char* source = "Src/CIMconnection";

class Release : public RegistryTest {
 protected:
  // Makes `count` contexts and returns the index of the first.
  static std::uint32_t make(unsigned count, const char* host = "far.example") {
    const _THR_SERVER_ server = sample_server(host);
    const std::uint32_t first = makeContainer(&server, 0);
    for (unsigned made = 1; made < count; ++made) makeContainer(&server, 0);
    return first;
  }
};

// The counter is the process's, so this looks at it in a fresh one.
TEST(ReleaseDeathTest, NeverGivesAnIndexAgain) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto indices = [] {
    const _THR_SERVER_ server = sample_server();
    bool right = makeContainer(&server, 0) == 0 && makeContainer(&server, 0) == 1;
    right = right && clearContainers() == 0 && makeContainer(&server, 0) == 2;
    std::exit(right ? 0 : 1);
  };
  EXPECT_EXIT(indices(), testing::ExitedWithCode(0), "");
}

TEST(ReleaseDeathTest, IsDoneAtTheEndOfTheProcessForASubscribedContext) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto leave_subscribed = [] {
    const _THR_SERVER_ server = sample_server();
    give_listener(*make_context(server));
    give_listener(*make_context(server));
    std::exit(0);
  };
  EXPECT_EXIT(leave_subscribed(), testing::ExitedWithCode(0), "");
}

TEST_F(Release, MovesLaterContextsDown) {
  const std::uint32_t first = make(3);
  CIMcontainer* const second = getContainer(1);
  CIMcontainer* const third = getContainer(2);
  eraseContainers(*getContainer(0));
  EXPECT_EQ(getContainerSize(), 2);
  EXPECT_EQ(getCIM(first), -1);
  EXPECT_EQ(getCIM(first + 1), 0);
  EXPECT_EQ(getCIM(first + 2), 1);
  EXPECT_EQ(getContainer(0), second);
  EXPECT_EQ(getContainer(1), third);
}

TEST_F(Release, FindsEveryOtherContextAfterwards) {
  const std::uint32_t first = make(50);
  for (const std::uint32_t gone : {7U, 49U, 0U, 30U})
    eraseContainers(*getContainer(static_cast<unsigned>(getCIM(first + gone))));
  EXPECT_EQ(getContainerSize(), 46);
  for (int position = 0; position < 46; ++position)
    EXPECT_EQ(getCIM(getContainer(static_cast<unsigned>(position))->index), position);
  const std::uint32_t next = make(1);
  EXPECT_EQ(next, first + 50);
  EXPECT_EQ(getCIM(next), 46);
}

// After an assignment the indices no longer grow with the position, until the registry is empty.
TEST_F(Release, FindsContextsInAnyOrder) {
  const std::uint32_t first = make(4);
  *getContainer(0) = *getContainer(3);
  eraseContainers(*getContainer(1));
  EXPECT_EQ(getCIM(first + 2), 1);
  EXPECT_EQ(getCIM(first + 3), 0);
  eraseContainers(*getContainer(0));
  EXPECT_EQ(getCIM(first + 3), 1);
  EXPECT_EQ(clearContainers(), 0);
  const std::uint32_t next = make(2);
  EXPECT_EQ(getCIM(next + 1), 1);
}

TEST_F(Release, TakesACopyForTheContext) {
  const std::uint32_t first = make(2);
  CIMcontainer copy;
  copy = *getContainer(1);
  copy.host = "copy.example";
  TraceRecorder recorder(trace_level::warning);
  eraseContainers(copy);
  EXPECT_EQ(recorder.count(trace_level::warning, source, 395,
                           "[copy.example] eraseContainers: index=" + std::to_string(first + 1)),
            1);
  EXPECT_EQ(getContainerSize(), 1);
  EXPECT_EQ(getCIM(first + 1), -1);
  recorder.clear();
  eraseContainers(copy);
  EXPECT_TRUE(recorder.lines().empty());
  EXPECT_EQ(getContainerSize(), 1);
}

TEST_F(Release, DoesNothingForAContextThatIsNotRegistered) {
  make(2);
  const TraceRecorder recorder;
  CIMcontainer stranger;
  eraseContainers(stranger);
  EXPECT_EQ(getContainerSize(), 2);
  EXPECT_TRUE(recorder.lines().empty());
}

TEST_F(Release, TracesTheContext) {
  const std::uint32_t first = make(1, "one.example");
  const TraceRecorder recorder(trace_level::warning);
  eraseContainers(*getContainer(0));
  EXPECT_EQ(recorder.lines().size(), 1U);
  EXPECT_EQ(recorder.count(trace_level::warning, source, 395,
                           "[one.example] eraseContainers: index=" + std::to_string(first)),
            1);
}

TEST_F(Release, OfAllTracesTheirPositions) {
  make(1, "one.example");
  make(1, "two.example");
  const TraceRecorder recorder(trace_level::warning);
  EXPECT_EQ(clearContainers(), 0);
  EXPECT_EQ(recorder.texts(), (std::vector<std::string>{"[one.example] clearContainers: 0",
                                                        "[two.example] clearContainers: 1"}));
  for (const RecordedLine& line : recorder.lines()) {
    EXPECT_EQ(line.line, 409);
    EXPECT_EQ(line.source, source);
  }
}

TEST_F(Release, OfAllEmptiesTheRegistry) {
  const std::uint32_t first = make(20);
  EXPECT_EQ(clearContainers(), 0);
  EXPECT_EQ(getContainerSize(), 0);
  EXPECT_EQ(getContainer(0), nullptr);
  EXPECT_EQ(getCIM(first), -1);
  EXPECT_EQ(gCIMContainers.maxargc, 0U);
  EXPECT_EQ(gCIMContainers.argv, nullptr);
  EXPECT_EQ(gCIMContainers.elementSize, 0);
  EXPECT_EQ(make(1), first + 20);
}

TEST_F(Release, OfAllDoesNothingInAnEmptyRegistry) {
  make(1);
  eraseContainers(*getContainer(0));
  const TraceRecorder recorder;
  EXPECT_EQ(clearContainers(), 0);
  EXPECT_TRUE(recorder.lines().empty());
  EXPECT_EQ(gCIMContainers.maxargc, 16U);
}

TEST_F(Release, PassesOverSlotsWithoutAContext) {
  make(2);
  getContainer(0)->~CIMcontainer();
  std::free(std::exchange(gCIMContainers.argv[0], nullptr));
  eraseContainers(*getContainer(1));
  EXPECT_EQ(getContainerSize(), 1);
  EXPECT_EQ(clearContainers(), 0);
  EXPECT_EQ(getContainerSize(), 0);
}

TEST_F(Release, UnsubscribesAFreeContextInVain) {
  ScriptedServer server(generous_scripts());
  CIMcontainer* const context = make_subscribed(server.address(), server.port_text());
  context->ESXi_Occupied(false);
  eraseContainers(*context);
  EXPECT_EQ(getContainerSize(), 0);
  EXPECT_EQ(server.connection_count(), 0U);
}

constexpr std::size_t requests_of_unsubscribe = 3;

// The first context is subscribed and busy, so it is waited for, 30 seconds.
TEST_F(Release, UnsubscribesABusyContextAndThenWaitsForIt) {
  const RecordingClock clock;
  ScriptedServer server(generous_scripts());
  CIMcontainer* const context = make_subscribed(server.address(), server.port_text());
  const TraceRecorder recorder(trace_level::warning);
  eraseContainers(*context);
  EXPECT_EQ(getContainerSize(), 0);
  EXPECT_EQ(server.requests().size(), requests_of_unsubscribe);
  EXPECT_EQ(recorder.count(trace_level::warning, source, "[127.0.0.2] ESXi_Busy: ready (loop=0)"),
            1);
}

TEST_F(Release, OfAllUnsubscribesEach) {
  const RecordingClock clock;
  ScriptedServer server(generous_scripts());
  make_subscribed(server.address(), server.port_text());
  make(1);
  make_subscribed(server.address(), server.port_text());
  EXPECT_EQ(clearContainers(), 0);
  EXPECT_EQ(getContainerSize(), 0);
  EXPECT_EQ(server.requests().size(), 2 * requests_of_unsubscribe);
}

// The order that the header recommends: nobody waits.
TEST_F(Release, OfAContextThatWasUnsubscribedBeforeSendsNothing) {
  ScriptedServer server(generous_scripts());
  CIMcontainer* const context = make_subscribed(server.address(), server.port_text());
  EXPECT_EQ(context->unsubscribe(), 0);
  context->ESXi_Occupied(false);
  const TraceRecorder recorder(trace_level::warning);
  eraseContainers(*context);
  EXPECT_EQ(recorder.lines().size(), 1U);
  EXPECT_EQ(server.requests().size(), requests_of_unsubscribe);
}

TEST_F(Release, SucceedsWhenTheServerRefusesToDelete) {
  const RecordingClock clock;
  const ScriptedServer server(Scripts{{answering(refusal)}, true});
  CIMcontainer* const context = make_subscribed(server.address(), server.port_text());
  eraseContainers(*context);
  EXPECT_EQ(getContainerSize(), 0);
  EXPECT_EQ(server.requests().size(), 1U);
}

TEST_F(Release, SucceedsWhenTheServerIsDead) {
  const RecordingClock clock;
  CIMcontainer* const context = make_subscribed("127.0.0.2", dead_port);
  make_subscribed("127.0.0.2", dead_port);
  eraseContainers(*context);
  EXPECT_EQ(getContainerSize(), 1);
  EXPECT_EQ(clearContainers(), 0);
  EXPECT_EQ(getContainerSize(), 0);
}

bool is_closed(std::uint16_t port) {
  try {
    connect_to("127.0.0.1", port);
    return false;
  } catch (const std::system_error&) {
    return true;
  }
}

// Asks until nobody listens on the port.
void expect_to_be_closed(std::uint16_t port) {
  EXPECT_TRUE(comes_true([port] { return is_closed(port); }));
}

TEST(SubscribedContext, StopsItsListenerWhenItIsDestroyed) {
  std::uint16_t port = 0;
  {
    CIMcontainer context;
    give_listener(context);
    port = port_of(*context.listener);
  }
  expect_to_be_closed(port);
}

TEST(SubscribedContext, StopsItsListenerWhenItIsAssignedTo) {
  CIMcontainer context;
  give_listener(context);
  const std::uint16_t port = port_of(*context.listener);
  CIMcontainer other;
  give_listener(other);
  context = other;
  EXPECT_EQ(context.listener, nullptr);
  EXPECT_EQ(other.listener->check_Listener(), 0);
  expect_to_be_closed(port);
}

TEST(SubscribedContext, KeepsItsListenerWhenItIsAssignedToItself) {
  CIMcontainer context;
  give_listener(context);
  const CIMcontainer& same = context;
  context = same;
  ASSERT_NE(context.listener, nullptr);
  EXPECT_EQ(context.listener->check_Listener(), 0);
}

}  // namespace
