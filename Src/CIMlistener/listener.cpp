#include "CIMlistener/listener.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <pthread.h>
#include <sys/socket.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <utility>

#include "CIMlistener/listener_trace.h"
#include "CIMlistener/reader.h"
#include "zuCIM/indication.h"

// The thread that listens and starts a reader for each connection.
namespace zuCIM {
namespace {

constexpr int line_of_socket = 265;
constexpr int line_of_bind = 279;
constexpr int line_of_listen = 284;
constexpr int line_of_accept = 307;
constexpr int line_of_no_reader = 318;
constexpr int line_of_reader = 322;
constexpr int line_of_end = 330;
constexpr int backlog = 128;
constexpr int wait_seconds = 10;
// After a failed accept the listener gives the machine time to recover, unless a reader ends.
constexpr unsigned pause_milliseconds = 100;

using SharedState = std::shared_ptr<ListenerState>;

Descriptor fail(int line, const char* text) noexcept {
  trace_listener(trace_level::error, line, text);
  return Descriptor();
}

// Neither option is essential.
void set_options(int socket) noexcept {
  const int on = 1;
  ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
}

bool bind_to(int socket, int port) noexcept {
  if (port < 0 || port > UINT16_MAX) return false;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  return ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

Descriptor open_port(int port) noexcept {
  Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, IPPROTO_TCP));
  if (!socket.is_open()) return fail(line_of_socket, "listenerThread: socket");
  set_options(socket.number());
  if (!bind_to(socket.number(), port)) return fail(line_of_bind, "listenerThread: bind");
  if (::listen(socket.number(), backlog) != 0)
    return fail(line_of_listen, "listenerThread: listen");
  return socket;
}

// Starts a thread that nobody joins.
int start_thread(void* (*routine)(void*), void* argument) noexcept {
  pthread_attr_t attributes;
  if (const int error = pthread_attr_init(&attributes)) return error;
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  pthread_t thread;
  const int result = pthread_create(&thread, &attributes, routine, argument);
  pthread_attr_destroy(&attributes);
  return result;
}

// Two readers run for each connection: the new thread has the conversation, so that a sender that
// is slow or silent never keeps this thread from the next connection; the one on this thread finds
// nothing to do. Throws std::bad_alloc.
void start_reader(Descriptor socket, ReaderPlace place) {
  auto own = std::make_unique<ConnectionRecord>();
  auto record =
      std::make_unique<ConnectionRecord>(ConnectionRecord{std::move(socket), std::move(place)});
  if (start_thread(&CIMindication::readerThread, record.get()) != 0) {
    trace_listener(trace_level::error, line_of_no_reader,
                   "listenerThread: Cannot start eventreader-thread");
    return;
  }
  static_cast<void>(record.release());  // The thread frees it.
  trace_listener(trace_level::detail, line_of_reader, "listenerThread: start eventreader-thread");
  CIMindication::readerThread(own.release());
}

// False when the listener is to end.
bool wait_for_connection(ListenerState& state, int socket) noexcept {
  int ready = 0;
  while (ready == 0 && state.is_wanted(socket))
    ready = CIMindication::mySelect(socket, wait_seconds);
  return ready > 0 && state.is_wanted(socket);
}

// Throws std::bad_alloc.
void accept_connection(const SharedState& state, int listening_socket, ReaderPlace place) {
  Descriptor socket(::accept4(listening_socket, nullptr, nullptr, SOCK_CLOEXEC));
  if (!state->is_wanted(listening_socket)) return;
  if (socket.is_open()) return start_reader(std::move(socket), std::move(place));
  trace_listener(trace_level::error, line_of_accept, "listenerThread: ERROR in 'accept'");
  state->wait_for_change(pause_milliseconds);
}

void serve_one(const SharedState& state, int socket, ReaderPlace place) noexcept {
  try {
    accept_connection(state, socket, std::move(place));
  } catch (const std::exception& error) {
    trace_listener_exception("listenerThread", error.what());
  }
}

// A connection is accepted only when its reader has a place; until then the backlog keeps it.
void serve(const SharedState& state, int socket) noexcept {
  while (state->is_wanted(socket)) {
    if (!state->admit_reader()) {
      state->wait_for_change(wait_seconds * 1000);
      continue;
    }
    ReaderPlace place(state);
    if (!wait_for_connection(*state, socket)) return;
    serve_one(state, socket, std::move(place));
  }
}

void listen(const SharedState& state) noexcept {
  Descriptor socket = open_port(state->port());
  if (socket.is_open() && state->publish(socket.number())) serve(state, socket.number());
  trace_listener(trace_level::warning, line_of_end, "listenerThread: Listener: Beendet!");
  state->end(std::move(socket));
}

void* run_listener(void* holder) noexcept {
  const std::unique_ptr<SharedState> state(static_cast<SharedState*>(holder));
  listen(*state);
  return nullptr;
}

}  // namespace

int start_thread_of(const SharedState& state) {
  auto holder = std::make_unique<SharedState>(state);
  state->begin();
  const int result = start_thread(&run_listener, holder.get());
  if (result == 0)
    static_cast<void>(holder.release());  // The thread frees it.
  else
    state->cancel();
  return result;
}

void* CIMindication::listenerThread(void* listener) noexcept {
  if (listener == nullptr) return nullptr;
  auto* const owner = static_cast<CIMindication*>(listener);
  const SharedState state = owner->state_;
  if (state == nullptr) {
    // Memory was short when the listener was made. This tells it that the thread has ended.
    std::atomic_ref<IndicationCallback>(owner->pCallBack).store(nullptr);
    return nullptr;
  }
  state->begin();
  listen(state);
  return nullptr;
}

}  // namespace zuCIM
