#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CIMoperations/recording_clock.h"
#include "hostile/behaviour.h"
#include "hostile/memory_growth.h"
#include "hostile/stopwatch.h"
#include "support/trace_recorder.h"

// Whole operations with hostile servers.

namespace {

using testing::Contains;
using testing::HasSubstr;

class HostileOperation : public testing::TestWithParam<OperationBehaviour> {};

TEST_P(HostileOperation, EndsAsItShould) {
  const OperationBehaviour& behaviour = GetParam();
  const ScriptedServer server(behaviour.scripts());
  ServerContext context(server.address(), server.port_text());
  const TraceRecorder traces(behaviour.trace.empty() ? 0U : 4U);
  const RecordingClock clock;
  const MemoryGrowth growth;
  const Stopwatch stopwatch;
  EXPECT_THAT(behaviour.statuses, Contains(behaviour.operation(context)));
  EXPECT_TRUE(stopwatch.is_within(behaviour.most_time));
  EXPECT_TRUE(growth.is_at_most(behaviour.most_mebibytes));
  EXPECT_LE(server.requests().size(), behaviour.most_requests);
  if (!behaviour.trace.empty()) {
    EXPECT_THAT(traces.texts(), Contains(HasSubstr(behaviour.trace)));
  }
}

INSTANTIATE_TEST_SUITE_P(All, HostileOperation, testing::ValuesIn(operation_behaviours()),
                         [](const auto& test) { return identifier(test.param.name); });

}  // namespace
