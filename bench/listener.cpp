// Times the indication listener: indications a second with a connection for each, sent by a process
// of its own, beside the least that a server can do with them, one thread that accepts, reads,
// answers and closes.
// Usage: bench_listener [REGEX]
#include <netinet/in.h>
#include <sys/socket.h>

#include <atomic>
#include <string>
#include <thread>

#include "documents.h"
#include "indication_sender.h"
#include "race.h"
#include "results.h"
#include "sockets.h"
#include "zuCIM.h"

namespace {

using namespace bench;

constexpr int indications = 1000;

std::atomic<int> received = 0;

int count_indication(std::string&) {
  if (received.fetch_add(1) + 1 == indications) received.notify_one();
  return 0;
}

int port_of(zuCIM::CIMindication& listener) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  ::getsockname(std::atomic_ref<int>(listener.listenSocket).load(),
                reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

// Starts a listener on a port that the system picks; returns the port.
int start(zuCIM::CIMindication& listener) {
  listener.pCallBack = count_indication;
  listener.port = 0;
  listener.start_Listener();
  while (listener.check_Listener() != 0) std::this_thread::yield();
  return port_of(listener);
}

// Until all callbacks have been called.
void deliver(IndicationSender& sender, int port) {
  received = 0;
  sender.start(port);
  sender.wait();
  for (int seen = received; seen < indications; seen = received) received.wait(seen);
}

void serve_plainly(IndicationSender& sender, const Socket& socket, const std::string& answer) {
  sender.start(socket.port());
  for (int i = 0; i < indications; ++i) {
    const Socket peer = socket.accept();
    receive_message(peer);
    peer.send(answer);
  }
  sender.wait();
}

}  // namespace

int main(int argc, char* argv[]) {
  IndicationSender sender(indications, indication_request());
  prepare(argc, argv);
  const Socket plain = Socket::listening();
  const std::string answer = response(indication_answer());
  zuCIM::CIMindication listener;
  const int port = start(listener);
  add_result("listener", "document", "items", indications);
  race("listener",
       {{"zuCIM", [&] { deliver(sender, port); }},
        {"bare server", [&] { serve_plainly(sender, plain, answer); }}},
       Clock::wall);
  listener.stop_Listener();
}
