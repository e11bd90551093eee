#include "support/scripted_server.h"

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>

#include <algorithm>
#include <utility>

#include "support/channel.h"
#include "support/script_player.h"

namespace {

// TLS writes may raise SIGPIPE, which goes to the writing thread.
void block_broken_pipe_signal() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

bool has_ended(const ConnectionRecord& record) {
  return record.ending != Ending::running;
}

std::size_t count_requests(const std::vector<ConnectionRecord>& records) {
  std::size_t count = 0;
  for (const ConnectionRecord& record : records) count += record.requests.size();
  return count;
}

}  // namespace

ScriptedServer::ScriptedServer(script::Steps steps, const ServerOptions& options)
    : ScriptedServer(Scripts{{std::move(steps)}, true}, options) {}

ScriptedServer::ScriptedServer(Scripts scripts, const ServerOptions& options)
    : scripts_(std::move(scripts)),
      address_(options.address),
      tls_(options.tls ? std::make_unique<TlsContext>(*options.tls) : nullptr),
      listener_(listen_on(options.address, options.port)),
      port_(local_port(listener_)),
      acceptor_([this] { accept_connections(); }) {}

ScriptedServer::~ScriptedServer() {
  stop_.set();
  acceptor_.join();
  for (Server& server : servers_) server.thread.join();
}

void ScriptedServer::accept_connections() {
  while (wait_for_descriptor(listener_.number(), POLLIN, stop_) == Transfer::done) {
    Descriptor socket(
        ::accept4(listener_.number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (socket.number() < 0) continue;
    const std::size_t connection = log_.begin();
    join_servers_that_are_done();
    auto is_done = std::make_unique<std::atomic<bool>>(false);
    std::thread thread(
        [this, connection, done = is_done.get()](Descriptor own) {
          serve(std::move(own), connection);
          done->store(true);
        },
        std::move(socket));
    servers_.push_back({std::move(is_done), std::move(thread)});
  }
}

// A thread that nobody has joined keeps its stack, and there is not room for many in 32 bits.
void ScriptedServer::join_servers_that_are_done() {
  std::erase_if(servers_, [](Server& server) {
    const bool is_done = server.is_done->load();
    if (is_done) server.thread.join();
    return is_done;
  });
}

void ScriptedServer::serve(Descriptor socket, std::size_t connection) {
  block_broken_pipe_signal();
  log_.end(connection, play(std::move(socket), connection));
}

Ending ScriptedServer::play(Descriptor socket, std::size_t connection) {
  const script::Steps* const steps = script_of(connection);
  if (steps == nullptr) {
    reset_socket(socket);
    return Ending::refused;
  }
  std::unique_ptr<Channel> channel = tls_ != nullptr ? tls_->accept(std::move(socket), stop_)
                                                     : make_plain_channel(std::move(socket), stop_);
  if (channel == nullptr) return stop_.is_set() ? Ending::server_stopped : Ending::refused;
  return ScriptPlayer(std::move(channel), log_, connection, stop_).play(*steps);
}

const script::Steps* ScriptedServer::script_of(std::size_t connection) const {
  if (connection < scripts_.in_order.size()) return &scripts_.in_order[connection];
  const bool repeat = scripts_.repeat_last && !scripts_.in_order.empty();
  return repeat ? &scripts_.in_order.back() : nullptr;
}

bool ScriptedServer::wait_for_connections(std::size_t n, std::chrono::milliseconds timeout) const {
  return log_.wait([n](const auto& records) { return records.size() >= n; }, timeout);
}

bool ScriptedServer::wait_for_requests(std::size_t n, std::chrono::milliseconds timeout) const {
  return log_.wait([n](const auto& records) { return count_requests(records) >= n; }, timeout);
}

bool ScriptedServer::wait_for_ended_connections(std::size_t n,
                                                std::chrono::milliseconds timeout) const {
  return log_.wait(
      [n](const auto& records) {
        return static_cast<std::size_t>(std::ranges::count_if(records, has_ended)) >= n;
      },
      timeout);
}
