#include "support/scripted_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <system_error>

namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::StartsWith;

Descriptor connect_to(const ScriptedServer& server) {
  return ::connect_to(server.address(), server.port());
}

// Sends `request` over a connection of its own and returns all that comes back.
std::string ask(const ScriptedServer& server, const std::string& request) {
  const Descriptor socket = connect_to(server);
  send_all(socket, request);
  return receive_all(socket);
}

TEST(ScriptedServer, AnswersARequestAndKeepsItsBytes) {
  const ScriptedServer server({script::ReadRequest{}, script::Send{http_answer("<CIM/>")}});
  const std::string request = "POST /cimom HTTP/1.1\r\ncontent-LENGTH: 5\r\n\r\nHello";
  const std::string answer = ask(server, request);
  EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n"));
  EXPECT_THAT(answer, HasSubstr("\r\nContent-Length: 6\r\n"));
  EXPECT_THAT(answer, testing::EndsWith("\r\n\r\n<CIM/>"));
  EXPECT_THAT(server.requests(), testing::ElementsAre(request));
  EXPECT_TRUE(server.wait_for_ended_connections(1));
  EXPECT_EQ(server.connection(0).received, request);
  EXPECT_EQ(server.connection(0).ending, Ending::played);
}

TEST(ScriptedServer, ReadsARequestThatComesInPieces) {
  const ScriptedServer server({script::ReadRequest{}, script::Send{"done"}});
  const Descriptor socket = connect_to(server);
  const std::string request = "POST / HTTP/1.1\r\nContent-Length: 2\r\n\r\nab";
  for (const char byte : request) send_all(socket, std::string(1, byte));
  EXPECT_EQ(receive_all(socket), "done");
  EXPECT_THAT(server.requests(), testing::ElementsAre(request));
}

TEST(ScriptedServer, SendsTheSameBytesSoManyTimes) {
  const ScriptedServer server({script::SendRepeatedly{"abc", 3}});
  EXPECT_EQ(receive_all(connect_to(server)), "abcabcabc");
}

TEST(ScriptedServer, SendsWithoutEndUntilThePeerCloses) {
  const ScriptedServer server({script::SendRepeatedly{std::string(10000, 'x'), 0}});
  connect_to(server).close();
  EXPECT_TRUE(server.wait_for_ended_connections(1));
  EXPECT_EQ(server.connection(0).ending, Ending::closed_by_peer);
}

TEST(ScriptedServer, TakesTwoRequestsOffOneConnection) {
  const ScriptedServer server({script::ReadRequest{}, script::Send{"."}, script::Again{}});
  const Descriptor socket = connect_to(server);
  send_all(socket, "GET /a HTTP/1.1\r\n\r\nGET /b HTTP/1.1\r\n\r\n");
  EXPECT_TRUE(server.wait_for_requests(2));
  EXPECT_EQ(server.connection_count(), 1U);
  EXPECT_EQ(server.requests().at(1), "GET /b HTTP/1.1\r\n\r\n");
}

TEST(ScriptedServer, ReadsUntilAMarkThatIsSplitOverTwoPackets) {
  const ScriptedServer server({script::ReadUntil{"END"}, script::Send{"seen"}});
  const Descriptor socket = connect_to(server);
  send_all(socket, "xxE");
  ASSERT_TRUE(server.wait_for_connections(1));
  send_all(socket, "ND");
  EXPECT_EQ(receive_all(socket), "seen");
}

TEST(ScriptedServer, MakesAnAnswerFromTheRequest) {
  const ScriptedServer server(
      {script::ReadRequest{},
       script::SendMadeFromRequest{[](const std::string& text) { return text.substr(0, 6); }}});
  EXPECT_EQ(ask(server, "GET /x HTTP/1.1\r\n\r\n"), "GET /x");
}

TEST(ScriptedServer, SendsSlowlyButWhole) {
  const ScriptedServer server({script::SendSlowly{"0123456789", 3, 1ms}});
  EXPECT_EQ(ask(server, ""), "0123456789");
}

TEST(ScriptedServer, ResetsAConnection) {
  const ScriptedServer server({script::ReadUntil{"x"}, script::Send{"half"}, script::Reset{}});
  const Descriptor socket = connect_to(server);
  send_all(socket, "x");
  EXPECT_THROW(receive_all(socket), std::system_error);
}

TEST(ScriptedServer, ClosesInGoodOrderOverUnreadBytes) {
  const WakeUp sent;
  const ScriptedServer server({script::WaitForEvent{&sent}, script::Close{}});
  const Descriptor socket = connect_to(server);
  send_all(socket, "never read");
  sent.set();
  EXPECT_EQ(receive_all(socket), "");
}

TEST(ScriptedServer, EndsItsSendingAndStillReads) {
  const ScriptedServer server({script::EndSending{}, script::ReadUntil{"late"}});
  const Descriptor socket = connect_to(server);
  EXPECT_EQ(receive_all(socket), "");
  send_all(socket, "late");
  ASSERT_TRUE(server.wait_for_ended_connections(1));
  EXPECT_EQ(server.connection(0).received, "late");
}

