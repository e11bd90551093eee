#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "support/connection_log.h"
#include "support/http_answer.h"
#include "support/loopback.h"
#include "support/script.h"
#include "support/tls_channel.h"

// Where and how a scripted server listens.
struct ServerOptions {
  // An IPv4 loopback address.
  std::string address = "127.0.0.2";
  // 0 lets the system choose.
  std::uint16_t port = 0;
  // Speaks TLS when given.
  std::optional<TlsOptions> tls = {};
};

// Which script each connection plays.
struct Scripts {
  std::vector<script::Steps> in_order;
  // Whether connections after the last script play the last one again; else they are reset at once.
  bool repeat_last = false;
};

// A TCP server for tests that does exactly what its script says, and nothing that a real server
// would do beside it.
//
//   ScriptedServer server({script::ReadRequest{}, script::Send{http_answer("<CIM/>")}});
//   ... talk to server.address():server.port() ...
//   EXPECT_EQ(server.requests().size(), 1U);
//
// Thread rule: all members may be called from any thread. The destructor ends every connection at
// once, whatever it is doing, and waits for their threads.
class ScriptedServer {
 public:
  // Every connection plays the same script.
  explicit ScriptedServer(script::Steps steps, const ServerOptions& options = {});
  // The n-th connection plays the n-th script.
  explicit ScriptedServer(Scripts scripts, const ServerOptions& options = {});
  ~ScriptedServer();
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  // The address the server listens on.
  const std::string& address() const { return address_; }
  // The port the server listens on.
  std::uint16_t port() const { return port_; }
  // The same as text.
  std::string port_text() const { return std::to_string(port_); }

  // How many connections were accepted so far.
  std::size_t connection_count() const { return log_.records().size(); }
  // What the n-th connection did so far, from 0.
  ConnectionRecord connection(std::size_t n) const { return log_.records().at(n); }
  // All whole HTTP requests so far, in the order of their arrival.
  std::vector<std::string> requests() const { return log_.requests(); }

  // These wait until there were so many, and tell whether that happened in time.
  bool wait_for_connections(std::size_t n, std::chrono::milliseconds timeout = patience) const;
  bool wait_for_requests(std::size_t n, std::chrono::milliseconds timeout = patience) const;
  bool wait_for_ended_connections(std::size_t n,
                                  std::chrono::milliseconds timeout = patience) const;

  // How long a wait lasts by default: long enough for a slow machine under a sanitizer.
  static constexpr std::chrono::milliseconds patience{20000};

 private:
  // The thread that serves a connection, and whether it is done.
  struct Server {
    std::unique_ptr<std::atomic<bool>> is_done;
    std::thread thread;
  };

  void accept_connections();
  void join_servers_that_are_done();
  void serve(Descriptor socket, std::size_t connection);
  Ending play(Descriptor socket, std::size_t connection);
  const script::Steps* script_of(std::size_t connection) const;

  Scripts scripts_;
  std::string address_;
  std::unique_ptr<TlsContext> tls_;
  Descriptor listener_;
  std::uint16_t port_;
  WakeUp stop_;
  ConnectionLog log_;
  std::vector<Server> servers_;
  std::thread acceptor_;
};
