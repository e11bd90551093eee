#pragma once

#include <sys/socket.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <string>

#include "CIMlistener/export_samples.h"
#include "CIMlistener/reader.h"
#include "CIMlistener/received.h"
#include "support/loopback.h"

// One connection whose reader runs on the test's own thread, so that a test decides which bytes
// come in which piece and sees everything in order.
class ReaderRun {
 public:
  ReaderRun() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
      throw std::runtime_error("no pair of sockets");
    sender = Descriptor(ends[0]);
    record = std::make_unique<zuCIM::ConnectionRecord>(
        zuCIM::ConnectionRecord{zuCIM::Descriptor(ends[1]), zuCIM::ReaderPlace(state)});
    listener.pCallBack = &Received::take;
    state->admit_reader();
  }

  // Has the listener's limits count from now on, as a start does.
  ReaderRun& use(const zuCIM::ListenerLimits& limits) {
    listener.limits = limits;
    state->begin();
    return *this;
  }
  // Has the sender send; a reader never reads that fast that it is kept waiting.
  ReaderRun& send(const std::string& bytes) {
    send_all(sender, bytes);
    return *this;
  }
  // Runs the reader to its end.
  void run() { zuCIM::CIMindication::readerThread(record.release()); }
  // Runs the reader to its end; what the sender got by then.
  std::string answer() {
    run();
    return rest();
  }
  // What the sender gets until its connection ends. Bytes that the reader left unread make
  // the connection end by a reset, which counts as its end here.
  std::string rest() const {
    std::string bytes(4096, ' ');
    std::size_t size = 0;
    for (ssize_t count = 1; count > 0; size += static_cast<std::size_t>(count > 0 ? count : 0))
      count = ::recv(sender.number(), bytes.data() + size, bytes.size() - size, 0);
    bytes.resize(size);
    return bytes;
  }

  zuCIM::CIMindication listener;
  std::shared_ptr<zuCIM::ListenerState> state = std::make_shared<zuCIM::ListenerState>(&listener);
  Descriptor sender;
  std::unique_ptr<zuCIM::ConnectionRecord> record;
};