TEST(ScriptedServer, WaitsForTheTestsEvent) {
  const WakeUp go;
  const ScriptedServer server({script::WaitForEvent{&go}, script::Send{"gone"}});
  const Descriptor socket = connect_to(server);
  ASSERT_TRUE(server.wait_for_connections(1));
  EXPECT_EQ(server.connection(0).ending, Ending::running);
  go.set();
  EXPECT_EQ(receive_all(socket), "gone");
}

TEST(ScriptedServer, PlaysItsScriptsInOrderAndRefusesTheRest) {
  const ScriptedServer server(Scripts{{{script::Send{"first"}}, {script::Send{"second"}}}});
  EXPECT_EQ(ask(server, ""), "first");
  EXPECT_EQ(ask(server, ""), "second");
  EXPECT_THROW(ask(server, ""), std::system_error);
  ASSERT_TRUE(server.wait_for_ended_connections(3));
  EXPECT_EQ(server.connection(2).ending, Ending::refused);
}

TEST(ScriptedServer, RepeatsTheLastScriptWhenAsked) {
  const ScriptedServer server(Scripts{{{script::Send{"first"}}, {script::Send{"rest"}}}, true});
  EXPECT_EQ(ask(server, ""), "first");
  EXPECT_EQ(ask(server, ""), "rest");
  EXPECT_EQ(ask(server, ""), "rest");
}

TEST(ScriptedServer, NotesThatThePeerLeftEarly) {
  const ScriptedServer server({script::ReadRequest{}});
  connect_to(server).close();
  ASSERT_TRUE(server.wait_for_ended_connections(1));
  EXPECT_EQ(server.connection(0).ending, Ending::closed_by_peer);
}

TEST(ScriptedServer, WaitsForThePeersClose) {
  const ScriptedServer server({script::WaitForPeerClose{}});
  {
    const Descriptor socket = connect_to(server);
    send_all(socket, "all of it");
  }
  ASSERT_TRUE(server.wait_for_ended_connections(1));
  EXPECT_EQ(server.connection(0).received, "all of it");
}

TEST(ScriptedServer, AWaitThatIsInVainTimesOut) {
  const ScriptedServer server({script::ReadRequest{}});
  EXPECT_FALSE(server.wait_for_connections(1, 1ms));
  EXPECT_FALSE(server.wait_for_requests(1, 1ms));
}

TEST(ScriptedServer, EndsAtOnceWhateverItsConnectionsDo) {
  const WakeUp never;
  const std::vector<script::Steps> scripts = {
      {script::ReadRequest{}},
      {script::Pause{1h}},
      {script::WaitForEvent{&never}},
      {script::WaitForPeerClose{}},
      {script::SendSlowly{"0123456789", 1, 1h}},
      {script::Send{std::string(64U << 20U, 'x')}},
      {script::Again{}},
  };
  std::vector<Descriptor> sockets;
  const auto start = std::chrono::steady_clock::now();
  {
    const ScriptedServer server(Scripts{scripts});
    while (sockets.size() < scripts.size()) sockets.push_back(connect_to(server));
    ASSERT_TRUE(server.wait_for_connections(scripts.size()));
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, ScriptedServer::patience);
}

TEST(ScriptedServer, CanUseItsFixedPortAgainAtOnce) {
  const std::uint16_t port = unused_port("127.0.0.9");
  for (int round = 0; round < 3; ++round) {
    const ScriptedServer server({script::Send{"hello"}}, {.address = "127.0.0.9", .port = port});
    EXPECT_EQ(server.port(), port);
    EXPECT_EQ(ask(server, ""), "hello");
  }
}

TEST(Loopback, NothingListensOnAnUnusedPort) {
  EXPECT_THROW(::connect_to("127.0.0.2", unused_port()), std::system_error);
}

TEST(HttpAnswer, CanClaimAnyLength) {
  EXPECT_THAT(http_answer_claiming(99, "x"), HasSubstr("Content-Length: 99\r\n\r\nx"));
}

TEST(HttpAnswer, CanLeaveTheLengthOut) {
  EXPECT_THAT(http_answer_until_close("x"), testing::Not(HasSubstr("Content-Length")));
}

TEST(HttpAnswer, CarriesStatusLineAndHeaders) {
  const std::string answer = http_answer("", "HTTP/1.1 401 Unauthorized", "CIMError: x\r\n");
  EXPECT_THAT(answer, StartsWith("HTTP/1.1 401 Unauthorized\r\n"));
  EXPECT_THAT(answer, HasSubstr("\r\nCIMError: x\r\n\r\n"));
}

TEST(HttpAnswer, CanComeInChunks) {
  EXPECT_THAT(http_answer_in_chunks("0123456789abcdefXYZ", 16),
              testing::EndsWith("\r\n\r\n10\r\n0123456789abcdef\r\n3\r\nXYZ\r\n0\r\n\r\n"));
}

}  // namespace
