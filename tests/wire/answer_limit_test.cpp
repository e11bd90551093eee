#include <gtest/gtest.h>

#include "support/http_answer.h"
#include "support/trace_recorder.h"
#include "wire/wire_client.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr int too_large = 23;

TEST(AnswerLimit, IsThatOfTheLibraryUnlessChanged) {
  const CIMconnection connection;
  EXPECT_EQ(connection.largestBody, answer_limit::largest_body);
  EXPECT_EQ(connection.largestHeader, answer_limit::largest_header);
}

TEST(AnswerLimit, IsCopiedWithTheConnection) {
  CIMconnection source;
  source.largestBody = 5;
  source.largestHeader = 6;
  const CIMconnection copy(source);
  EXPECT_EQ(copy.largestBody, 5U);
  EXPECT_EQ(copy.largestHeader, 6U);
}

TEST(AnswerLimit, LetsABodyOfItsSizePass) {
  const ScriptedServer server(always_answer(http_answer(good_document)));
  WireClient client(server);
  client.largestBody = good_document.size();
  EXPECT_EQ(client.exchange(), 0);
  EXPECT_EQ(client.responseBody, good_document);
}

TEST(AnswerLimit, EndsTheExchangeOneByteLater) {
  const ScriptedServer server(always_answer(http_answer(good_document)));
  WireClient client(server);
  client.largestBody = good_document.size() - 1;
  const TraceRecorder traces(trace_level::warning);
  EXPECT_EQ(client.exchange(), too_large);
  EXPECT_TRUE(client.responseBody.empty());
  EXPECT_TRUE(client.responseHeader.empty());
  EXPECT_EQ(client.result.next, nullptr);
  bool is_told = false;
  for (const std::string& text : traces.texts())
    is_told |= text.ends_with("sendRequest_recvResponse: the answer is too large");
  EXPECT_TRUE(is_told);
}

TEST(AnswerLimit, HoldsForAnswersWithoutALength) {
  const std::string body(100000, 'x');
  for (const std::string& answer :
       {http_answer_until_close(body), http_answer_in_chunks(body, 1000)}) {
    const ScriptedServer server(answer_with(answer));
    WireClient client(server);
    client.largestBody = body.size() - 1;
    EXPECT_EQ(client.exchange(), too_large);
  }
}

TEST(AnswerLimit, HoldsForHeaderLines) {
  const std::string answer = http_answer(good_document);
  const std::size_t header = answer.size() - good_document.size();
  const ScriptedServer server(always_answer(answer));
  WireClient client(server);
  client.largestHeader = header;
  EXPECT_EQ(client.exchange(), 0);
  client.largestHeader = header - 1;
  client.SetExtraTimeOut(-100);
  EXPECT_EQ(client.exchange(), too_large);
}

// The first status line counts, so an interim answer is no success.
TEST(AnswerLimit, CountsInterimAnswers) {
  std::string storm;
  for (int i = 0; i < 1000; ++i) storm += "HTTP/1.1 100 Continue\r\n\r\n";
  const ScriptedServer server(always_answer(storm + http_answer(good_document)));
  WireClient client(server);
  EXPECT_EQ(client.exchange(), 10100);
  client.largestHeader = 10000;
  client.SetExtraTimeOut(-100);
  EXPECT_EQ(client.exchange(), too_large);
}

TEST(AnswerLimit, DoesNotSpoilTheNextExchange) {
  const ScriptedServer server(Scripts{
      {answer_with(http_answer(std::string(1000, 'x'))), answer_with(http_answer(good_document))}});
  WireClient client(server);
  client.largestBody = 999;
  EXPECT_EQ(client.exchange(), too_large);
  client.SetExtraTimeOut(-100);
  EXPECT_EQ(client.exchange(), 0);
}

}  // namespace
}  // namespace zuCIM
