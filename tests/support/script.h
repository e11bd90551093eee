#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "support/loopback.h"

// What a connection of the scripted server does, step by step. A script that has been played to its
// end closes the connection; so does a read that meets the peer's end, or a write that fails.
namespace script {

// Reads until `end` has arrived.
struct ReadUntil {
  std::string end;
};
// Reads one HTTP request: its head, and a body as long as its Content-Length says.
struct ReadRequest {};
// Sends bytes.
struct Send {
  std::string bytes;
};
// Sends bytes in pieces of `chunk` bytes with a pause after each.
struct SendSlowly {
  std::string bytes;
  std::size_t chunk;
  std::chrono::milliseconds pause;
};
// Sends the same bytes so many times, 0 for without end. They should be some kilobytes.
struct SendRepeatedly {
  std::string bytes;
  std::size_t times;
};
// Sends what the function makes of the last request that was read. It runs on a thread of the
// server and must not throw.
struct SendMadeFromRequest {
  std::function<std::string(const std::string& request)> make;
};
// Keeps the connection open and reads until the peer closes it.
struct WaitForPeerClose {};
// Lets time pass.
struct Pause {
  std::chrono::milliseconds span;
};
// Waits until the test sets the event, which must outlive the server.
struct WaitForEvent {
  const WakeUp* event;
};
// Ends the sending direction only; the peer sees the end of the stream.
struct EndSending {};
// Closes the connection in good order (with a close notification under TLS). What has arrived and
// was not read is thrown away, so that the peer sees an end and not a reset.
struct Close {};
// Closes the TCP connection without TLS's close notification.
struct Drop {};
// Resets the TCP connection: the peer's next call fails.
struct Reset {};
// Starts the script again on the same connection, as a server does that keeps connections.
struct Again {};

using Step =
    std::variant<ReadUntil, ReadRequest, Send, SendSlowly, SendRepeatedly, SendMadeFromRequest,
                 WaitForPeerClose, Pause, WaitForEvent, EndSending, Close, Drop, Reset, Again>;
using Steps = std::vector<Step>;

}  // namespace script
