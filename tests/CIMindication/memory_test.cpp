#include <gtest/gtest.h>

#include "CIMindication/generous_server.h"
#include "CIMindication/subscription_test.h"
#include "CIMoperations/recording_clock.h"
#include "support/failing_allocator.h"
#include "support/registry_cleaner.h"

// Subscription and release while memory is short. What would leak, the leak checker finds.
namespace {

using namespace zuCIM;

// Long enough for its copies to need memory.
const std::string long_address(100, 'x');

class SubscriptionMemory : public RegistryTest {
 protected:
  // Runs `body` with a context and its failure, once for each allocation.
  template <class Body>
  void for_each_failure(const Body& body) {
    const TraceRecorder recorder(0);
    // A listener that could not be started makes unsubscribe wait.
    const RecordingClock clock;
    for_each_failing_allocation(
        [&](AllocationFailure& failure) {
          ServerContext context(server_.address(), server_.port_text());
          context.localIP = long_address;
          context.SetExtraTimeOut(-1);
          body(context, failure);
        },
        AllocationKind::cpp);
  }

  ScriptedServer server_{generous_scripts()};
};

TEST_F(SubscriptionMemory, IsShortWhileSubscribing) {
  for_each_failure([](CIMcontainer& context, AllocationFailure& failure) {
    PropertyLists lists;
    const int port = unused_port("0.0.0.0");
    failure.arm();
    const int outcome = lists.subscribe(context, port);
    failure.disarm();
    EXPECT_TRUE(outcome == 1001 || outcome == 0) << outcome;
    EXPECT_TRUE(outcome == 0 || failure.happened());
    EXPECT_TRUE(outcome != 0 || context.listener != nullptr);
  });
}

// What fails first are the texts, then the listener.
TEST_F(SubscriptionMemory, IsTracedByItsNameWhileSubscribing) {
  const std::string trace = "subscribe: Exception raised: std::bad_alloc";
  for (const unsigned nth : {1U, 2U, 3U}) {
    ServerContext context(server_.address(), server_.port_text());
    context.localIP = long_address;
    const TraceRecorder recorder(trace_level::error);
    PropertyLists lists;
    {
      const AllocationFailure failure(nth, AllocationKind::cpp);
      EXPECT_EQ(lists.subscribe(context, 1), 1001);
    }
    EXPECT_EQ(recorder.texts(), Summaries{trace});
    EXPECT_EQ(recorder.count(trace_level::error, indication_traces, trace), 1);
    EXPECT_EQ(context.listener, nullptr);
  }
  EXPECT_EQ(server_.connection_count(), 0U);
}

TEST_F(SubscriptionMemory, IsShortWhileUnsubscribing) {
  for_each_failure([](CIMcontainer& context, AllocationFailure& failure) {
    give_listener(context);
    failure.arm();
    const int outcome = context.unsubscribe();
    failure.disarm();
    EXPECT_TRUE(outcome == 0 || failure.happened());
    EXPECT_EQ(outcome == 0, context.listener == nullptr);
    EXPECT_EQ(outcome == 0, context.ChkCimStatus() == 0);
  });
}

TEST_F(SubscriptionMemory, IsTracedByItsNameWhileUnsubscribing) {
  ServerContext context(server_.address(), server_.port_text());
  context.localIP = long_address;
  give_listener(context);
  const TraceRecorder recorder(trace_level::error);
  {
    const AllocationFailure failure(1, AllocationKind::cpp);
    EXPECT_EQ(context.unsubscribe(), 1001);
  }
  EXPECT_EQ(recorder.texts(), Summaries{"unsubscribe: Exception raised: std::bad_alloc"});
  EXPECT_EQ(context.ChkCimStatus(), 1001);
  EXPECT_EQ(context.unsubscribe(), 0);
}

TEST_F(SubscriptionMemory, IsShortWhileEverythingIsDeleted) {
  for_each_failure([](CIMcontainer& context, AllocationFailure& failure) {
    give_listener(context);
    failure.arm();
    const int outcome = context.unsubscribe_all();
    failure.disarm();
    EXPECT_EQ(outcome, context.ChkCimStatus());
    EXPECT_TRUE(failure.happened() || (outcome == 0 && context.listener == nullptr));
  });
}

TEST_F(SubscriptionMemory, IsShortWhileChecking) {
  for_each_failure([](CIMcontainer& context, AllocationFailure& failure) {
    failure.arm();
    EXPECT_EQ(context.subscribe_check(), 0x1111U);
    failure.disarm();
  });
}

// The server has all three instances, but there is no memory for the owner of the first. The first
// allocation is the class entry.
TEST_F(SubscriptionMemory, MakesAClassCountAsMissing) {
  const std::string long_owner = long_address + "_0F00ABCD";
  Scripts scripts;
  for (const std::string& class_name : {filter_class_name, handler_class_name})
    scripts.in_order.push_back(answering(listed(name_in(class_name, long_owner))));
  const ScriptedServer server(scripts);
  ServerContext context(server.address(), server.port_text());
  context.localIP = long_address;
  context.createdAt = 0x0F00ABCD;
  const TraceRecorder recorder(trace_level::error);
  {
    const AllocationFailure failure(2, AllocationKind::cpp);
    EXPECT_EQ(context.subscribe_check(), 0x1001U);
  }
  EXPECT_EQ(recorder.texts(), Summaries{"subscribe_check: Exception raised: std::bad_alloc"});
}

TEST_F(SubscriptionMemory, IsShortWhileContextsAreReleased) {
  for_each_failure([this](CIMcontainer&, AllocationFailure& failure) {
    CIMcontainer* const first = make_subscribed(server_.address(), server_.port_text());
    make_subscribed(server_.address(), server_.port_text());
    failure.arm();
    eraseContainers(*first);
    EXPECT_EQ(getContainerSize(), 1);
    EXPECT_EQ(clearContainers(), 0);
    failure.disarm();
    EXPECT_EQ(getContainerSize(), 0);
  });
}

}  // namespace
