#include "CIMlistener/socket_faults.h"

#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <mutex>
#include <new>

namespace {

constexpr std::size_t calls = static_cast<std::size_t>(Call::thread) + 1;

// Lives as long as the process, whose threads may call until its very end.
struct State {
  std::mutex mutex;
  std::array<std::shared_ptr<const Fault>, calls> faults;
};

State& state() {
  static State* const only = new State;
  return *only;
}

// Without a SocketFaults the calls must cost nothing and may come before anything is initialised.
constinit std::atomic<bool> has_faults = false;

// The fault is called without the lock, so that it may wait, and copied without an allocation.
Outcome decide(Call call, const CallDetails& details) {
  if (!has_faults.load()) return Outcome::as_usual();
  std::shared_ptr<const Fault> fault;
  {
    const std::lock_guard<std::mutex> guard(state().mutex);
    fault = state().faults[static_cast<std::size_t>(call)];
  }
  return fault != nullptr ? (*fault)(details) : Outcome::as_usual();
}

bool is_decided(const Outcome& outcome) {
  return outcome.kind == Outcome::Kind::failure || outcome.kind == Outcome::Kind::result;
}

// What the call returns when it does nothing.
int decided_result(const Outcome& outcome) {
  if (outcome.kind == Outcome::Kind::result) return outcome.value;
  errno = outcome.value;
  return -1;
}

std::size_t allowed(const Outcome& outcome, std::size_t size) {
  return outcome.kind == Outcome::Kind::at_most ? std::min(outcome.size, size) : size;
}

std::atomic<int> threads = 0;

// What a new thread is to do.
struct Task {
  void* (*routine)(void*);
  void* argument;
};

void* run_counted(void* pointer) {
  const Task task = *std::unique_ptr<Task>(static_cast<Task*>(pointer));
  void* const result = task.routine(task.argument);
  threads.fetch_sub(1);
  return result;
}

// The function that would be called without this file.
template <class Function>
Function* real(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

int living_threads() {
  return threads.load();
}

SocketFaults::SocketFaults() {
  has_faults.store(true);
}

SocketFaults::~SocketFaults() {
  has_faults.store(false);
  const std::lock_guard<std::mutex> guard(state().mutex);
  state().faults = {};
}

SocketFaults& SocketFaults::on(Call call, Fault fault) {
  auto shared = std::make_shared<const Fault>(std::move(fault));
  const std::lock_guard<std::mutex> guard(state().mutex);
  state().faults[static_cast<std::size_t>(call)] = std::move(shared);
  return *this;
}

// The system's functions, defined in the program and so found before those of the C library and of
// the sanitizers.
#pragma GCC visibility push(default)
extern "C" {

ssize_t recv(int descriptor, void* buffer, std::size_t size, int flags) {
  static const auto next = real<decltype(recv)>("recv");
  const Outcome outcome = decide(Call::recv, {descriptor, size, flags});
  if (is_decided(outcome)) return decided_result(outcome);
  return next(descriptor, buffer, allowed(outcome, size), flags);
}

ssize_t send(int descriptor, const void* buffer, std::size_t size, int flags) {
  static const auto next = real<decltype(send)>("send");
  const Outcome outcome = decide(Call::send, {descriptor, size, flags});
  if (is_decided(outcome)) return decided_result(outcome);
  return next(descriptor, buffer, allowed(outcome, size), flags);
}

int poll(pollfd* entries, nfds_t count, int milliseconds) {
  static const auto next = real<decltype(poll)>("poll");
  const int descriptor = count != 0 ? entries->fd : -1;
  const Outcome outcome = decide(Call::poll, {descriptor, 0, milliseconds});
  if (is_decided(outcome)) return decided_result(outcome);
  return next(entries, count, outcome.kind == Outcome::Kind::patient ? -1 : milliseconds);
}

int accept4(int descriptor, sockaddr* address, socklen_t* size, int flags) {
  static const auto next = real<decltype(accept4)>("accept4");
  const Outcome outcome = decide(Call::accept, {descriptor, 0, flags});
  return is_decided(outcome) ? decided_result(outcome) : next(descriptor, address, size, flags);
}

int socket(int domain, int type, int protocol) noexcept {
  static const auto next = real<decltype(socket)>("socket");
  const Outcome outcome = decide(Call::socket, {});
  return is_decided(outcome) ? decided_result(outcome) : next(domain, type, protocol);
}

int listen(int descriptor, int backlog) noexcept {
  static const auto next = real<decltype(listen)>("listen");
  const Outcome outcome = decide(Call::listen, {descriptor, 0, backlog});
  return is_decided(outcome) ? decided_result(outcome) : next(descriptor, backlog);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*),
                   void* argument) noexcept {
  static const auto next = real<decltype(pthread_create)>("pthread_create");
  const Outcome outcome = decide(Call::thread, {});
  if (is_decided(outcome)) return outcome.value;
  std::unique_ptr<Task> task(new (std::nothrow) Task{routine, argument});
  if (task == nullptr) return EAGAIN;
  threads.fetch_add(1);
  const int error = next(thread, attributes, &run_counted, task.get());
  if (error == 0)
    static_cast<void>(task.release());  // The thread frees it.
  else
    threads.fetch_sub(1);
  return error;
}

}  // extern "C"
#pragma GCC visibility pop
