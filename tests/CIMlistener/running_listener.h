#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "CIMlistener/export_samples.h"
#include "CIMlistener/received.h"
#include "CIMlistener/thread_watch.h"
#include "support/loopback.h"
#include "zuCIM/indication.h"

// The port that a listener listens on; 0 when it does not.
inline std::uint16_t port_of(zuCIM::CIMindication& listener) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  const int socket = std::atomic_ref<int>(listener.listenSocket).load();
  if (::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) return 0;
  return ntohs(address.sin_port);
}

// A listener with the callback of the tests on a port that the system chooses. Stops at its end and
// waits for its threads.
class RunningListener {
 public:
  explicit RunningListener(const zuCIM::ListenerLimits& limits = {}) {
    listener->pCallBack = &Received::take;
    listener->limits = limits;
    listener->port = 0;
    if (listener->start_Listener() != 0 || !comes_true([this] { return is_listening(); }))
      throw std::runtime_error("the listener does not start");
    port = port_of(*listener);
  }
  ~RunningListener() {
    if (listener != nullptr) listener->stop_Listener();
  }
  RunningListener(const RunningListener&) = delete;
  RunningListener& operator=(const RunningListener&) = delete;

  bool is_listening() const { return listener->check_Listener() == 0; }
  bool has_callback() const {
    return std::atomic_ref<zuCIM::IndicationCallback>(listener->pCallBack).load() != nullptr;
  }

  // A connection to the listener.
  Descriptor connect() const { return connect_to("127.0.0.1", port); }
  // A connection to the listener over which these bytes were sent.
  Descriptor connect_and_send(const std::string& bytes) const {
    Descriptor socket = connect();
    send_all(socket, bytes);
    return socket;
  }
  // Sends a request over a connection of its own and returns the answer.
  std::string ask(const std::string& request) const {
    return receive_all(connect_and_send(request));
  }

 private:
  const ThreadWatch threads_;

 public:
  std::unique_ptr<zuCIM::CIMindication> listener = std::make_unique<zuCIM::CIMindication>();
  std::uint16_t port = 0;
};
