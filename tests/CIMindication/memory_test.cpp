#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "BRQ/Trace.h"
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

int subscribe(CIMcontainer& context) {
  PropertyLists lists;
  return lists.subscribe(context, unused_port("0.0.0.0"));
}

class SubscriptionMemory : public RegistryTest {
 protected:
  // Runs `body` with a context and its failure, once for each allocation.
  template <class Body>
  void for_each_failure(const Body& body, const std::vector<AllocationKind>& kinds = {
                                              AllocationKind::cpp, AllocationKind::c}) {
    // A listener that could not be started makes unsubscribe wait.
    const RecordingClock clock;
    // libcurl makes what it needs once in a process.
    ServerContext first(server_.address(), server_.port_text());
    ASSERT_EQ(first.unsubscribe_all(), 0);
    for (const AllocationKind kind : kinds)
      for_each_failing_allocation(
          [&](AllocationFailure& failure) {
            recorder_.clear();
            ServerContext context(server_.address(), server_.port_text());
            context.localIP = long_address;
            context.SetExtraTimeOut(-1);
            body(context, failure);
          },
          kind);
  }

  // Whether the trace tells of a failure with one of these pieces of text.
  bool tells(const std::vector<std::string>& pieces) const {
    const std::string all = testing::PrintToString(recorder_.texts());
    return std::any_of(pieces.begin(), pieces.end(), [&](const std::string& piece) {
      return all.find(piece) != std::string::npos;
    });
  }

  // Whether the status of a deletion or listing can come of a shortage, and the trace tells so:
  // libcurl found no memory for its handle (2), the server's address (6), or anything else (27),
  // there was none for the data (23) or the tree (5002) of the answer, or for a text (1001).
  bool is_told(int status) const {
    const std::set<int> of_a_shortage{2, 6, 23, 27, 1001, 5002};
    return of_a_shortage.contains(status) &&
           tells(status == 1001 ? std::vector<std::string>{": Exception raised: std::bad_alloc",
                                                           "() missing parameter: ClassName"}
                                : std::vector{"ErrCode:" + std::to_string(status) + " "});
  }

  // With memory at hand, what was left can be removed and the context subscribed.
  static void expect_usable(CIMcontainer& context) {
    EXPECT_EQ(context.unsubscribe(), 0);
    EXPECT_EQ(subscribe(context), 0);
    EXPECT_NE(context.listener, nullptr);
  }

  TraceRecorder recorder_{trace_level::error | trace_level::warning};
  ScriptedServer server_{generous_scripts()};
};

TEST_F(SubscriptionMemory, IsShortWhileSubscribing) {
  for_each_failure([this](CIMcontainer& context, AllocationFailure& failure) {
    PropertyLists lists;
    const int port = unused_port("0.0.0.0");
    failure.arm();
    const int outcome = lists.subscribe(context, port);
    failure.disarm();
    EXPECT_TRUE(outcome == 1001 || outcome == 0) << outcome;
    EXPECT_TRUE(outcome == 0 || failure.happened());
    EXPECT_TRUE(outcome != 0 || context.listener != nullptr);
    EXPECT_TRUE(outcome == 0 || tells({"subscribe: Exception raised: std::bad_alloc",
                                       "subscribe: cannot subscribe Indication!"}));
    expect_usable(context);
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
  for_each_failure([this](CIMcontainer& context, AllocationFailure& failure) {
    give_listener(context);
    failure.arm();
    const int outcome = context.unsubscribe();
    failure.disarm();
    EXPECT_TRUE(outcome == 0 || failure.happened());
    EXPECT_EQ(outcome == 0, context.listener == nullptr);
    EXPECT_EQ(outcome == 0, context.ChkCimStatus() == 0);
    EXPECT_TRUE(outcome == 0 || is_told(context.ChkCimStatus())) << context.ChkCimStatus();
    expect_usable(context);
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
  for_each_failure([this](CIMcontainer& context, AllocationFailure& failure) {
    give_listener(context);
    failure.arm();
    const int outcome = context.unsubscribe_all();
    failure.disarm();
    EXPECT_EQ(outcome, context.ChkCimStatus());
    EXPECT_TRUE(failure.happened() || (outcome == 0 && context.listener == nullptr));
    EXPECT_TRUE(outcome == 0 || is_told(outcome)) << outcome;
    expect_usable(context);
  });
}

TEST_F(SubscriptionMemory, IsShortWhileChecking) {
  for_each_failure([](CIMcontainer& context, AllocationFailure& failure) {
    failure.arm();
    const unsigned missing = context.subscribe_check();
    failure.disarm();
    EXPECT_EQ(missing, 0x1111U);
    EXPECT_EQ(context.subscribe_check(), 0x1111U);
    EXPECT_EQ(context.ChkCimStatus(), 0);
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

// Two contexts make so many allocations that those of libcurl and of the traces, which unsubscribe
// meets above, have no part in this.
TEST_F(SubscriptionMemory, IsShortWhileContextsAreReleased) {
  BRQ_MODULE_INFO_zuCIM.set_trace_mask(0);
  for_each_failure(
      [this](CIMcontainer&, AllocationFailure& failure) {
        CIMcontainer* const first = make_subscribed(server_.address(), server_.port_text());
        make_subscribed(server_.address(), server_.port_text());
        failure.arm();
        eraseContainers(*first);
        EXPECT_EQ(getContainerSize(), 1);
        EXPECT_EQ(clearContainers(), 0);
        failure.disarm();
        EXPECT_EQ(getContainerSize(), 0);
      },
      {AllocationKind::cpp});
}

}  // namespace
