#include "CIMoperations/sending.h"

#include <curl/curl.h>
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

namespace {

using namespace zuCIM;
using script::ReadRequest;
using script::Reset;
using script::Send;
using script::Steps;

constexpr const char* source = "Src/CIMoperations";
const std::string address = "127.0.0.2";

// Builds and sends a request.
int send_anything(CIMcontainer& context) {
  context.beginIntrinsicMethod(imethod::EnumerateInstanceNames);
  context.addClassNameParam(1);
  return context.performIntrinsicMethod();
}

std::vector<std::string> retry_traces(const TraceRecorder& recorder) {
  std::vector<std::string> found;
  for (const RecordedLine& line : recorder.lines())
    if (line.source == source && line.level == trace_level::warning) found.push_back(line.text);
  return found;
}

Steps answering(const std::string& http) {
  return {ReadRequest{}, Send{http}};
}

const std::string good_answer = http_answer(return_value("<INSTANCENAME CLASSNAME=\"CIM_A\"/>\n"));
const Steps no_answer = {ReadRequest{}};

TEST(Sending, OnlyFourTransferResultsAreWorthARetry) {
  for (int result = -1; result < 20000; ++result) {
    const bool expected = result == 7 || result == 22 || result == 42 || result == 52;
    EXPECT_EQ(is_worth_a_retry(result), expected) << result;
  }
}

TEST(Sending, KeepsAnswerAndHandleAfterSuccess) {
  const RecordingClock clock;
  ScriptedServer server(answering(good_answer));
  ServerContext context(server.address(), server.port_text());
  EXPECT_EQ(send_anything(context), 0);
  EXPECT_EQ(context.ChkCimStatus(), 0);
  EXPECT_NE(context.curl, nullptr);
  EXPECT_NE(context.result.findelement(elem::INSTANCENAME, 0), nullptr);
  EXPECT_EQ(body_of(server.requests().at(0)), context.request);
  EXPECT_TRUE(clock.pauses().empty());
}

TEST(Sending, ClosesTheMessage) {
  ScriptedServer server(answering(good_answer));
  ServerContext context(server.address(), server.port_text());
  send_anything(context);
  const std::string end = "</IMETHODCALL>\n</SIMPLEREQ>\n</MESSAGE>\n</CIM>\n";
  ASSERT_GT(context.request.size(), end.size());
  EXPECT_EQ(context.request.substr(context.request.size() - end.size()), end);
}

TEST(Sending, NamesMethodAndNamespaceInTheHttpHeader) {
  ScriptedServer server(answering(good_answer));
  ServerContext context(server.address(), server.port_text());
  send_anything(context);
  const std::string request = server.requests().at(0);
  EXPECT_NE(request.find("CIMMethod: EnumerateInstanceNames\r\n"), std::string::npos);
  EXPECT_NE(request.find("CIMObject: root%2Fcimv2\r\n"), std::string::npos);
}

TEST(Sending, TriesARefusingServerElevenTimesTwoSecondsApart) {
  const RecordingClock clock;
  const TraceRecorder recorder;
  ServerContext context(address, dead_port);
  EXPECT_EQ(send_anything(context), 7);
  EXPECT_EQ(context.ChkCimStatus(), 7);
  EXPECT_EQ(clock.pauses(), std::vector<unsigned>(10, 2000));
  std::vector<std::string> expected;
  for (int loop = 10; loop > 0; --loop)
    expected.push_back("[127.0.0.2] performIntrinsicMethod: ret=7 info=0x400 loop=" +
                       std::to_string(loop));
  EXPECT_EQ(retry_traces(recorder), expected);
  EXPECT_EQ(recorder.count(trace_level::progress, "Src/CIMconnection",
                           "[127.0.0.2]    Enter sendRequest_recvResponse()"),
            11);
  EXPECT_EQ(context.curl, nullptr);
  EXPECT_EQ(context.request, "");
}

TEST(Sending, NegativeExtraTimeOutRulesRetriesOut) {
  const RecordingClock clock;
  const TraceRecorder recorder;
  ServerContext context(address, dead_port);
  context.SetExtraTimeOut(-1);
  EXPECT_EQ(send_anything(context), 7);
  EXPECT_TRUE(clock.pauses().empty());
  EXPECT_TRUE(retry_traces(recorder).empty());
  EXPECT_EQ(context.curl, nullptr);
}

TEST(Sending, PositiveExtraTimeOutAllowsRetries) {
  const RecordingClock clock;
  ServerContext context(address, dead_port);
  context.SetExtraTimeOut(1);
  EXPECT_EQ(send_anything(context), 7);
  EXPECT_EQ(clock.pauses().size(), 10U);
}

TEST(Sending, SendsTheSameTextAgainAfterAnEmptyReply) {
  const RecordingClock clock;
  const TraceRecorder recorder;
  ScriptedServer server(Scripts{{no_answer, no_answer, answering(good_answer)}});
  ServerContext context(server.address(), server.port_text());
  EXPECT_EQ(send_anything(context), 0);
  EXPECT_EQ(context.ChkCimStatus(), 0);
  const std::vector<std::string> requests = server.requests();
  ASSERT_EQ(requests.size(), 3U);
  EXPECT_NE(body_of(requests[0]), "");
  EXPECT_EQ(body_of(requests[1]), body_of(requests[0]));
  EXPECT_EQ(body_of(requests[2]), body_of(requests[0]));
  EXPECT_EQ(context.request, body_of(requests[0]));
  EXPECT_EQ(clock.pauses(), std::vector<unsigned>(2, 2000));
  const std::vector<std::string> expected = {
      "[127.0.0.2] performIntrinsicMethod: ret=52 info=0x400 loop=10",
      "[127.0.0.2] performIntrinsicMethod: ret=52 info=0x400 loop=9"};
  EXPECT_EQ(retry_traces(recorder), expected);
}

TEST(Sending, TriesAgainAfterAnHttpError) {
  const RecordingClock clock;
  const TraceRecorder recorder;
  const Steps busy = answering(http_answer("", "HTTP/1.1 503 Service Unavailable"));
  ScriptedServer server(Scripts{{busy, answering(good_answer)}});
  ServerContext context(server.address(), server.port_text());
  EXPECT_EQ(send_anything(context), 0);
  EXPECT_EQ(clock.pauses(), std::vector<unsigned>{2000});
  EXPECT_EQ(
      retry_traces(recorder),
      std::vector<std::string>{"[127.0.0.2] performIntrinsicMethod: ret=22 info=0x0 loop=10"});
}

TEST(Sending, TriesAgainAfterRefusedCredentialsToo) {
  const RecordingClock clock;
  ScriptedServer server(Scripts{{answering(http_answer("", "HTTP/1.1 401 Unauthorized"))}, true});
  ServerContext context(server.address(), server.port_text());
  EXPECT_EQ(send_anything(context), 22);
  EXPECT_EQ(context.infoFlags, info_flag::credentials_refused);
  EXPECT_EQ(server.requests().size(), 11U);
}

// Each look at the clock finds it ten seconds later.
TEST(Sending, GivesTheSecondTryTwentySecondsLess) {
  const RecordingClock clock(10);
  const TraceRecorder recorder;
  const Steps silent = {ReadRequest{}, script::WaitForPeerClose{}};
  ScriptedServer server(Scripts{{silent, silent, answering(http_answer("no XML"))}, true});
  ServerContext context(server.address(), server.port_text());
  context.SetExtraTimeOut(40);
  send_anything(context);
  const std::vector<std::string> progress = recorder.texts(trace_level::progress);
  std::vector<std::string> time_outs;
  for (const std::string& text : progress)
    if (text.find("(timeout: fail)") != std::string::npos) time_outs.push_back(text);
  ASSERT_GE(time_outs.size(), 2U);
  EXPECT_EQ(time_outs[0], "[127.0.0.2] Leave checkProgress() now-start=70 >= 70 (timeout: fail)");
  EXPECT_EQ(time_outs[1], "[127.0.0.2] Leave checkProgress() now-start=10 >= 10 (timeout: fail)");
  EXPECT_EQ(retry_traces(recorder).at(0),
            "[127.0.0.2] performIntrinsicMethod: ret=42 info=0x400 loop=10");
}

TEST(Sending, ReturnsOtherResultsAtOnce) {
  const RecordingClock clock;
  ScriptedServer server(answering(http_answer("no XML")));
  ServerContext context(server.address(), server.port_text());
  EXPECT_EQ(send_anything(context), 5002);
  EXPECT_EQ(context.ChkCimStatus(), 5002);
  EXPECT_EQ(server.requests().size(), 1U);
  EXPECT_TRUE(clock.pauses().empty());
  EXPECT_EQ(context.curl, nullptr);
  EXPECT_EQ(context.request, "");
}

TEST(Sending, AFailureWhileTryingAgainEndsTheLoop) {
  const RecordingClock clock;
  const Steps refusal = answering(
      http_answer(method_answer("<ERROR CODE=\"5\" DESCRIPTION=\"CIM_ERR_INVALID_CLASS\"/>\n")));
  ScriptedServer server(Scripts{{no_answer, refusal}});
  ServerContext context(server.address(), server.port_text());
  EXPECT_EQ(send_anything(context), 5);
  EXPECT_EQ(context.ChkCimStatus(), 5);
  EXPECT_EQ(clock.pauses().size(), 1U);
}

// Transfer results and CIM status codes share their numbers, so a server's "not supported" looks
// like a refused connection.
TEST(Sending, TriesAgainAfterTheCimStatusSeven) {
  const RecordingClock clock;
  const Steps refusal = answering(
      http_answer(method_answer("<ERROR CODE=\"7\" DESCRIPTION=\"CIM_ERR_NOT_SUPPORTED\"/>\n")));
  ScriptedServer server(Scripts{{refusal}, true});
  ServerContext context(server.address(), server.port_text());
  EXPECT_EQ(send_anything(context), 7);
  EXPECT_EQ(server.requests().size(), 11U);
}

TEST(Sending, DoesNotSendARejectedRequest) {
  const RecordingClock clock;
  ScriptedServer server(answering(good_answer));
  ServerContext context(server.address(), server.port_text());
  ASSERT_EQ(context.initCurlHandle(), 0);
  context.beginIntrinsicMethod(imethod::GetInstance);
  context.addInstanceNameParam(nullptr);
  EXPECT_EQ(context.performIntrinsicMethod(), 1001);
  EXPECT_EQ(context.ChkCimStatus(), 1001);
  EXPECT_EQ(context.curl, nullptr);
  EXPECT_EQ(context.request, "");
  EXPECT_EQ(server.connection_count(), 0U);
}

TEST(Sending, NeedsTheBusyFlag) {
  const RecordingClock clock;
  ScriptedServer server(answering(good_answer));
  ServerContext context(server.address(), server.port_text());
  context.ESXi_Occupied(false);
  EXPECT_EQ(send_anything(context), 27);
  EXPECT_EQ(context.ChkCimStatus(), 27);
  EXPECT_EQ(server.connection_count(), 0U);
  EXPECT_TRUE(clock.pauses().empty());
}

TEST(Sending, ReportsTheRejectionOfAContextThatIsNotBusy) {
  CIMcontainer context;
  context.beginIntrinsicMethod(imethod::GetClass);
  EXPECT_EQ(context.performIntrinsicMethod(), 1001);
  EXPECT_EQ(context.ChkCimStatus(), 27);
}

TEST(Sending, NeedsACurrentClass) {
  const TraceRecorder recorder;
  ScriptedServer server(answering(good_answer));
  ServerContext context(server.address(), server.port_text());
  context.beginIntrinsicMethod(imethod::GetClass);
  context.currentClass = nullptr;
  EXPECT_EQ(context.performIntrinsicMethod(), 1001);
  EXPECT_EQ(context.ChkCimStatus(), 1001);
  EXPECT_EQ(context.request, "");
  EXPECT_EQ(recorder.count(trace_level::warning, source,
                           "[127.0.0.2] performIntrinsicMethod() pcls=NULL"),
            1);
  EXPECT_EQ(server.connection_count(), 0U);
}

TEST(Sending, NeedsAMethod) {
  const TraceRecorder recorder;
  ServerContext context(address, "1");
  EXPECT_EQ(context.performIntrinsicMethod(), 1001);
  EXPECT_EQ(recorder.count(trace_level::warning, source,
                           "[127.0.0.2] performIntrinsicMethod() methodName=NULL"),
            1);
}

TEST(Sending, CarriesTheNameOfTheOperationInItsTraces) {
  const RecordingClock clock;
  const TraceRecorder recorder;
  ServerContext context(address, dead_port);
  context.beginIntrinsicMethod(imethod::GetClass);
  EXPECT_EQ(send_request(context, "anyOperation"), 7);
  EXPECT_EQ(retry_traces(recorder).at(0), "[127.0.0.2] anyOperation: ret=7 info=0x400 loop=10");
}

}  // namespace
