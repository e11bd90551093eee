#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace bench {

// A TCP socket, closed when it goes.
class Socket {
 public:
  explicit Socket(int descriptor) : descriptor_(descriptor) {}
  Socket(Socket&& other) noexcept;
  ~Socket();
  Socket& operator=(Socket&&) = delete;

  // Listens on a free port of all addresses. Throws std::runtime_error.
  static Socket listening();
  // Connects to 127.0.0.`host`. Throws std::runtime_error.
  static Socket connected(int host, int port);

  int port() const;
  // Waits for the next connection.
  Socket accept() const;
  // False when the peer is gone.
  bool send(std::string_view text) const;
  // Appends what comes next. False when the peer is gone.
  bool receive(std::string& text) const;

 private:
  int descriptor_;
};

// Receives one message with a Content-Length; an empty text when the peer is gone.
std::string receive_message(const Socket& socket);
// A response with this body.
std::string response(std::string_view body);

}  // namespace bench
