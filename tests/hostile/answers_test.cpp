#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hostile/behaviour.h"
#include "hostile/gated_clock.h"
#include "hostile/memory_growth.h"
#include "hostile/stopwatch.h"
#include "support/trace_recorder.h"

// One exchange with each of the hostile servers.

namespace {

using testing::Contains;
using testing::HasSubstr;

std::string name_of(const testing::TestParamInfo<AnswerBehaviour>& info) {
  return identifier(info.param.name);
}

std::string name_of_tls(const testing::TestParamInfo<TlsBehaviour>& info) {
  return identifier(info.param.name);
}

// The clock of one exchange. Where it is not the clock that ends it, it stands still, so that a
// slow machine makes no difference.
std::function<bool()> gate_of(const AnswerBehaviour& behaviour, const ScriptedServer& server,
                              const WireClient& client) {
  if (behaviour.ended_by != EndedBy::clock) return [] { return false; };
  return [&] {
    return server.connection_count() > 0 &&
           client.responseHeader.size() + client.responseBody.size() >= behaviour.awaited;
  };
}

// What the library allows a transfer of this client, in seconds.
constexpr std::uint32_t least_timeout = 5;

void expect_verdict(const AnswerBehaviour& behaviour, const ScriptedServer& server) {
  const TraceRecorder traces(behaviour.trace.empty() ? 0U : ~16U);
  WireClient client(server);
  behaviour.prepare(client);
  const GatedClock clock(gate_of(behaviour, server, client));
  const MemoryGrowth growth;
  const Stopwatch stopwatch;
  const int status = client.exchange();
  EXPECT_TRUE(stopwatch.is_within(behaviour.most_time));
  EXPECT_TRUE(growth.is_at_most(behaviour.most_mebibytes));
  EXPECT_EQ(clock.span(), behaviour.ended_by == EndedBy::clock ? least_timeout : 0U);
  EXPECT_THAT(behaviour.statuses, Contains(status));
  EXPECT_EQ(client.ChkCimStatus(), status);
  if (status != 55 && status != 56) {
    EXPECT_EQ(client.infoFlags, behaviour.info);
  }
  if (!behaviour.trace.empty()) {
    EXPECT_THAT(traces.texts(), Contains(HasSubstr(behaviour.trace)));
  }
  EXPECT_EQ(server.connection_count(), 1U);
}

// A client that met this server is as good as before. A connection that is still open goes with the
// transfer handle.
void expect_recovery(const AnswerBehaviour& behaviour) {
  const ScriptedServer bad(behaviour.steps());
  const ScriptedServer good(answer_with(http_answer(good_document)));
  WireClient client(bad);
  behaviour.prepare(client);
  const GatedClock clock(gate_of(behaviour, bad, client));
  client.exchange();
  client.releaseCurlHandle();
  client.port = good.port_text();
  client.request = "<?xml version=\"1.0\"?><CIM/>";
  client.SetExtraTimeOut(1000);
  EXPECT_EQ(client.exchange(), 0);
  EXPECT_EQ(client.responseBody, good_document);
}

class HostileAnswer : public testing::TestWithParam<AnswerBehaviour> {};

TEST_P(HostileAnswer, EndsAsItShould) {
  const ScriptedServer server(GetParam().steps());
  expect_verdict(GetParam(), server);
}

INSTANTIATE_TEST_SUITE_P(Transport, HostileAnswer, testing::ValuesIn(transport_behaviours()),
                         name_of);
INSTANTIATE_TEST_SUITE_P(Head, HostileAnswer, testing::ValuesIn(head_behaviours()), name_of);
INSTANTIATE_TEST_SUITE_P(Status, HostileAnswer, testing::ValuesIn(status_behaviours()), name_of);
INSTANTIATE_TEST_SUITE_P(Document, HostileAnswer, testing::ValuesIn(document_behaviours()),
                         name_of);

TEST(HostileAnswerBefore, AGoodOneSpoilsNothing) {
  for (const auto& behaviours : {transport_behaviours(), head_behaviours(), status_behaviours()})
    for (const AnswerBehaviour& behaviour : behaviours) {
      SCOPED_TRACE(behaviour.name);
      if (behaviour.ended_by == EndedBy::peer) expect_recovery(behaviour);
    }
}

class HostileTls : public testing::TestWithParam<TlsBehaviour> {
 protected:
  static std::string address() {
    const std::vector<TlsBehaviour> all = tls_behaviours();
    std::size_t at = 0;
    while (all[at].name != GetParam().name) ++at;
    return "127.0.44." + std::to_string(at + 1);
  }
};

TEST_P(HostileTls, EndsAsItShould) {
  const ScriptedServer server(GetParam().steps(),
                              {.address = address(), .port = 5989, .tls = GetParam().tls()});
  expect_verdict(GetParam(), server);
}

INSTANTIATE_TEST_SUITE_P(All, HostileTls, testing::ValuesIn(tls_behaviours()), name_of_tls);

// The default limit, with a quarter of what the server has. A sanitizer would be too slow.
TEST(HostileBody, OfOneGibibyteEndsAtTheLimitOfTheLibrary) {
  if (MemoryGrowth::under_sanitizer) {
    SUCCEED() << "the table has the same with a lower limit";
    return;
  }
  const ScriptedServer server({script::ReadRequest{},
                               script::Send{"HTTP/1.1 200 OK\r\nContent-Length: 1073741824\r\n"
                                            "\r\n"},
                               script::SendRepeatedly{std::string(1048576, ' '), 1024}});
  const GatedClock clock([] { return false; });
  WireClient client(server);
  const MemoryGrowth growth;
  const Stopwatch stopwatch;
  EXPECT_EQ(client.exchange(), 23);
  EXPECT_TRUE(stopwatch.is_within(time_for_much));
  EXPECT_TRUE(growth.is_at_most(3 * 256));
  EXPECT_EQ(client.responseBody.capacity(), std::string().capacity());
}

}  // namespace
