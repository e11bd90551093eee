#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include "support/loopback.h"

// How reading or writing on a channel went.
enum class Transfer { done, ended, stopped };

// One accepted connection, plain or TLS. Every call waits for the peer or for the server's stop,
// whichever comes first; `stopped` tells the latter.
class Channel {
 public:
  virtual ~Channel() = default;
  // Reads what has arrived, at least one byte, into `piece`.
  virtual Transfer read(std::string& piece) = 0;
  // Writes all bytes.
  virtual Transfer write(std::string_view bytes) = 0;
  // Ends the sending direction.
  virtual void end_sending() = 0;
  // Closes the connection in good order.
  virtual void close() = 0;
  // Closes the TCP connection and nothing else.
  virtual void drop() = 0;
  // Resets the TCP connection.
  virtual void reset() = 0;
};

// Waits until `descriptor` is ready for `events` (as poll names them).
Transfer wait_for_descriptor(int descriptor, short events, const WakeUp& stop);

// Waits until the time is over (done) or the server stops.
Transfer pause_for(std::chrono::milliseconds span, const WakeUp& stop);

// Resets a TCP connection instead of closing it in good order.
void reset_socket(Descriptor& socket);

// A channel without TLS. `stop` must outlive it.
std::unique_ptr<Channel> make_plain_channel(Descriptor socket, const WakeUp& stop);
