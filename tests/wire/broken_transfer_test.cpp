#include <dirent.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "support/hosts_table.h"
#include "support/http_answer.h"
#include "support/trace_recorder.h"
#include "support/transfer_time_limit.h"
#include "wire/stepping_clock.h"
#include "wire/wire_client.h"
#include "zuCIM/indication.h"

// Transfers that do not come to their end.

namespace zuCIM {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using namespace std::chrono_literals;

constexpr unsigned warning = 4;
constexpr const char* source = "Src/CIMconnection";
constexpr const char* no_connection = "[127.0.0.2] info = 0x400 (NO_Connect)";

TEST(BrokenTransfer, ToAPortWhereNobodyListens) {
  WireClient client("127.0.0.2", dead_port);
  TraceRecorder traces(warning);
  EXPECT_EQ(client.exchange(), 7);
  EXPECT_EQ(client.infoFlags, 0x400U);
  EXPECT_EQ(traces.count(warning, source, no_connection), 1);
  EXPECT_THAT(traces.texts(), Contains(EndsWith("  ErrCode:7 Couldn't connect to server")));
  EXPECT_THAT(traces.texts(), Contains(EndsWith("  ErrCode:5001 No data received from server")));
}

TEST(BrokenTransfer, ToANameThatIsUnknown) {
  const HostsTable hosts;
  WireClient client("unknown.test", "5988");
  TraceRecorder traces(warning);
  EXPECT_EQ(client.exchange(), 6);
  EXPECT_EQ(client.infoFlags, 0U);
  EXPECT_THAT(hosts.resolved_names(), Contains("unknown.test"));
  EXPECT_THAT(traces.texts(),
              Contains(MatchesRegex("\\[unknown.test\\] SetCimStatus: CIMconnection@[0-9]+  "
                                    "ErrCode:6 Couldn't resolve host name")));
}

TEST(BrokenTransfer, WithAPortThatIsNone) {
  for (const char* port : {"port", "99999999", "-1"}) {
    WireClient client("127.0.0.2", port);
    EXPECT_EQ(client.exchange(), 3) << port;
  }
  // What follows the number belongs to the path.
  WireClient client("127.0.0.2", std::string(dead_port) + "/x?");
  EXPECT_EQ(client.exchange(), 7);
}

TEST(BrokenTransfer, ClosedWithoutAnAnswer) {
  const ScriptedServer server({script::ReadRequest{}, script::Close{}});
  WireClient client(server);
  TraceRecorder traces(warning);
  EXPECT_EQ(client.exchange(), 52);
  EXPECT_EQ(client.infoFlags, 0x400U);
  EXPECT_EQ(traces.count(warning, source, no_connection), 1);
  // The empty body goes to the parser here.
  EXPECT_THAT(traces.texts().back(), EndsWith("  ErrCode:5002 Can't parse the response"));
}

TEST(BrokenTransfer, ClosedAtOnce) {
  const ScriptedServer server({script::Close{}});
  WireClient client(server);
  EXPECT_THAT(client.exchange(), AnyOf(52, 55, 56));
}

TEST(BrokenTransfer, ResetWithoutAnAnswer) {
  const ScriptedServer server({script::ReadRequest{}, script::Reset{}});
  WireClient client(server);
  TraceRecorder traces(warning);
  EXPECT_EQ(client.exchange(), 56);
  EXPECT_EQ(client.infoFlags, 0U);
  EXPECT_THAT(traces.texts(), Contains(HasSubstr("  ErrCode:56 ")));
}

TEST(BrokenTransfer, ResetMidway) {
  const std::string answer = http_answer(good_document);
  // The client sees the first half before the reset, because it waits for more.
  const ScriptedServer server({script::ReadRequest{}, script::Send{answer.substr(0, 200)},
                               script::Pause{50ms}, script::Reset{}});
  WireClient client(server);
  EXPECT_EQ(client.exchange(), 56);
  EXPECT_FALSE(client.responseHeader.empty());
}

TEST(BrokenTransfer, CutAtEveryByteOfAnAnswerWithALength) {
  const std::string answer = http_answer(good_document);
  const std::size_t status_line_size = answer.find("\r\n") + 2;
  const std::size_t head_size = answer.size() - good_document.size();
  Scripts scripts;
  for (std::size_t length = 0; length < answer.size(); ++length)
    scripts.in_order.push_back(answer_with(answer.substr(0, length)));
  const ScriptedServer server(scripts);
  WireClient client(server);
  for (std::size_t length = 0; length < answer.size(); ++length) {
    client.extraTimeOut = -100;
    TraceRecorder traces(warning);
    // What counts is whether the status line and the line with the length are whole.
    const int expected = length < status_line_size ? 52 : length < head_size - 2 ? 5001 : 18;
    EXPECT_EQ(client.exchange(), expected) << length;
    EXPECT_FALSE(traces.lines().empty());
  }
  EXPECT_EQ(server.connection_count(), answer.size());
}

TEST(BrokenTransfer, CutAtEveryByteOfABodyWithoutALength) {
  Scripts scripts;
  for (std::size_t length = 0; length < good_document.size(); ++length)
    scripts.in_order.push_back(
        answer_with(http_answer_until_close(good_document.substr(0, length))));
  scripts.in_order.push_back(answer_with(http_answer_until_close(good_document)));
  const ScriptedServer server(scripts);
  WireClient client(server);
  for (std::size_t length = 0; length < good_document.size(); ++length) {
    client.extraTimeOut = -100;
    EXPECT_EQ(client.exchange(), length == 0 ? 5001 : 5002) << length;
  }
  EXPECT_EQ(client.exchange(), 0);
}

TEST(BrokenTransfer, CutAtEveryByteOfAChunkedAnswer) {
  const std::string answer = http_answer_in_chunks(good_document, 100);
  Scripts scripts;
  for (std::size_t length = 0; length < answer.size(); ++length)
    scripts.in_order.push_back(answer_with(answer.substr(0, length)));
  const ScriptedServer server(scripts);
  WireClient client(server);
  for (std::size_t length = 0; length < answer.size(); ++length) {
    client.extraTimeOut = -100;
    // libcurl can do without the very last byte, which ends an empty trailer.
    const int status = client.exchange();
    EXPECT_EQ(status == 0, length + 1 == answer.size()) << length;
    EXPECT_TRUE(status != 0 || client.responseBody == good_document);
  }
}

TEST(BrokenTransfer, WithAWrongLength) {
  const std::size_t size = good_document.size();
  {
    const ScriptedServer server(answer_with(http_answer_claiming(size + 1, good_document)));
    WireClient client(server);
    EXPECT_EQ(client.exchange(), 18);
    EXPECT_EQ(client.responseBody, good_document);
  }
  {
    const ScriptedServer server(answer_with(http_answer_claiming(size - 1, good_document)));
    WireClient client(server);
    EXPECT_EQ(client.exchange(), 5002);
  }
  for (const char* length : {"-1", "many", "99999999999999999999999999", "1, 2"}) {
    const ScriptedServer server(answer_with(
        "HTTP/1.1 200 OK\r\nContent-Length: " + std::string(length) + "\r\n\r\n" + good_document));
    WireClient client(server);
    // Where libcurl passes over the length, the end of the connection ends a good body.
    EXPECT_THAT(client.exchange(), AnyOf(0, 8, 18, 63, 5001, 5002)) << length;
  }
}

struct AnswerCase {
  std::string answer;
  int status;
};

TEST(BrokenTransfer, ThatIsNoHttp) {
  const AnswerCase cases[] = {
      {"garbage\r\n\r\n", 1},
      {"\r\n\r\n\r\n", 1},
      {"SSH-2.0-OpenSSH_9.2\r\n", 1},
      {std::string(100000, 'x'), 1},
      {std::string(100, '\0'), 1},
      {"HTTP/9.9 ???\r\n\r\n", 1},
      {"HTTP/1.1 abc\r\n\r\n" + good_document, 1},
      {std::string("HTTP/1.1 200 OK\r\nA\0B: c\r\n\r\n", 27) + good_document, 8},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n" + good_document, 56},
  };
  for (const AnswerCase& entry : cases) {
    const ScriptedServer server(answer_with(entry.answer));
    WireClient client(server);
    TraceRecorder traces(warning);
    EXPECT_EQ(client.exchange(), entry.status) << entry.answer.substr(0, 40);
    EXPECT_FALSE(traces.lines().empty());
  }
}

TEST(BrokenTransfer, WithAHeaderWithoutEnd) {
  const ScriptedServer server(
      answer_with("HTTP/1.1 200 OK\r\nA: " + std::string(1000000, 'a') + "\r\n\r\n"));
  WireClient client(server);
  EXPECT_EQ(client.exchange(), 27);
}

// The watch takes this for a complete download and never ends it.
TEST(BrokenTransfer, ThatIsAnsweredBeforeItIsSentWhole) {
  const WakeUp end;
  const ScriptedServer server({script::ReadUntil{"\r\n\r\n"},
                               script::Send{http_answer(good_document)},
                               script::WaitForEvent{&end}});
  WireClient client(server);
  client.request.assign(20000000, 'x');
  const TransferTimeLimit limit(2);
  EXPECT_EQ(client.exchange(), 28);
  EXPECT_EQ(client.responseBody, good_document);
}

struct TimeoutCase {
  int extra_time;
  int listeners;
  const char* trace;
};

TEST(BrokenTransfer, EndsWhenTheTimeIsOver) {
  const TimeoutCase cases[] = {
      {-100, 0, "[127.0.0.2] Leave checkProgress() now-start=5 >= 5 (timeout: fail)"},
      {-40, 0, "[127.0.0.2] Leave checkProgress() now-start=5 >= 5 (timeout: fail)"},
      {-20, 0, "[127.0.0.2] Leave checkProgress() now-start=10 >= 10 (timeout: fail)"},
      {0, 0, "[127.0.0.2] Leave checkProgress() now-start=30 >= 30 (timeout: fail)"},
      {0, 1, "[127.0.0.2] Leave checkProgress() now-start=60 >= 60 (timeout: fail)"},
      {10, 2, "[127.0.0.2] Leave checkProgress() now-start=70 >= 70 (timeout: fail)"},
  };
  // Every piece makes libcurl ask whether to go on, and every time five seconds have passed.
  const ScriptedServer server(
      {script::ReadRequest{},
       script::SendSlowly{http_answer(std::string(500, ' ') + good_document), 1, 5ms}});
  const SteppingClock clock(5);
  for (const TimeoutCase& entry : cases) {
    WireClient client(server);
    client.SetExtraTimeOut(entry.extra_time);
    ListenerThreadIsActive = entry.listeners;
    TraceRecorder traces;
    EXPECT_EQ(client.exchange(), 42);
    EXPECT_EQ(client.infoFlags, 0x400U);
    EXPECT_EQ(traces.count(2, source, entry.trace), 1) << entry.trace;
    EXPECT_EQ(traces.count(warning, source, no_connection), 1);
  }
  ListenerThreadIsActive = 0;
}

TEST(BrokenTransfer, EndsWhenTheClockJumpsTooOften) {
  const ScriptedServer server({script::ReadRequest{}, script::WaitForPeerClose{}});
  const SteppingClock clock(20);
  WireClient client(server);
  TraceRecorder traces;
  EXPECT_EQ(client.exchange(), 42);
  EXPECT_EQ(
      traces.count(2, source, "[127.0.0.2] Leave checkProgress() too many fixups occurred -> fail"),
      1);
}

TEST(BrokenTransfer, ToAServerThatNeverAnswersEndsByTheRealClock) {
  const ScriptedServer server({script::ReadRequest{}, script::WaitForPeerClose{}});
  WireClient client(server);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(client.exchange(), 42);
  const auto span = std::chrono::steady_clock::now() - start;
  EXPECT_GE(span, 4s);
  EXPECT_LE(span, 9s);
  EXPECT_TRUE(server.wait_for_ended_connections(1));
}

TEST(BrokenTransfer, MayBeFollowedByAGoodOne) {
  Scripts scripts;
  scripts.in_order = {{script::ReadRequest{}, script::Reset{}},
                      answer_with(http_answer("", "HTTP/1.1 401 Unauthorized")),
                      answer_with(http_answer("<html/>")),
                      answer_with(http_answer(good_document))};
  const ScriptedServer server(scripts);
  WireClient client(server);
  EXPECT_EQ(client.exchange(), 56);
  EXPECT_EQ(client.exchange(), 22);
  EXPECT_EQ(client.infoFlags, 0x200U);
  EXPECT_EQ(client.exchange(), 5002);
  EXPECT_EQ(client.infoFlags, 0U);
  EXPECT_EQ(client.exchange(), 0);
}

int open_descriptors() {
  int count = 0;
  DIR* const folder = opendir("/proc/self/fd");
  while (readdir(folder) != nullptr) ++count;
  closedir(folder);
  return count;
}

TEST(BrokenTransfer, LeavesNoDescriptorBehind) {
  Scripts scripts;
  scripts.in_order = {answer_with(http_answer(good_document))};
  scripts.repeat_last = true;
  const ScriptedServer good(scripts);
  scripts.in_order = {{script::ReadRequest{}, script::Reset{}}};
  const ScriptedServer bad(scripts);
  const auto exchange_with = [](const ScriptedServer& server) {
    WireClient client(server);
    client.exchange();
    CIMconnection copy(client);
  };
  const auto wait_for_ends = [&](std::size_t count) {
    ASSERT_TRUE(good.wait_for_ended_connections(count));
    ASSERT_TRUE(bad.wait_for_ended_connections(count));
  };
  exchange_with(good);
  exchange_with(bad);
  wait_for_ends(1);
  const int before = open_descriptors();
  for (int turn = 0; turn < 50; ++turn) {
    exchange_with(good);
    exchange_with(bad);
  }
  wait_for_ends(51);
  EXPECT_LE(open_descriptors(), before);
}

}  // namespace
}  // namespace zuCIM
