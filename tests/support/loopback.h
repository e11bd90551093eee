#pragma once

#include <cstdint>
#include <string>
#include <utility>

// Sockets on loopback addresses, and descriptors that close themselves.

// A descriptor that is closed at the end of its owner's life.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& source) noexcept : number_(std::exchange(source.number_, -1)) {}
  Descriptor& operator=(Descriptor&& source) noexcept {
    std::swap(number_, source.number_);
    return *this;
  }
  ~Descriptor() { close(); }

  // The descriptor's number; -1 when there is none.
  int number() const { return number_; }
  // Closes the descriptor now.
  void close();

 private:
  int number_ = -1;
};

// A flag that a poll can wait for: once set it stays set.
class WakeUp {
 public:
  WakeUp();
  // Wakes everyone who waits, now and later.
  void set() const;
  // Whether the flag is set.
  bool is_set() const;
  // The descriptor that becomes readable when the flag is set.
  int number() const { return event_.number(); }

 private:
  Descriptor event_;
};

// A non-blocking socket that listens on an IPv4 address; port 0 lets the system choose. Throws
// std::system_error.
Descriptor listen_on(const std::string& address, std::uint16_t port);

// A blocking socket connected to an IPv4 address. Throws std::system_error.
Descriptor connect_to(const std::string& address, std::uint16_t port);

// The port that a socket is bound to.
std::uint16_t local_port(const Descriptor& socket);

// A port on which nothing listens, at any address, and which no other test is given either.
inline constexpr const char* dead_port = "9";

// A port of `address` on which nothing listens. Another process may be given it at any time, so it
// is one to listen on, and not for a server that is to be dead.
std::uint16_t unused_port(const std::string& address = "127.0.0.2");

// Sends all bytes through a blocking socket. Throws std::system_error.
void send_all(const Descriptor& socket, const std::string& bytes);

// Everything that arrives on a blocking socket until the peer closes it. Throws std::system_error
// when the peer resets it.
std::string receive_all(const Descriptor& socket);
