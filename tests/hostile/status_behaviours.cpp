#include "hostile/behaviour.h"
#include "support/http_answer.h"

// What a server says in its status line, and what it asks for with that.

namespace {

constexpr unsigned refused = 0x200;
constexpr unsigned no_connection = 0x400;

AnswerBehaviour says(const std::string& name, const std::vector<int>& statuses, unsigned info,
                     const std::string& bytes, const std::string& trace = "") {
  return {{name, statuses}, [bytes] { return answer_with(bytes); }, info, trace};
}

AnswerBehaviour redirects(const std::string& name, const std::string& line,
                          const std::string& location) {
  return says(name, {10000 + std::stoi(line)}, 0,
              http_answer(good_document, "HTTP/1.1 " + line, "Location: " + location + "\r\n"),
              "HTTP/1.1 " + line);
}

AnswerBehaviour challenges(const std::string& challenge) {
  return says(
      "401 with the challenge \"" + challenge + "\"", {22}, refused,
      http_answer("", "HTTP/1.1 401 Unauthorized", "WWW-Authenticate: " + challenge + "\r\n"),
      "Invalid username/password");
}

AnswerBehaviour line(const std::string& status_line, const std::vector<int>& statuses) {
  return says("the status line \"" + status_line + "\"", statuses, 0,
              http_answer(good_document, status_line));
}

}  // namespace

std::vector<AnswerBehaviour> status_behaviours() {
  std::string storm;
  for (int i = 0; i < 1000; ++i) storm += "HTTP/1.1 100 Continue\r\n\r\n";
  const std::string error = error_document("<ERROR CODE=\"6\" DESCRIPTION=\"x\"/>");
  const std::string switching =
      "HTTP/1.1 101 Switching Protocols\r\nUpgrade: h2c\r\nConnection: Upgrade\r\n\r\n";
  std::vector<AnswerBehaviour> all = {
      redirects("a redirection to itself", "301 Moved Permanently", "/cimom"),
      redirects("a redirection elsewhere", "302 Found", "http://127.0.0.9:9/"),
      redirects("a redirection to a file", "307 Temporary Redirect", "file:///etc/passwd"),
      redirects("a redirection that keeps the method", "308 Permanent Redirect", "/other"),
      redirects("a list of choices", "300 Multiple Choices", "/cimom"),
      says("100 a thousand times, and then its answer", {10100}, 0,
           storm + http_answer(good_document)),
      says("101 and its answer", {10101}, 0, switching + http_answer(good_document)),
      says("101 and a document", {10101}, 0, switching + good_document),
      says("101 and nothing", {52}, no_connection, switching),
      says("101 and garbage", {5002}, 0, switching + std::string(100, '\xA5')),
      says("103 and its answer", {10103}, 0,
           "HTTP/1.1 103 Early Hints\r\nLink: </x>\r\n\r\n" + http_answer(good_document)),
      says("204 without a body", {5001}, 0, "HTTP/1.1 204 No Content\r\n\r\n"),
      says("204 with a body", {5001}, 0, http_answer(good_document, "HTTP/1.1 204 No Content")),
      says("205 with a body", {10205}, 0, http_answer(good_document, "HTTP/1.1 205 Reset Content")),
      says("206 with a range that nobody asked for", {10206}, 0,
           http_answer(good_document, "HTTP/1.1 206 Partial Content",
                       "Content-Range: bytes 5-9/100\r\n")),
      says("304 without a body", {5001}, 0, "HTTP/1.1 304 Not Modified\r\n\r\n"),
      says("304 with a body", {5001}, 0, http_answer(good_document, "HTTP/1.1 304 Not Modified")),
      challenges("Basic realm=\"\\\"\\\"\\\"\""),
      challenges("Digest realm=\"a\", nonce=\"b\", qop=\"auth\""),
      challenges("Negotiate"),
      challenges("NTLM TlRMTVNTUAACAAAA"),
      challenges("Bearer"),
      says("401 with two thousand commas as a challenge", {22}, refused,
           http_answer("", "HTTP/1.1 401 Unauthorized",
                       "WWW-Authenticate: " + std::string(2000, ',') + "\r\n")),
      says("401 without a challenge", {22}, refused, "HTTP/1.1 401 Unauthorized\r\n\r\n"),
      says("407", {22}, 0,
           http_answer("", "HTTP/1.1 407 Proxy Authentication Required",
                       "Proxy-Authenticate: Basic realm=\"a\"\r\n")),
      says("417", {22}, 0, http_answer("", "HTTP/1.1 417 Expectation Failed")),
      says("426 with an upgrade", {22}, 0,
           http_answer("", "HTTP/1.1 426 Upgrade Required", "Upgrade: h2c\r\n")),
      says("429 and a day to wait", {22}, 0,
           http_answer("", "HTTP/1.1 429 Too Many Requests", "Retry-After: 86400\r\n")),
      says("500 with a CIM error", {22}, 0, http_answer(error, "HTTP/1.1 500 Oops")),
      says("503 and a day to wait", {22}, 0,
           http_answer("", "HTTP/1.1 503 Unavailable", "Retry-After: 86400\r\n")),
      line("HTTP/1.1 200", {0}),
      says("a status line with many blanks", {0, 1, 8}, 0,
           http_answer(good_document, "HTTP/1.1  200  OK")),
      line("HTTP/1.1 0200 OK", {1, 8}),
      line("HTTP/1.1 000 Zero", {1}),
      says("a negative status", {1, 8}, 0, http_answer(good_document, "HTTP/1.1 -200 OK")),
      line("HTTP/1.1 999 Most", {22}),
      line("HTTP/1.1 99999 More", {1, 8, 22}),
      line("HTTP/1.1 OK", {1, 8}),
      line("HTTP/1.0 200 OK", {0}),
      line("HTTP/1.9 200 OK", {0, 1}),
      line("HTTP/3 200 OK", {1}),
      line("HTTP/99999999999.1 200 OK", {1, 8}),
      line("http/1.1 200 ok", {0, 1}),
      says(
          "a CIMStatusCode beyond every number", {2147483647}, 0,
          http_answer(good_document, "HTTP/1.1 200 OK", "CIMStatusCode: 99999999999999999999\r\n")),
      says("a negative CIMStatusCode", {9995}, 0,
           http_answer(good_document, "HTTP/1.1 200 OK", "CIMStatusCode: -5\r\n")),
      says("a CIMStatusCode that makes 0", {0}, 0,
           http_answer(good_document, "HTTP/1.1 200 OK", "CIMStatusCode: -10000\r\n")),
  };
  return all;
}
