#include "support/channel.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>

namespace {

class PlainChannel : public Channel {
 public:
  PlainChannel(Descriptor socket, const WakeUp& stop) : socket_(std::move(socket)), stop_(stop) {}

  Transfer read(std::string& piece) override {
    const Transfer waited = wait_for_descriptor(socket_.number(), POLLIN, stop_);
    return waited == Transfer::done ? read_arrived(piece) : waited;
  }

  Transfer write(std::string_view bytes) override {
    while (!bytes.empty()) {
      const Transfer waited = wait_for_descriptor(socket_.number(), POLLOUT, stop_);
      if (waited != Transfer::done) return waited;
      const ssize_t sent = ::send(socket_.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent < 0 && errno != EAGAIN) return Transfer::ended;
      if (sent > 0) bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return Transfer::done;
  }

  void end_sending() override { ::shutdown(socket_.number(), SHUT_WR); }

  void close() override {
    std::string ignored;
    while (read_arrived(ignored) == Transfer::done && !ignored.empty()) {
    }
    socket_.close();
  }

  void drop() override { socket_.close(); }
  void reset() override { reset_socket(socket_); }

 private:
  // Leaves `piece` empty when nothing is there yet.
  Transfer read_arrived(std::string& piece) {
    std::array<char, 16384> buffer;
    const ssize_t size = ::recv(socket_.number(), buffer.data(), buffer.size(), 0);
    piece.assign(buffer.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
    return size > 0 || (size < 0 && errno == EAGAIN) ? Transfer::done : Transfer::ended;
  }

  Descriptor socket_;
  const WakeUp& stop_;
};

}  // namespace

Transfer wait_for_descriptor(int descriptor, short events, const WakeUp& stop) {
  std::array<pollfd, 2> entries{{{stop.number(), POLLIN, 0}, {descriptor, events, 0}}};
  while (::poll(entries.data(), entries.size(), -1) < 0 && errno == EINTR) {
  }
  return entries[0].revents != 0 ? Transfer::stopped : Transfer::done;
}

Transfer pause_for(std::chrono::milliseconds span, const WakeUp& stop) {
  pollfd entry{stop.number(), POLLIN, 0};
  return ::poll(&entry, 1, static_cast<int>(span.count())) > 0 ? Transfer::stopped : Transfer::done;
}

void reset_socket(Descriptor& socket) {
  const linger at_once{1, 0};
  ::setsockopt(socket.number(), SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
  socket.close();
}

std::unique_ptr<Channel> make_plain_channel(Descriptor socket, const WakeUp& stop) {
  return std::make_unique<PlainChannel>(std::move(socket), stop);
}
