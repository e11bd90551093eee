#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CIMoperations/recording_clock.h"
#include "CIMoperations/server_context.h"
#include "support/http_answer.h"
#include "support/loopback.h"
#include "support/scripted_server.h"
#include "support/trace_recorder.h"
#include "zuCIM.h"

// The ways in which a transfer fails, each through a whole operation with its further tries.
namespace {

using namespace zuCIM;
using script::ReadRequest;
using script::Reset;
using script::Send;
using script::Steps;

struct Failure {
  std::string name;
  Steps steps;
  int status;
  std::size_t tries;
};

Steps refusing(const std::string& status_line) {
  return {ReadRequest{}, Send{http_answer("", status_line, "Connection: close\r\n")}};
}

const std::string body = return_value("<INSTANCENAME CLASSNAME=\"CIM_A\"/>\n");
const std::string half_an_answer = http_answer_claiming(body.size() * 2, body);

// libcurl's codes: 18 for a part of a file, 22 for an HTTP error, 52 for nothing.
const Failure failures[] = {
    {"truncated body", {ReadRequest{}, Send{half_an_answer}}, 18, 1},
    {"no body", {ReadRequest{}, Send{http_answer("")}}, 5001, 1},
    {"400", refusing("HTTP/1.1 400 Bad Request"), 22, 11},
    {"403", refusing("HTTP/1.1 403 Forbidden"), 22, 11},
    {"404", refusing("HTTP/1.1 404 Not Found"), 22, 11},
    {"500", refusing("HTTP/1.1 500 Internal Server Error"), 22, 11},
    {"no answer", {ReadRequest{}}, 52, 11},
};

TEST(Retries, AreMadeForSomeFailuresOnly) {
  for (const Failure& failure : failures) {
    const RecordingClock clock;
    ScriptedServer server(Scripts{{failure.steps}, true});
    ServerContext context(server.address(), server.port_text());
    EXPECT_EQ(context.Imethod_EnumerateInstanceNames(), nullptr) << failure.name;
    EXPECT_EQ(context.ChkCimStatus(), failure.status) << failure.name;
    EXPECT_EQ(server.requests().size(), failure.tries) << failure.name;
    EXPECT_EQ(clock.pauses(), std::vector<unsigned>(failure.tries - 1, 2000)) << failure.name;
    EXPECT_EQ(context.curl, nullptr) << failure.name;
    EXPECT_EQ(context.result.next, nullptr) << failure.name;
  }
}

// What has arrived before a reset may or may not be seen, so libcurl says 18 or 56.
TEST(Retries, AreNotMadeAfterAResetMidway) {
  const RecordingClock clock;
  ScriptedServer server(Steps{ReadRequest{}, Send{half_an_answer}, Reset{}});
  ServerContext context(server.address(), server.port_text());
  EXPECT_EQ(context.Imethod_EnumerateInstanceNames(), nullptr);
  const int code = context.ChkCimStatus();
  EXPECT_TRUE(code == 18 || code == 56) << code;
  EXPECT_EQ(server.requests().size(), 1U);
  EXPECT_TRUE(clock.pauses().empty());
}

TEST(Retries, TakeANewHandleEachTime) {
  const RecordingClock clock;
  const TraceRecorder recorder;
  ServerContext context("127.0.0.2", dead_port);
  EXPECT_EQ(context.Imethod_EnumerateInstanceNames(), nullptr);
  const std::string source = "Src/CIMconnection";
  EXPECT_EQ(recorder.count(trace_level::detail, source,
                           "[127.0.0.2]       initCurlHandle: CURL_EASY_INIT done"),
            11);
  EXPECT_EQ(recorder.count(trace_level::detail, source,
                           "[127.0.0.2] releaseCurlHandle: CURL_EASY_CLEANUP   done"),
            11);
}

TEST(Retries, EndWithAStatusThatIsSetWhileTheyWait) {
  RecordingClock clock;
  ScriptedServer server(Scripts{{{ReadRequest{}}}, true});
  ServerContext context(server.address(), server.port_text());
  clock.during_pauses([&context] { context.cimStatus = 1234; });
  EXPECT_EQ(context.Imethod_EnumerateInstanceNames(), nullptr);
  EXPECT_EQ(context.ChkCimStatus(), 1234);
  EXPECT_EQ(server.requests().size(), 1U);
  EXPECT_EQ(clock.pauses().size(), 1U);
  EXPECT_EQ(context.curl, nullptr);
}

TEST(Retries, OfAMethodEndWithAStatusThatIsSetWhileTheyWait) {
  RecordingClock clock;
  ScriptedServer server(Scripts{{{ReadRequest{}}}, true});
  ServerContext context(server.address(), server.port_text());
  clock.during_pauses([&context] { context.cimStatus = 1234; });
  CIMelement name;
  name.name = known_cim_elements[elem::INSTANCENAME];
  EXPECT_EQ(context.performExtrinsicMethod("Start", &name, nullptr), 1234);
  EXPECT_EQ(server.requests().size(), 1U);
}

}  // namespace
