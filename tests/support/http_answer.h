#pragma once

#include <cstddef>
#include <string>

// Bytes of HTTP answers. `extra_headers` are whole lines, each ended by "\r\n".

// An answer with its Content-Length.
std::string http_answer(const std::string& body, const std::string& status_line = "HTTP/1.1 200 OK",
                        const std::string& extra_headers = "");

// The same, and the server closes the connection behind it.
inline std::string last_http_answer(const std::string& body) {
  return http_answer(body, "HTTP/1.1 200 OK", "Connection: close\r\n");
}

// An answer whose Content-Length says `claimed_length`, whatever the body's length is.
std::string http_answer_claiming(std::size_t claimed_length, const std::string& body,
                                 const std::string& status_line = "HTTP/1.1 200 OK",
                                 const std::string& extra_headers = "");

// An answer without a length: the end of the connection ends the body.
std::string http_answer_until_close(const std::string& body,
                                    const std::string& status_line = "HTTP/1.1 200 OK",
                                    const std::string& extra_headers = "");

// An answer in chunked transfer coding, with `chunk` bytes of the body in each chunk.
std::string http_answer_in_chunks(const std::string& body, std::size_t chunk,
                                  const std::string& status_line = "HTTP/1.1 200 OK",
                                  const std::string& extra_headers = "");
