#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "endpoint.h"
#include "options.h"

namespace httplib {
class Server;
}

namespace simulator {

// Brings the endpoint onto the network, by HTTP or HTTPS.
class Server {
 public:
  // Throws std::runtime_error when the certificates are of no use.
  Server(const Endpoint& endpoint, const Options& options);
  ~Server();

  // Binds and starts to listen; from here on clients can connect. Returns the port.
  // Throws std::runtime_error when the address or port cannot be had.
  int bind();

  // Serves until stop() is called. False if it ended for another reason.
  bool serve();

  // Ends serve(), from another thread; waits until it has begun if need be.
  void stop();

 private:
  void configure();

  const Endpoint& endpoint_;
  const Options& options_;
  std::unique_ptr<httplib::Server> http_;
  int listening_socket_ = -1;
  std::atomic<bool> ended_ = false;
};

}  // namespace simulator
