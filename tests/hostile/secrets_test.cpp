#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CIMindication/generous_server.h"
#include "CIMindication/property_lists.h"
#include "CIMoperations/recording_clock.h"
#include "hostile/behaviour.h"
#include "hostile/gated_clock.h"
#include "support/hosts_table.h"
#include "support/trace_recorder.h"
#include "zuCIM/vocabulary.h"

// The password leaves the library over the wire alone.

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

// The password, and "reader:open-sesame" and "user:secret-of-the-house" in Base64, without the end
// that depends on what follows.
constexpr const char* secrets[] = {"open-sesame", "cmVhZGVyOm9wZW4tc2VzYW1l", "secret-of-the-house",
                                   "dXNlcjpzZWNyZXQtb2YtdGhlLWhvdXNl"};

void expect_no_secret(const std::string& text, const std::string& where) {
  for (const char* const secret : secrets) EXPECT_THAT(text, Not(HasSubstr(secret))) << where;
}

// Everything that the library tells while it lives: traces of all levels and standard error, with
// libcurl's verbose output.
class Listening {
 public:
  Listening() {
    zuCIM::do_cim_debug = 1;
    testing::internal::CaptureStderr();
  }
  ~Listening() {
    zuCIM::do_cim_debug = 0;
    const std::string output = testing::internal::GetCapturedStderr();
    expect_no_secret(output, "standard error");
    for (const RecordedLine& line : traces_.lines()) expect_no_secret(line.text, line.source);
  }
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;

  // What must be told by then, so that something was looked at.
  void expect_trace(const std::string& text) const {
    EXPECT_THAT(traces_.texts(), Contains(HasSubstr(text)));
  }

 private:
  TraceRecorder traces_;
};

// All texts of a connection but the password.
std::string texts_of(const zuCIM::CIMconnection& connection) {
  return connection.host + connection.user + connection.port + connection.request +
         connection.responseHeader + connection.responseBody + connection.localIP +
         connection.serverIP + connection.serverName + connection.osName;
}

ServerContext& with_password(ServerContext& context) {
  context.password = "secret-of-the-house";
  context.localIP = "127.0.0.1";
  context.SetExtraTimeOut(-1);
  return context;
}

void expect_silence(const AnswerBehaviour& behaviour) {
  SCOPED_TRACE(behaviour.name);
  const ScriptedServer server(behaviour.steps());
  WireClient client(server);
  behaviour.prepare(client);
  const GatedClock clock([] { return false; });
  Listening listening;
  client.exchange();
  client.Debug_Request_Response();
  listening.expect_trace("------ REQUEST:");
  expect_no_secret(texts_of(client), "members");
}

TEST(Secrets, DoNotShowInExchangesWithHostileServers) {
  for (const auto& behaviours : {head_behaviours(), status_behaviours()})
    for (const AnswerBehaviour& behaviour : behaviours) expect_silence(behaviour);
}

// A server that shows what it was sent, as an error page may. Members keep what came.
TEST(Secrets, DoNotShowWhenAServerSendsThemBack) {
  const auto echo = [](const std::string& request) {
    const std::size_t begin = request.find("Basic ") + 6;
    const std::string sent = request.substr(begin, request.find("\r\n", begin) - begin);
    return http_answer(error_document("<ERROR CODE=\"6\" DESCRIPTION=\"" + sent + "\"/>") + sent,
                       "HTTP/1.1 299 " + sent,
                       "X-Echo: " + sent + "\r\nCIMStatusCode: 7 " + sent + "\r\n");
  };
  const ScriptedServer server({script::ReadRequest{}, script::SendMadeFromRequest{echo}});
  WireClient client(server);
  Listening listening;
  EXPECT_EQ(client.exchange(), 5002);
  listening.expect_trace("ErrCode:10299 HTTP/1.1 299 ***");
  listening.expect_trace("ErrCode:6 ***");
  listening.expect_trace("X-Echo: ***");
  EXPECT_THAT(client.responseBody, HasSubstr(secrets[1]));
}

TEST(Secrets, GoOverTheWireAllTheSame) {
  const ScriptedServer server(answer_with(http_answer(good_document)));
  WireClient client(server);
  EXPECT_EQ(client.exchange(), 0);
  EXPECT_THAT(server.requests().at(0), HasSubstr(secrets[1]));
}

TEST(Secrets, DoNotShowWhenNobodyListens) {
  WireClient client("127.0.0.2", dead_port);
  Listening listening;
  EXPECT_EQ(client.exchange(), 7);
  listening.expect_trace("ErrCode:7");
}

TEST(Secrets, DoNotShowInStatusRecords) {
  WireClient client("127.0.0.2", "5988");
  Listening listening;
  client.SetCimStatus_FL(5000, nullptr, "file", 1);
  client.SetCimStatus_FL(5001, "No data", "file", 1);
  listening.expect_trace("ErrCode:5001");
}

TEST(Secrets, DoNotShowInAdmissions) {
  HostsTable hosts;
  hosts.set_host_name("here").add("here", {"10.0.0.1"}).add("there", {"10.0.0.2"});
  for (const char* const host : {"there", "nowhere"}) {
    const zuCIM::_THR_SERVER_ record{host, "user", "secret-of-the-house", "5988", "", "", ""};
    zuCIM::CIMcontainer context;
    Listening listening;
    context.setHostUserPasswd(&record);
    context.addContainer();
    zuCIM::CIMcontainer copy(context);
    copy = context;
    listening.expect_trace("LEAVE addContainer");
    expect_no_secret(texts_of(context), "members");
  }
}

TEST(Secrets, DoNotShowInOperations) {
  const RecordingClock clock;
  for (const std::string& answer : {none_listed, refusal, std::string("garbage")}) {
    const ScriptedServer server(answer_with(http_answer(answer)));
    ServerContext context(server.address(), server.port_text());
    Listening listening;
    with_password(context).Imethod_EnumerateInstances(-1, -1, -1, -1, nullptr);
    context.Debug_Request_Response();
    listening.expect_trace("------ REQUEST:");
  }
}

TEST(Secrets, DoNotShowInSubscriptions) {
  const ScriptedServer generous(generous_scripts());
  const ScriptedServer refusing(answer_with(http_answer(refusal)));
  for (const ScriptedServer* const server : {&generous, &refusing}) {
    const ThreadWatch threads;
    ServerContext context(server->address(), server->port_text());
    Listening listening;
    PropertyLists lists;
    const int result = lists.subscribe(with_password(context), unused_port("0.0.0.0"));
    EXPECT_EQ(result == 0, server == &generous);
    context.subscribe_check();
    context.unsubscribe();
    context.unsubscribe_all();
    listening.expect_trace("Listener-Thread started");
    if (context.listener != nullptr) context.listener->stop_Listener();
  }
}

}  // namespace
