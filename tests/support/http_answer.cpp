#include "support/http_answer.h"

#include <array>
#include <cstdio>

namespace {

std::string head(const std::string& status_line, const std::string& own_headers,
                 const std::string& extra_headers) {
  return status_line + "\r\nContent-Type: application/xml; charset=\"utf-8\"\r\n" + own_headers +
         extra_headers + "\r\n";
}

std::string hexadecimal(std::size_t value) {
  std::array<char, 20> digits;
  const int size = std::snprintf(digits.data(), digits.size(), "%zx", value);
  return std::string(digits.data(), static_cast<std::size_t>(size));
}

}  // namespace

std::string http_answer(const std::string& body, const std::string& status_line,
                        const std::string& extra_headers) {
  return http_answer_claiming(body.size(), body, status_line, extra_headers);
}

std::string http_answer_claiming(std::size_t claimed_length, const std::string& body,
                                 const std::string& status_line, const std::string& extra_headers) {
  const std::string length = "Content-Length: " + std::to_string(claimed_length) + "\r\n";
  return head(status_line, length, extra_headers) + body;
}

std::string http_answer_until_close(const std::string& body, const std::string& status_line,
                                    const std::string& extra_headers) {
  return head(status_line, "Connection: close\r\n", extra_headers) + body;
}

std::string http_answer_in_chunks(const std::string& body, std::size_t chunk,
                                  const std::string& status_line,
                                  const std::string& extra_headers) {
  std::string answer = head(status_line, "Transfer-Encoding: chunked\r\n", extra_headers);
  for (std::size_t at = 0; at < body.size(); at += chunk) {
    const std::string piece = body.substr(at, chunk);
    answer += hexadecimal(piece.size()) + "\r\n" + piece + "\r\n";
  }
  return answer + "0\r\n\r\n";
}
