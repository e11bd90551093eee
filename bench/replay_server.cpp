#include "replay_server.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#include <stdexcept>
#include <thread>

#include "sockets.h"

namespace bench {
namespace {

const std::string& answer_to(const std::string& request, const std::vector<Replay>& replays) {
  for (const Replay& replay : replays)
    if (request.find(replay.mark) != std::string::npos) return replay.body;
  return replays.back().body;
}

void serve(const Socket& peer, const std::vector<Replay>& replays) {
  for (;;) {
    const std::string request = receive_message(peer);
    if (request.empty() || !peer.send(answer_to(request, replays))) return;
  }
}

// The routine of the server's process. It ends by a signal.
[[noreturn]] void serve_all(const Socket& socket, const std::vector<Replay>& replays) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  std::vector<Replay> whole;
  for (const Replay& replay : replays) whole.push_back({replay.mark, response(replay.body)});
  for (;;) std::thread([peer = socket.accept(), &whole] { serve(peer, whole); }).detach();
}

}  // namespace

ReplayServer::ReplayServer(const std::vector<Replay>& replays) {
  const Socket socket = Socket::listening();
  port_ = std::to_string(socket.port());
  process_ = ::fork();
  if (process_ < 0) throw std::runtime_error("no process for the server");
  if (process_ == 0) serve_all(socket, replays);
}

ReplayServer::~ReplayServer() {
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

}  // namespace bench
