#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "zuCIM/export.h"

namespace zuCIM {

// Non-zero while indications are being received; requests then get a longer time-out. It is below
// zero when readers outlived their listener. Read and change it with std::atomic_ref.
extern ZUCIM_API int ListenerThreadIsActive;

// What a listener bears from the machines that send to it, unless its ListenerLimits say otherwise.
namespace listener_limit {
// A request that announces more bytes than this ends its connection.
inline constexpr std::size_t largest_body = 16 * 1024 * 1024;
// Bytes of all requests that the readers of one listener hold at once, from their first byte until
// the callback returns. What exceeds that ends its connection, so that many senders together cannot
// take more memory than a few could.
inline constexpr std::size_t most_bytes = 256 * 1024 * 1024;
// Readers of one listener that are alive at once. With as many, the listener accepts no further
// connection until one of them ends; senders wait in the backlog.
inline constexpr int most_readers = 256;
// Seconds that a connection may stay silent before its first byte.
inline constexpr int first_data_seconds = 5;
// Seconds that a sender may stay silent within its request.
inline constexpr int stall_seconds = 30;
// Seconds that one request may take from the first wait to its last byte.
inline constexpr int request_seconds = 120;
}  // namespace listener_limit

// What one listener bears, each as in listener_limit unless changed. Seconds and readers below 1
// count as 0: no wait, and no connection that is accepted.
struct ListenerLimits {
  // Bytes that a request may announce.
  std::size_t largestBody = listener_limit::largest_body;
  // Bytes of all requests that its readers hold at once.
  std::size_t mostBytes = listener_limit::most_bytes;
  // Readers that are alive at once.
  int mostReaders = listener_limit::most_readers;
  // Seconds of silence before the first byte of a connection.
  int firstDataSeconds = listener_limit::first_data_seconds;
  // Seconds of silence within a request.
  int stallSeconds = listener_limit::stall_seconds;
  // Seconds from the first wait of a request to its last byte.
  int requestSeconds = listener_limit::request_seconds;
};

// Receives one indication: the text of the export request from "<?xml" on, which the receiver may
// change or take. The result is ignored; an exception is traced and goes no further. Called on
// threads of the listener, several at once, so what it shares needs a guard. It may call anything;
// operations on a context, unsubscribe on that of the listener among them, one at a time as ever. A
// call that has begun may go on after the listener was stopped.
using IndicationCallback = int (*)(std::string&);

struct ListenerState;

// A small HTTP server that receives the export requests of CIM servers on one port, answers each
// and hands its text to a callback. It runs one thread that accepts connections and one for each
// connection, none of which is ever joined.
//
// Set `pCallBack` and `port`, then start it. The object may be destroyed at any time, which stops
// it: threads that are still running skip their callback then.
//
// Thread rule: one thread at a time starts, stops or destroys it. Its threads change `pCallBack`
// and `listenSocket`; read these with std::atomic_ref while the listener may run.
class ZUCIM_API CIMindication {
 public:
  // Receives the indications; null when unset. The listener's thread sets it to null when it ends.
  IndicationCallback pCallBack;
  // TCP port to listen on, at any local IPv4 address; -1 when constructed.
  int port;
  // The listening socket, owned by the listener's thread; -1 when not listening. Setting it to -1
  // asks that thread to end, which it does within ten seconds.
  int listenSocket;
  // What pthread_create said about the listener's thread, 0 for success.
  int startResult;
  // What the listener bears. Its threads work with a copy that each start makes, so a change while
  // they run counts from the next start on.
  ListenerLimits limits;

  // Makes a listener without callback and port that does not listen. What it could not get memory
  // for, start_Listener asks for again.
  CIMindication() noexcept;
  // Stops the listener without waiting for its thread.
  ~CIMindication();
  CIMindication(const CIMindication&) = delete;
  CIMindication& operator=(const CIMindication&) = delete;

  // Starts the listener's thread, which then opens the port; a port that is in use ends it. Returns
  // 0 when the thread was started, 1001 when it is listening already, has no callback, or no thread
  // can be started; it may be called again then.
  int start_Listener() noexcept;
  // Stops the listener and waits for its thread, at most 30 seconds; readers may go on. Does
  // nothing when the listener does not listen.
  void stop_Listener() noexcept;
  // 0 while the port is open, 1 while it is not.
  int check_Listener() noexcept;

  // The routine of the listener's thread; `listener` is a CIMindication. Returns null, at once when
  // `listener` is null.
  static void* listenerThread(void* listener) noexcept;
  // The routine of a reader; `record` is a connection record of the listener, which the reader
  // releases. Returns null, at once when `record` is null.
  static void* readerThread(void* record) noexcept;
  // Waits until `descriptor` can be read, at most `seconds`. Returns 1 when it can, 0 on time-out,
  // and -1 on an error, which is traced. With the descriptor -1 it waits the whole time.
  static int mySelect(int descriptor, int seconds) noexcept;

 private:
  std::shared_ptr<ListenerState> state_;
};

}  // namespace zuCIM
