#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CIMlistener/reader_run.h"
#include "CIMlistener/socket_faults.h"
#include "support/trace_recorder.h"
#include "zuCIM/vocabulary.h"

// Each request comes in pieces that the test chooses, to a reader on the test's own thread.
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
namespace trace_level = zuCIM::trace_level;

const std::string request = export_request("1042");
const std::string body = export_request_body("1042");
const std::string answer = export_answer("1042", "000000236");
const std::size_t body_start = request.size() - body.size();

// What became of a request.
struct Result {
  std::string answer;
  std::vector<std::string> indications;
  std::vector<std::string> errors;
  std::vector<std::string> details;
};

// Has a reader receive the bytes in pieces of these sizes, and then the rest at once. The sender
// sends no more.
Result receive_in_pieces(const std::string& bytes, const std::vector<std::size_t>& sizes) {
  Received received;
  ReaderRun run;
  run.send(bytes);
  ::shutdown(run.sender.number(), SHUT_WR);
  const TraceRecorder recorder;
  SocketFaults faults;
  std::vector<Outcome> outcomes;
  for (const std::size_t size : sizes) outcomes.push_back(Outcome::at_most(size));
  faults.on(Call::recv, in_turn(outcomes));
  Result result;
  result.answer = run.answer();
  result.indications = received.texts();
  result.errors = recorder.texts(trace_level::error);
  result.details = recorder.texts(trace_level::detail);
  return result;
}

Result receive(const std::string& bytes) {
  return receive_in_pieces(bytes, {});
}

void expect_indication(const Result& result, const std::string& text) {
  EXPECT_THAT(result.indications, ElementsAre(text));
  EXPECT_THAT(result.errors, IsEmpty());
  EXPECT_THAT(result.details, IsEmpty());
}

void expect_closed(const Result& result) {
  EXPECT_EQ(result.answer, "");
  EXPECT_THAT(result.indications, IsEmpty());
  EXPECT_THAT(result.errors, IsEmpty());
  EXPECT_THAT(result.details, ElementsAre("readerThread: connection has been gracefully closed"));
}

void expect_error(const Result& result, const std::string& text) {
  EXPECT_EQ(result.answer, "");
  EXPECT_THAT(result.indications, IsEmpty());
  EXPECT_THAT(result.errors, ElementsAre(text));
  EXPECT_THAT(result.details, IsEmpty());
}

TEST(BadInput, ARequestSplitAtAnyByteHasItsOutcome) {
  const std::size_t digits = request.find("Content-Length: ") + 16;
  for (std::size_t split = 1; split < request.size(); ++split) {
    SCOPED_TRACE(split);
    const Result result = receive_in_pieces(request, {split});
    const bool is_within_opening = split > body_start && split < body_start + 5;
    if (split <= digits) {
      expect_error(result, "readerThread: missing Content-Length");
    } else if (is_within_opening) {
      expect_closed(result);  // The bytes before the split are not in the body.
    } else {
      expect_indication(result, split < body_start ? request.substr(split) : body);
      EXPECT_EQ(result.answer, answer);
    }
  }
}

TEST(BadInput, ABodyThatComesByteByByteIsPutTogether) {
  const std::vector<std::size_t> single(body.size(), 1);
  std::vector<std::size_t> sizes{body_start};
  sizes.insert(sizes.end(), single.begin(), single.end());
  const Result result = receive_in_pieces(request, sizes);
  expect_indication(result, body);
  EXPECT_EQ(result.answer, answer);
}

TEST(BadInput, AHeadThatComesByteByByteHasNoLength) {
  expect_error(receive_in_pieces(request, std::vector<std::size_t>(10, 1)),
               "readerThread: missing Content-Length");
}

// A connection is good for one request; what follows it is taken for the end of its text.
TEST(BadInput, SeveralRequestsInOnePieceGetOneAnswerAndOneCallback) {
  const std::string second = export_request("1043");
  const Result result = receive(request + second + second);
  expect_indication(result, body + second + second);
  EXPECT_EQ(result.answer, answer);
}

TEST(BadInput, ARequestBehindTheOneThatIsReadIsIgnored) {
  const Result result = receive_in_pieces(request + request, {request.size()});
  expect_indication(result, body);
  EXPECT_EQ(result.answer, answer);
}

// A request that came whole is not among these: its reader looks for no end.
TEST(BadInput, ASenderThatClosesWithinItsRequestGetsNoAnswer) {
  expect_closed(receive(""));
  expect_closed(receive(export_request_head("100")));
  for (std::size_t size = body_start + 1; size < request.size(); ++size)
    expect_closed(receive(request.substr(0, size)));
}

TEST(BadInput, ALengthThatIsMissingOrBelowOneEndsTheRequest) {
  for (const char* head :
       {"\n", "POST /test HTTP/1.1\r\nHost: a\r\n\r\n", "Content-Length: 0\r\n\r\n",
        "Content-Length: 00000\r\n\r\n", "Content-Length: -5\r\n\r\n", "Content-Length:\r\n\r\n",
        "Content-Length: -1000000000000000000000000000000\r\n\r\n", "Content-Length: many\r\n\r\n",
        "Transfer-Encoding: chunked\r\n\r\n"})
    expect_error(receive(head + body), "readerThread: missing Content-Length");
}

TEST(BadInput, AnAbsurdLengthEndsTheRequest) {
  const std::size_t largest = zuCIM::listener_limit::largest_body;
  for (const std::string& length :
       {std::to_string(largest + 1), std::string("2147483648"), std::string("4294967297"),
        std::string("18446744073709551617"), std::string("1000000000000000000000000000000")})
    expect_error(receive(export_request_head(length) + body),
                 "readerThread: Content-Length is too large");
}

