#include "support/loopback.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>

namespace {

// The result of a system call, which must not be negative.
template <class Result>
Result checked(Result result, const char* what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

sockaddr_in socket_address(const std::string& address, std::uint16_t port) {
  sockaddr_in result{};
  result.sin_family = AF_INET;
  result.sin_port = htons(port);
  if (inet_pton(AF_INET, address.c_str(), &result.sin_addr) != 1)
    throw std::system_error(EINVAL, std::generic_category(), address);
  return result;
}

Descriptor bound_socket(const std::string& address, std::uint16_t port) {
  Descriptor socket(
      checked(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0), "socket"));
  const int on = 1;
  checked(::setsockopt(socket.number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on), "SO_REUSEADDR");
  const sockaddr_in name = socket_address(address, port);
  checked(::bind(socket.number(), reinterpret_cast<const sockaddr*>(&name), sizeof name), "bind");
  return socket;
}

}  // namespace

void Descriptor::close() {
  if (number_ >= 0) ::close(std::exchange(number_, -1));
}

WakeUp::WakeUp() : event_(checked(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")) {}

void WakeUp::set() const {
  // The only failure left is a full counter, and then the flag is set already.
  [[maybe_unused]] const int result = ::eventfd_write(event_.number(), 1);
}

bool WakeUp::is_set() const {
  pollfd entry{event_.number(), POLLIN, 0};
  return ::poll(&entry, 1, 0) == 1;
}

Descriptor listen_on(const std::string& address, std::uint16_t port) {
  Descriptor socket = bound_socket(address, port);
  checked(::listen(socket.number(), SOMAXCONN), "listen");
  return socket;
}

Descriptor connect_to(const std::string& address, std::uint16_t port) {
  Descriptor socket(checked(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket"));
  const sockaddr_in name = socket_address(address, port);
  checked(::connect(socket.number(), reinterpret_cast<const sockaddr*>(&name), sizeof name),
          "connect");
  return socket;
}

std::uint16_t local_port(const Descriptor& socket) {
  sockaddr_in name{};
  socklen_t size = sizeof name;
  checked(::getsockname(socket.number(), reinterpret_cast<sockaddr*>(&name), &size), "getsockname");
  return ntohs(name.sin_port);
}

std::uint16_t unused_port(const std::string& address) {
  return local_port(bound_socket(address, 0));
}

void send_all(const Descriptor& socket, const std::string& bytes) {
  std::string_view rest = bytes;
  while (!rest.empty()) {
    const ssize_t sent =
        checked(::send(socket.number(), rest.data(), rest.size(), MSG_NOSIGNAL), "send");
    rest.remove_prefix(static_cast<std::size_t>(sent));
  }
}

std::string receive_all(const Descriptor& socket) {
  std::string bytes;
  std::array<char, 4096> piece;
  while (const ssize_t size =
             checked(::recv(socket.number(), piece.data(), piece.size(), 0), "recv"))
    bytes.append(piece.data(), static_cast<std::size_t>(size));
  return bytes;
}
