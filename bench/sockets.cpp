#include "sockets.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace bench {
namespace {

constexpr int backlog = 512;

sockaddr_in address(std::uint32_t host, int port) {
  sockaddr_in made{};
  made.sin_family = AF_INET;
  made.sin_addr.s_addr = htonl(host);
  made.sin_port = htons(static_cast<std::uint16_t>(port));
  return made;
}

// Small messages go at once.
void switch_delay_off(int descriptor) {
  const int on = 1;
  ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

std::size_t content_length(const std::string& head) {
  constexpr const char* name = "\r\ncontent-length:";
  const char* const found = ::strcasestr(head.c_str(), name);
  return found == nullptr ? 0 : std::strtoul(found + std::string_view(name).size(), nullptr, 10);
}

}  // namespace

Socket::Socket(Socket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

Socket::~Socket() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

Socket Socket::listening() {
  Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_in any = address(INADDR_ANY, 0);
  if (::bind(socket.descriptor_, reinterpret_cast<const sockaddr*>(&any), sizeof any) != 0 ||
      ::listen(socket.descriptor_, backlog) != 0)
    throw std::runtime_error("no port to listen on");
  return socket;
}

Socket Socket::connected(int host, int port) {
  Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_in peer = address(INADDR_LOOPBACK - 1 + static_cast<unsigned>(host), port);
  if (::connect(socket.descriptor_, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) != 0)
    throw std::runtime_error("no connection");
  switch_delay_off(socket.descriptor_);
  return socket;
}

int Socket::port() const {
  sockaddr_in own{};
  socklen_t size = sizeof own;
  ::getsockname(descriptor_, reinterpret_cast<sockaddr*>(&own), &size);
  return ntohs(own.sin_port);
}

Socket Socket::accept() const {
  Socket peer(::accept4(descriptor_, nullptr, nullptr, SOCK_CLOEXEC));
  switch_delay_off(peer.descriptor_);
  return peer;
}

bool Socket::send(std::string_view text) const {
  while (!text.empty()) {
    const ssize_t sent = ::send(descriptor_, text.data(), text.size(), MSG_NOSIGNAL);
    if (sent <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

bool Socket::receive(std::string& text) const {
  std::array<char, 16384> chunk;
  const ssize_t size = ::recv(descriptor_, chunk.data(), chunk.size(), 0);
  if (size <= 0) return false;
  text.append(chunk.data(), static_cast<std::size_t>(size));
  return true;
}

std::string receive_message(const Socket& socket) {
  std::string message;
  std::size_t head = std::string::npos;
  while (head == std::string::npos) {
    if (!socket.receive(message)) return {};
    head = message.find("\r\n\r\n");
  }
  const std::size_t size = head + 4 + content_length(message.substr(0, head + 2));
  while (message.size() < size)
    if (!socket.receive(message)) return {};
  return message;
}

std::string response(std::string_view body) {
  return "HTTP/1.1 200 OK\r\nContent-Type: application/xml; charset=utf-8\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\nCIMOperation: MethodResponse\r\n\r\n" +
         std::string(body);
}

}  // namespace bench
