#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hostile/behaviour.h"
#include "hostile/memory_growth.h"
#include "hostile/stopwatch.h"
#include "support/trace_recorder.h"

// The listener and hostile senders.

namespace {

using testing::Contains;
using testing::HasSubstr;

bool is_traced(const TraceRecorder& traces, const std::string& text) {
  return testing::Value(traces.texts(), Contains(HasSubstr(text)));
}

class HostileSender : public testing::TestWithParam<SenderBehaviour> {};

// What an honest sender sends afterwards arrives: the callback counts it, too.
TEST_P(HostileSender, LeavesTheListenerAsItWas) {
  const SenderBehaviour& behaviour = GetParam();
  const TraceRecorder traces;
  Received received;
  const RunningListener running;
  const MemoryGrowth growth;
  const Stopwatch stopwatch;
  behaviour.send(running);
  EXPECT_EQ(running.ask(export_request("1042")), export_answer("1042", "000000236"));
  const std::size_t expected = static_cast<std::size_t>(behaviour.statuses.front()) + 1;
  EXPECT_EQ(received.wait_for(expected).size(), expected);
  // The reader of a sender that has left may be slower than the whole honest exchange.
  EXPECT_TRUE(
      comes_true([&] { return behaviour.trace.empty() || is_traced(traces, behaviour.trace); }));
  EXPECT_TRUE(comes_true([] { return active_readers() == 0; }));
  EXPECT_TRUE(stopwatch.is_within(behaviour.most_time));
  EXPECT_TRUE(growth.is_at_most(behaviour.most_mebibytes));
  EXPECT_EQ(received.texts().size(), expected);
}

INSTANTIATE_TEST_SUITE_P(All, HostileSender, testing::ValuesIn(sender_behaviours()),
                         [](const auto& test) { return identifier(test.param.name); });

}  // namespace