TEST(BadInput, TheLargestLengthIsWaitedFor) {
  expect_closed(
      receive(export_request_head(std::to_string(zuCIM::listener_limit::largest_body)) + body));
}

// Has a reader receive the request while the other readers of its listener hold so many bytes.
Result receive_while_others_hold(std::size_t bytes) {
  Received received;
  ReaderRun run;
  EXPECT_TRUE(run.state->hold(bytes));
  run.send(request);
  ::shutdown(run.sender.number(), SHUT_WR);
  const TraceRecorder recorder;
  Result result;
  result.answer = run.answer();
  result.indications = received.texts();
  result.errors = recorder.texts(trace_level::error);
  // What this reader kept is counted out again.
  EXPECT_TRUE(run.state->hold(zuCIM::listener_limit::most_bytes - bytes));
  EXPECT_FALSE(run.state->hold(1));
  return result;
}

TEST(BadInput, ARequestIsKeptWhileAllTogetherHoldNoMoreThanTheLimit) {
  const Result result = receive_while_others_hold(zuCIM::listener_limit::most_bytes - body.size());
  expect_indication(result, body);
  EXPECT_EQ(result.answer, answer);
}

TEST(BadInput, ARequestOfOneByteMoreEndsItsConnection) {
  expect_error(receive_while_others_hold(zuCIM::listener_limit::most_bytes - body.size() + 1),
               "readerThread: too much is being received at once");
}

TEST(BadInput, ALengthThatIsTooSmallEndsTheReadingButLosesNothingOfThePiece) {
  const Result result = receive(export_request_head("1") + body);
  expect_indication(result, body);
  EXPECT_EQ(result.answer, answer);
}

TEST(BadInput, ALengthThatIsTooSmallLosesThePiecesThatFollow) {
  const std::string head = export_request_head("10");
  const Result result = receive_in_pieces(head + body, {head.size() + 12});
  expect_indication(result, body.substr(0, 12));
  EXPECT_EQ(result.answer, export_answer("1", "000000233"));
}

TEST(BadInput, AZeroPaddedLengthIsGood) {
  const std::string length(500, '0');
  expect_indication(receive(export_request_head(length + std::to_string(body.size())) + body),
                    body);
}

TEST(BadInput, LineEndsAndCaseDoNotMatter) {
  const std::string length = std::to_string(body.size());
  for (const std::string& head :
       {"POST /test HTTP/1.1\ncontent-length: " + length + "\n\n",
        "post /TEST http/1.1\r\nCONTENT-LENGTH: " + length + "\r\n\r\n",
        "M-POST / HTTP/1.0\r\nCONTENT-length:" + length + "\r\n\r\n",
        "content-length: " + length + "\n", "content-length:\t " + length})
    expect_indication(receive(head + body), body);
}

TEST(BadInput, TheCaseOfTheDeclarationDoesNotMatter) {
  const std::string upper = "<?XML VERSION=\"1.0\"?><CIM/>";
  expect_indication(receive(export_request_with(upper)), upper);
}

// Only the declaration tells where the body begins.
TEST(BadInput, ABodyWithoutADeclarationIsLostWhenItComesWithTheHead) {
  expect_closed(receive(export_request_with("<CIM><MESSAGE ID=\"9\"/></CIM>")));
}

TEST(BadInput, ABodyWithoutADeclarationIsGoodWhenItComesAfterTheHead) {
  const std::string bare = "<CIM><MESSAGE ID=\"9\"/></CIM>";
  const std::string head = export_request_head(std::to_string(bare.size()));
  const Result result = receive_in_pieces(head + bare, {head.size()});
  expect_indication(result, bare);
  EXPECT_EQ(result.answer, export_answer("9", "000000233"));
}

// Only the first piece is searched.
TEST(BadInput, ASecondLengthOrDeclarationInTheBodyIsText) {
  const std::string text = body + "Content-Length: 1\r\n<?xml?>" + body;
  expect_indication(receive_in_pieces(export_request_with(text), {body_start + 20, 30, 200}), text);
}

TEST(BadInput, BytesOfAllKindsAreHandedOver) {
  std::string text = "<?xml?>";
  for (int c = 0; c < 256; ++c) text += static_cast<char>(c);
  expect_indication(receive(export_request_with(text)), text);
  expect_indication(receive_in_pieces(export_request_with(text), {body_start + 20, 1, 1, 1}), text);
}

struct IdCase {
  const char* id;
  const char* answered;
  const char* length;
};

TEST(BadInput, AMessageIdThatIsNoneIsAnsweredWithOne) {
  for (const IdCase& each :
       {IdCase{"", "1", "000000233"}, IdCase{"0", "1", "000000233"}, IdCase{"-7", "1", "000000233"},
        IdCase{"seven", "1", "000000233"}, IdCase{"-99999999999999999999999", "1", "000000233"},
        IdCase{"99999999999999999999999", "2147483647", "000000242"},
        IdCase{"0000000000000000000012", "12", "000000234"}}) {
    const Result result = receive(export_request(each.id));
    expect_indication(result, export_request_body(each.id));
    EXPECT_EQ(result.answer, export_answer(each.answered, each.length)) << each.id;
  }
}

TEST(BadInput, ARequestWithoutAMessageIsAnsweredWithOne) {
  const std::string text = "<?xml version=\"1.0\"?>";
  const Result result = receive(export_request_with(text));
  expect_indication(result, text);
  EXPECT_EQ(result.answer, export_answer("1", "000000233"));
}

}  // namespace
