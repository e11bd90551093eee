#include "check_reader.h"

#include <sys/socket.h>

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CIMlistener/export_request.h"
#include "CIMlistener/export_response.h"
#include "CIMlistener/reader.h"
#include "failure.h"

namespace {

using namespace zuCIM;

// More pieces than the buffer of a socket holds would keep the sender waiting.
constexpr std::size_t most_pieces = 40;

std::optional<std::string> received;

int take(std::string& text) {
  require(!received.has_value(), "one request is handed over once");
  received = text;
  return 0;
}

std::vector<std::string> pieces_of(ByteSource& input) {
  std::vector<std::string> pieces;
  while (!input.is_empty() && pieces.size() < most_pieces) {
    const std::size_t size = input.byte() * std::size_t{4};
    const std::string_view piece = input.bytes(size);
    // An empty piece would be taken for the end.
    if (!piece.empty()) pieces.emplace_back(piece);
  }
  return pieces;
}

// What the callback is to get: the body, as soon as it is as long as announced.
std::optional<std::string> expected_body(const std::vector<std::string>& pieces) {
  if (pieces.empty()) return std::nullopt;
  const std::size_t length = announced_length(pieces.front());
  if (length == 0 || length > listener_limit::largest_body) return std::nullopt;
  std::string body(start_of_body(pieces.front()));
  for (std::size_t i = 1; i < pieces.size() && body.size() < length; ++i) body += pieces[i];
  if (body.size() < length) return std::nullopt;
  return body;
}

// Pieces stay apart on such a pair of sockets.
std::array<Descriptor, 2> connected_pair() {
  std::array<int, 2> ends{};
  require(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) == 0, "a pair");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

void send_pieces(const Descriptor& sender, const std::vector<std::string>& pieces) {
  for (const std::string& piece : pieces)
    require(::send(sender.number(), piece.data(), piece.size(), MSG_DONTWAIT) >= 0, "a piece");
  ::shutdown(sender.number(), SHUT_WR);
}

void run_reader(Descriptor socket) {
  CIMindication listener;
  listener.pCallBack = &take;
  const auto state = std::make_shared<ListenerState>(&listener);
  require(state->admit_reader(), "the first reader is admitted");
  CIMindication::readerThread(new ConnectionRecord{std::move(socket), ReaderPlace(state)});
}

// When the reader left pieces unread, the first call tells of that.
std::string answer_at(const Descriptor& sender) {
  std::array<char, 4096> buffer;
  ssize_t count = ::recv(sender.number(), buffer.data(), buffer.size(), MSG_DONTWAIT);
  if (count < 0) count = ::recv(sender.number(), buffer.data(), buffer.size(), MSG_DONTWAIT);
  return {buffer.data(), static_cast<std::size_t>(count > 0 ? count : 0)};
}

}  // namespace

void check_reader(ByteSource input) {
  const std::vector<std::string> pieces = pieces_of(input);
  auto [sender, socket] = connected_pair();
  send_pieces(sender, pieces);
  received.reset();
  run_reader(std::move(socket));
  const std::optional<std::string> body = expected_body(pieces);
  require(received == body, "the body is handed over");
  require(std::atomic_ref<int>(ListenerThreadIsActive).load() == 0, "no reader is left");
  const std::string answer = answer_at(sender);
  require(answer == (body ? ExportResponse(message_id(*body)).text() : ""), "the answer");
}
