#include "answer_server.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <array>
#include <string_view>

namespace {

// Reads a piece; false at the end.
bool read_piece(const Descriptor& connection, std::string& text) {
  std::array<char, 16384> buffer;
  const ssize_t count = ::recv(connection.number(), buffer.data(), buffer.size(), 0);
  if (count <= 0) return false;
  text.append(buffer.data(), static_cast<std::size_t>(count));
  return true;
}

// All requests of the library end like this.
bool is_whole(const std::string& request) {
  return std::string_view(request).ends_with("</CIM>\n");
}

void send_whole(const Descriptor& connection, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::send(connection.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) return;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace

AnswerServer::AnswerServer() : listener_(listen_on(address, 0)) {
  ::fcntl(listener_.number(), F_SETFL, 0);
  thread_ = std::thread([this] { serve(); });
  thread_.detach();
}

void AnswerServer::set_answer(std::string bytes) {
  const std::lock_guard<std::mutex> guard(mutex_);
  answer_ = std::move(bytes);
}

void AnswerServer::serve() {
  for (;;) {
    const Descriptor connection(::accept4(listener_.number(), nullptr, nullptr, SOCK_CLOEXEC));
    if (connection.number() >= 0) answer(connection);
  }
}

// The rest is read, so that the client sees an end and not a reset.
void AnswerServer::answer(const Descriptor& connection) {
  std::string request;
  while (!is_whole(request))
    if (!read_piece(connection, request)) return;
  const int at_once = 1;
  ::setsockopt(connection.number(), IPPROTO_TCP, TCP_NODELAY, &at_once, sizeof at_once);
  std::string bytes;
  {
    const std::lock_guard<std::mutex> guard(mutex_);
    bytes = answer_;
  }
  send_whole(connection, bytes);
  ::shutdown(connection.number(), SHUT_WR);
  while (read_piece(connection, request)) {
  }
}
