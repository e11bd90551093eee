#include "support/script_player.h"

#include <poll.h>
#include <strings.h>

#include <cstdlib>
#include <string_view>

namespace {

// The length that the head of a request announces for its body; 0 when it names none.
std::size_t content_length(const std::string& head) {
  constexpr std::string_view name = "\r\nContent-Length:";
  for (std::size_t at = head.find("\r\n"); at != std::string::npos; at = head.find("\r\n", at + 2))
    if (::strncasecmp(head.c_str() + at, name.data(), name.size()) == 0)
      return std::strtoul(head.c_str() + at + name.size(), nullptr, 10);
  return 0;
}

Ending ending_of(Transfer transfer) {
  switch (transfer) {
    case Transfer::ended:
      return Ending::closed_by_peer;
    case Transfer::stopped:
      return Ending::server_stopped;
    default:
      return Ending::played;
  }
}

bool is_again(const script::Step& step) {
  return std::holds_alternative<script::Again>(step);
}

}  // namespace

// Plays one step, chosen by its type.
struct ScriptPlayer::PlayStep {
  ScriptPlayer& player;

  Transfer operator()(const script::ReadUntil& step) const {
    std::size_t end = 0;
    const Transfer result = player.read_until(step.end, end);
    if (result == Transfer::done) player.unread_.erase(0, end);
    return result;
  }
  Transfer operator()(const script::ReadRequest&) const { return player.read_request(); }
  Transfer operator()(const script::Send& step) const { return player.channel_->write(step.bytes); }
  Transfer operator()(const script::SendSlowly& step) const { return player.send_slowly(step); }
  Transfer operator()(const script::SendRepeatedly& step) const {
    return player.send_repeatedly(step);
  }
  Transfer operator()(const script::SendMadeFromRequest& step) const {
    return player.channel_->write(step.make(player.request_));
  }
  Transfer operator()(const script::WaitForPeerClose&) const { return player.read_to_end(); }
  Transfer operator()(const script::Pause& step) const {
    return pause_for(step.span, player.stop_);
  }
  Transfer operator()(const script::WaitForEvent& step) const {
    return wait_for_descriptor(step.event->number(), POLLIN, player.stop_);
  }
  Transfer operator()(const script::EndSending&) const {
    player.channel_->end_sending();
    return Transfer::done;
  }
  Transfer operator()(const script::Close&) const {
    player.channel_->close();
    player.channel_.reset();
    return Transfer::done;
  }
  Transfer operator()(const script::Drop&) const {
    player.channel_->drop();
    player.channel_.reset();
    return Transfer::done;
  }
  Transfer operator()(const script::Reset&) const {
    player.channel_->reset();
    player.channel_.reset();
    return Transfer::done;
  }
  Transfer operator()(const script::Again&) const { return Transfer::done; }
};

ScriptPlayer::ScriptPlayer(std::unique_ptr<Channel> channel, ConnectionLog& log,
                           std::size_t connection, const WakeUp& stop)
    : channel_(std::move(channel)), log_(log), connection_(connection), stop_(stop) {}

Ending ScriptPlayer::play(const script::Steps& steps) {
  Transfer result = Transfer::done;
  for (std::size_t at = 0; channel_ != nullptr && at < steps.size(); ++at) {
    if (is_again(steps[at])) at = 0;
    result = stop_.is_set() ? Transfer::stopped : std::visit(PlayStep{*this}, steps[at]);
    if (result != Transfer::done) break;
  }
  if (channel_ != nullptr) channel_->close();
  return ending_of(result);
}

Transfer ScriptPlayer::read_more() {
  std::string piece;
  const Transfer result = channel_->read(piece);
  if (result != Transfer::done) return result;
  log_.add_bytes(connection_, piece);
  unread_ += piece;
  return Transfer::done;
}

// `end_position` is the position behind `end` in what was not read yet.
Transfer ScriptPlayer::read_until(const std::string& end, std::size_t& end_position) {
  std::size_t searched = 0;
  for (;;) {
    const std::size_t found = unread_.find(end, searched);
    if (found != std::string::npos) {
      end_position = found + end.size();
      return Transfer::done;
    }
    searched = unread_.size() < end.size() ? 0 : unread_.size() - end.size() + 1;
    const Transfer result = read_more();
    if (result != Transfer::done) return result;
  }
}

Transfer ScriptPlayer::read_request() {
  std::size_t head_size = 0;
  Transfer result = read_until("\r\n\r\n", head_size);
  if (result != Transfer::done) return result;
  const std::size_t size = head_size + content_length(unread_.substr(0, head_size));
  while (unread_.size() < size)
    if ((result = read_more()) != Transfer::done) return result;
  request_ = unread_.substr(0, size);
  unread_.erase(0, size);
  log_.add_request(connection_, request_);
  return Transfer::done;
}

Transfer ScriptPlayer::read_to_end() {
  Transfer result = Transfer::done;
  while ((result = read_more()) == Transfer::done) {
  }
  return result == Transfer::ended ? Transfer::done : result;
}

Transfer ScriptPlayer::send_slowly(const script::SendSlowly& step) {
  const std::string_view bytes = step.bytes;
  for (std::size_t at = 0; at < bytes.size(); at += step.chunk) {
    Transfer result = channel_->write(bytes.substr(at, step.chunk));
    if (result == Transfer::done) result = pause_for(step.pause, stop_);
    if (result != Transfer::done) return result;
  }
  return Transfer::done;
}

Transfer ScriptPlayer::send_repeatedly(const script::SendRepeatedly& step) {
  Transfer result = Transfer::done;
  for (std::size_t sent = 0; step.times == 0 || sent < step.times; ++sent)
    if ((result = channel_->write(step.bytes)) != Transfer::done) break;
  return result;
}
