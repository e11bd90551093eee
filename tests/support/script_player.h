#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "support/channel.h"
#include "support/connection_log.h"
#include "support/script.h"

// Plays a script on one connection and logs what arrives.
class ScriptPlayer {
 public:
  // The log and the stop must outlive the player.
  ScriptPlayer(std::unique_ptr<Channel> channel, ConnectionLog& log, std::size_t connection,
               const WakeUp& stop);
  // Plays the steps to the end and closes the connection.
  Ending play(const script::Steps& steps);

 private:
  struct PlayStep;

  Transfer read_more();
  Transfer read_until(const std::string& end, std::size_t& end_position);
  Transfer read_request();
  Transfer read_to_end();
  Transfer send_slowly(const script::SendSlowly& step);
  Transfer send_repeatedly(const script::SendRepeatedly& step);

  std::unique_ptr<Channel> channel_;
  ConnectionLog& log_;
  std::size_t connection_;
  const WakeUp& stop_;
  std::string unread_;
  std::string request_;
};
