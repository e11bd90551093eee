#include "hostile/behaviour.h"
#include "support/http_answer.h"

// What a server does with the connection and the speed of its answer.

namespace {

using namespace std::chrono_literals;
using Steps = script::Steps;

constexpr unsigned no_connection = 0x400;
constexpr const char* too_large = "sendRequest_recvResponse: the answer is too large";
constexpr const char* timeout = "(timeout: fail)";

const std::string head = "HTTP/1.1 200 OK\r\n";
const std::string piece(65536, ' ');

void take_a_mebibyte(WireClient& client) {
  client.largestBody = 1024 * 1024;
}

AnswerBehaviour slow(const std::string& name, std::size_t awaited, const Steps& steps) {
  return {{name, {42}, EndedBy::clock},
          [steps] { return steps; },
          no_connection,
          timeout,
          [](WireClient&) {},
          awaited};
}

// Sends without end after these bytes.
AnswerBehaviour endless(const std::string& name, const std::string& start,
                        const std::string& part) {
  return {
      {name, {23}, EndedBy::limit},
      [start, part] {
        return Steps{script::ReadRequest{}, script::Send{start}, script::SendRepeatedly{part, 0}};
      },
      0,
      too_large,
      take_a_mebibyte};
}

AnswerBehaviour broken(const std::string& name, const std::vector<int>& statuses, unsigned info,
                       const Steps& steps) {
  return {{name, statuses}, [steps] { return steps; }, info};
}

Steps after_the_request(const std::string& bytes, const script::Step& step) {
  return {script::ReadRequest{}, script::Send{bytes}, script::Pause{20ms}, step};
}

}  // namespace

std::vector<AnswerBehaviour> transport_behaviours() {
  const std::string answer = http_answer(good_document);
  const std::string half_body = answer.substr(0, answer.size() - 100);
  const std::string hexadecimal_chunk = "10000\r\n" + piece + "\r\n";
  const std::string interim = "HTTP/1.1 100 Continue\r\n\r\n";
  return {
      slow("nothing, and keeps the connection", 0,
           {script::ReadRequest{}, script::WaitForPeerClose{}}),
      slow("its head byte by byte", 17,
           {script::ReadRequest{},
            script::SendSlowly{head + "X: " + std::string(5000, 'x'), 1, 5ms}}),
      slow("its body byte by byte", 100,
           {script::ReadRequest{},
            script::SendSlowly{http_answer(std::string(5000, ' ') + good_document), 1, 5ms}}),
      slow("half of its head and then nothing", 17,
           {script::ReadRequest{}, script::Send{head + "Content-"}, script::WaitForPeerClose{}}),
      slow("half of its body and then nothing", 200,
           {script::ReadRequest{}, script::Send{half_body}, script::WaitForPeerClose{}}),
      slow("half of its chunks and then nothing", 100,
           {script::ReadRequest{},
            script::Send{http_answer_in_chunks(good_document, 10).substr(0, 200)},
            script::WaitForPeerClose{}}),
      slow("interim answers for ever, slowly", 100,
           {script::ReadRequest{}, script::SendSlowly{repeated(2000, interim), 25, 5ms}}),
      endless("a body without length or end", head + "\r\n", piece),
      endless("chunks without end", head + "Transfer-Encoding: chunked\r\n\r\n", hexadecimal_chunk),
      endless("header lines without end", head, "X-Line: " + piece.substr(0, 1000) + "\r\n"),
      endless("the same short header line for ever", head, repeated(16384, "A:\r\n")),
      endless("interim answers without end", "", repeated(2000, interim)),
      endless("trailer lines without end", head + "Transfer-Encoding: chunked\r\n\r\n0\r\n",
              "X: " + piece.substr(0, 1000) + "\r\n"),
      {{"a body of 1 GiB at full speed", {23}, EndedBy::limit},
       [] {
         return Steps{script::ReadRequest{},
                      script::Send{head + "Content-Length: 1073741824\r\n\r\n"},
                      script::SendRepeatedly{piece, 16384}};
       },
       0,
       too_large,
       take_a_mebibyte},
      {{"one header line of 10 MiB", {27, 100}, EndedBy::limit},
       [] {
         return Steps{script::ReadRequest{}, script::Send{head + "X: "},
                      script::SendRepeatedly{piece, 160}, script::Send{"\r\n\r\n"}};
       }},
      {{"a status line of 10 MiB", {1, 27, 56, 100}, EndedBy::limit},
       [] {
         return Steps{script::ReadRequest{}, script::Send{"HTTP/1.1 200 "},
                      script::SendRepeatedly{piece, 160}, script::Send{"\r\n\r\n"}};
       }},
      {{"ten thousand header lines", {0}},
       [] {
         std::string lines;
         for (int i = 0; i < 10000; ++i) lines += "X-" + std::to_string(i) + ": a\r\n";
         return answer_with(http_answer(good_document, "HTTP/1.1 200 OK", lines));
       }},
      broken("a closed connection at once", {52, 55, 56}, no_connection, {script::Close{}}),
      broken("a reset at once", {7, 52, 55, 56}, no_connection, {script::Reset{}}),
      broken("a closed connection instead of an answer", {52}, no_connection,
             {script::ReadRequest{}, script::Close{}}),
      broken("a reset instead of an answer", {56}, 0, {script::ReadRequest{}, script::Reset{}}),
      broken("the end of its stream instead of an answer", {52}, no_connection,
             {script::ReadRequest{}, script::EndSending{}, script::WaitForPeerClose{}}),
      broken("a closed connection within its status line", {52}, no_connection,
             after_the_request("HTTP/1.", script::Close{})),
      broken("a closed connection within its head", {5001}, 0,
             after_the_request(head + "X-A: ", script::Close{})),
      broken("a closed connection within its body", {18}, 0,
             after_the_request(half_body, script::Close{})),
      broken("a reset within its head", {56}, 0,
             after_the_request(head + "X-A: ", script::Reset{})),
      broken("a reset within its body", {56}, 0, after_the_request(half_body, script::Reset{})),
      broken("a reset within its chunks", {56}, 0,
             after_the_request(http_answer_in_chunks(good_document, 10).substr(0, 200),
                               script::Reset{})),
      broken("a reset behind its whole answer", {0, 56}, 0,
             after_the_request(answer, script::Reset{})),
      broken("its answer before it reads the request", {0}, 0,
             {script::Send{answer}, script::ReadRequest{}, script::Close{}}),
      broken("its answer twice", {0}, 0, answer_with(answer + answer)),
      {{"a megabyte of garbage behind its answer", {0}},
       [answer] { return answer_with(answer + std::string(1000000, '\x80')); }},
  };
}
