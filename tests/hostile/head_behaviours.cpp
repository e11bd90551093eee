#include "hostile/behaviour.h"
#include "hostile/gzip_bodies.h"
#include "support/http_answer.h"

// What a server says about the length and the coding of its body, and heads that are none.

namespace {

const std::string head = "HTTP/1.1 200 OK\r\n";

AnswerBehaviour sends(const std::string& name, const std::vector<int>& statuses,
                      const std::string& bytes) {
  return {{name, statuses}, [bytes] { return answer_with(bytes); }};
}

AnswerBehaviour claims(const std::string& length, const std::vector<int>& statuses) {
  return sends("the Content-Length \"" + length + "\"", statuses,
               head + "Content-Length: " + length + "\r\n\r\n" + good_document);
}

AnswerBehaviour chunked(const std::string& name, const std::vector<int>& statuses,
                        const std::string& body) {
  return sends(name, statuses, head + "Transfer-Encoding: chunked\r\n\r\n" + body);
}

AnswerBehaviour coded(const std::string& header, const std::vector<int>& statuses) {
  return sends("a plain body as \"" + header + "\"", statuses,
               head + header + "\r\n\r\n" + good_document);
}

AnswerBehaviour compressed(const std::string& header, const std::vector<int>& statuses) {
  return sends("a compressed body as \"" + header + "\"", statuses,
               head + header + "\r\n\r\n" + small_gzip_body);
}

// About a megabyte that says it is a gibibyte.
AnswerBehaviour bomb(const std::string& header, int status, EndedBy ended_by) {
  return {{"a gibibyte compressed to a megabyte as \"" + header + "\"", {status}, ended_by},
          [header] {
            return script::Steps{script::ReadRequest{},
                                 script::Send{head + header + "\r\n\r\n" + large_gzip_start},
                                 script::SendRepeatedly{large_gzip_blocks, large_gzip_times},
                                 script::Send{large_gzip_end}, script::Close{}};
          },
          0,
          "",
          [](WireClient& client) { client.largestBody = 2 * 1024 * 1024; }};
}

}  // namespace

std::vector<AnswerBehaviour> head_behaviours() {
  const std::size_t size = good_document.size();
  const std::string length = "Content-Length: " + std::to_string(size) + "\r\n";
  std::vector<AnswerBehaviour> all = {
      sends("a Content-Length that is too large", {18},
            http_answer_claiming(size + 1, good_document)),
      sends("a Content-Length that is too small", {5002},
            http_answer_claiming(size - 1, good_document)),
      sends("a Content-Length of 0 before a body", {5001}, http_answer_claiming(0, good_document)),
      claims("-1", {8}),
      claims("many", {8}),
      claims("0x10", {5001}),
      claims("", {8}),
      claims("99999999999999999999999999", {0}),
      claims("9223372036854775807", {18}),
      sends("two different Content-Lengths", {0, 8, 5002},
            head + "Content-Length: 10\r\n" + length + "\r\n" + good_document),
      sends("a Content-Length and chunks", {0},
            http_answer_in_chunks(good_document, 50, "HTTP/1.1 200 OK", "Content-Length: 10\r\n")),
      chunked("a chunk size that is no number", {56}, "zz\r\n" + good_document + "\r\n0\r\n\r\n"),
      chunked("a negative chunk size", {56}, "-5\r\n" + good_document + "\r\n0\r\n\r\n"),
      chunked("a chunk size beyond 64 bits", {56},
              "FFFFFFFFFFFFFFFFFF\r\n" + good_document + "\r\n0\r\n\r\n"),
      chunked("a chunk of almost 2^63 bytes", {18, 56}, "7FFFFFFFFFFFFFFF\r\n" + good_document),
      chunked("a chunk without its line end", {56}, "3\r\nabcdef\r\n0\r\n\r\n"),
      chunked("chunks without the last one", {18, 56}, "3\r\nabc\r\n"),
      chunked("a plain body as chunks", {56}, good_document),
      {{"a chunk extension of a megabyte", {0, 56}},
       [] {
         return answer_with(head + "Transfer-Encoding: chunked\r\n\r\n1;" +
                            std::string(1000000, 'e') + "\r\n" + good_document);
       }},
      chunked("no chunk but the last one", {5001}, "0\r\n\r\n"),
      coded("Content-Encoding: gzip", {0}),
      coded("Content-Encoding: unheard-of", {0}),
      coded("Transfer-Encoding: gzip", {0, 61}),
      coded("Transfer-Encoding: unheard-of", {0, 61}),
      compressed("Content-Encoding: gzip", {5002}),
      compressed("Transfer-Encoding: gzip", {0}),
      sends("a compressed body in chunks", {0},
            http_answer_in_chunks(small_gzip_body, 10, "HTTP/1.1 200 OK",
                                  "Transfer-Encoding: gzip\r\n")),
      bomb("Content-Encoding: gzip", 5002, EndedBy::peer),
      bomb("Transfer-Encoding: gzip", 23, EndedBy::limit),
      coded("Content-Type: text/html; charset=utf-16", {0}),
      sends("an answer of HTTP 0.9", {1}, good_document),
      sends("the preface of HTTP/2", {1}, "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n"),
      sends("an answer of HTTP/2 in clear text", {0}, "HTTP/2 200\r\n\r\n" + good_document),
      sends("garbage", {1}, std::string(100000, '\xA5')),
      sends("binary zeros", {1}, std::string(100000, '\0')),
      sends("a head with zeros", {8}, head + std::string("X: a\0b\r\n\r\n", 10) + good_document),
      sends("a head with line feeds alone", {0}, "HTTP/1.1 200 OK\nX: a\n\n" + good_document),
      sends("a header line without a colon", {8}, head + "nonsense\r\n\r\n" + good_document),
      sends("a folded header line", {0}, head + "X: a\r\n b\r\n\r\n" + good_document),
      sends("a cookie for everyone", {0},
            head + "Set-Cookie: a=b; Domain=.0.2; Path=/\r\n" + length + "\r\n" + good_document),
  };
  return all;
}
