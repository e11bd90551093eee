#include "CIMlistener/conversation.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <string_view>

#include "CIMlistener/export_request.h"
#include "CIMlistener/export_response.h"
#include "CIMlistener/interruption.h"
#include "CIMlistener/listener_trace.h"
#include "zuCIM/indication.h"

namespace zuCIM {
namespace {

constexpr int line_of_recv = 154;
constexpr int line_of_missing_length = 166;
constexpr int line_of_too_large = 168;
constexpr int line_of_too_much = 172;
constexpr int line_of_closed = 179;
constexpr int line_of_send = 224;
constexpr std::size_t most_bytes_at_once = 8191;

unsigned milliseconds_of(int seconds) noexcept {
  return static_cast<unsigned>(std::clamp(seconds, 0, INT_MAX / 1000)) * 1000U;
}

// Returns what is left to send; null data after a failure.
std::string_view send_some(int socket, std::string_view text) noexcept {
  const ssize_t sent = ::send(socket, text.data(), text.size(), MSG_NOSIGNAL);
  if (sent > 0) return text.substr(static_cast<std::size_t>(sent));
  return sent < 0 && is_to_be_repeated() ? text : std::string_view();
}

}  // namespace

Conversation::Conversation(Descriptor socket, ListenerState* listener) noexcept
    : socket_(std::move(socket)),
      listener_(listener),
      limits_(listener != nullptr ? listener->limits() : ListenerLimits()),
      time_left_(milliseconds_of(limits_.requestSeconds)) {}

Conversation::~Conversation() {
  if (held_ != 0) listener_->drop(held_);
}

// A reader whose connection is another's finds it closed.
bool Conversation::receive() {
  if (!socket_.is_open()) {
    end_as_closed();
    return false;
  }
  if (!wait_for_data(std::min(limits_.firstDataSeconds, seconds_left()))) return false;
  Step step = receive_piece();
  while (step == Step::go_on) {
    const int seconds = std::min(limits_.stallSeconds, seconds_left());
    step = wait_for_data(seconds) ? receive_piece() : end_as_closed();
  }
  return step == Step::done && length_ != 0;
}

// The seconds until the request has taken too long, rounded up.
int Conversation::seconds_left() const noexcept {
  return static_cast<int>((time_left_.Remaining() + 999) / 1000);
}

bool Conversation::wait_for_data(int seconds) noexcept {
  return seconds > 0 && CIMindication::mySelect(socket_.number(), seconds) > 0;
}

Conversation::Step Conversation::receive_piece() {
  std::array<char, most_bytes_at_once> buffer;
  const ssize_t count = ::recv(socket_.number(), buffer.data(), buffer.size(), MSG_DONTWAIT);
  if (count < 0) return after_failure();
  if (count == 0) return end_as_closed();
  const std::string_view piece(buffer.data(), static_cast<std::size_t>(count));
  if (length_ == 0) return take_first_piece(piece);
  return keep(piece);
}

// Before the first byte the length is still 0, so that an interrupted receive ends the request.
Conversation::Step Conversation::after_failure() noexcept {
  if (is_to_be_repeated()) return progress();
  errno = 0;
  trace_listener(trace_level::error, line_of_recv, "readerThread: ERROR in 'recv'");
  return Step::ended;
}

Conversation::Step Conversation::take_first_piece(std::string_view piece) {
  length_ = announced_length(piece);
  if (length_ == 0) {
    trace_listener(trace_level::error, line_of_missing_length,
                   "readerThread: missing Content-Length");
    return Step::ended;
  }
  if (length_ > limits_.largestBody) {
    trace_listener(trace_level::error, line_of_too_large,
                   "readerThread: Content-Length is too large");
    return Step::ended;
  }
  return keep(start_of_body(piece));
}

Conversation::Step Conversation::keep(std::string_view piece) {
  if (!listener_->hold(piece.size())) {
    trace_listener(trace_level::error, line_of_too_much,
                   "readerThread: too much is being received at once");
    return Step::ended;
  }
  held_ += piece.size();
  body_.append(piece);
  return progress();
}

Conversation::Step Conversation::progress() const noexcept {
  return length_ > body_.size() ? Step::go_on : Step::done;
}

// Also for a sender that is silent for too long or takes too long.
Conversation::Step Conversation::end_as_closed() noexcept {
  socket_ = Descriptor();
  trace_listener(trace_level::detail, line_of_closed,
                 "readerThread: connection has been gracefully closed");
  return Step::ended;
}

void Conversation::answer() noexcept {
  const ExportResponse response(message_id(body_));
  std::string_view rest = response.text();
  while (!rest.empty()) rest = send_some(socket_.number(), rest);
  if (rest.data() == nullptr)
    trace_listener(trace_level::error, line_of_send, "readerThread: ERROR in 'send'");
}

}  // namespace zuCIM
