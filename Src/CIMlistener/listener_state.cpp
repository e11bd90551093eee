#include "CIMlistener/listener_state.h"

#include <sys/socket.h>

#include <atomic>

namespace zuCIM {

using BRQ::Threading::CSyncGuard;

namespace {

using SocketField = std::atomic_ref<int>;
using CallbackField = std::atomic_ref<IndicationCallback>;

}  // namespace

// A socket that is shut down is readable, and its port is free. The thread that listens on it
// closes it: nobody else may, since the number could be another file's by then.
void ListenerState::wake() noexcept {
  if (socket_ != -1) ::shutdown(socket_, SHUT_RDWR);
  changed_.Set();
}

void ListenerState::tell_end() noexcept {
  if (owner_ != nullptr) CallbackField(owner_->pCallBack).store(nullptr);
  ended_.Set();
}

void ListenerState::begin() noexcept {
  const CSyncGuard guard(lock_);
  limits_ = owner_->limits;
  if (++threads_ == 1) has_ended_ = false;
  ended_.Reset();
}

void ListenerState::cancel() noexcept {
  const CSyncGuard guard(lock_);
  if (--threads_ == 0 && has_ended_) tell_end();
}

void ListenerState::abandon() noexcept {
  const CSyncGuard guard(lock_);
  owner_ = nullptr;
  wake();
}

bool ListenerState::stop() noexcept {
  const CSyncGuard guard(lock_);
  if (SocketField(owner_->listenSocket).exchange(-1) == -1) return false;
  wake();
  return true;
}

int ListenerState::port() noexcept {
  const CSyncGuard guard(lock_);
  return owner_ != nullptr ? owner_->port : -1;
}

bool ListenerState::publish(int socket) noexcept {
  const CSyncGuard guard(lock_);
  if (owner_ == nullptr) return false;
  wake();
  socket_ = socket;
  SocketField(owner_->listenSocket).store(socket);
  return true;
}

bool ListenerState::is_wanted(int socket) noexcept {
  const CSyncGuard guard(lock_);
  return owner_ != nullptr && SocketField(owner_->listenSocket).load() == socket;
}

IndicationCallback ListenerState::callback() noexcept {
  const CSyncGuard guard(lock_);
  return owner_ != nullptr ? CallbackField(owner_->pCallBack).load() : nullptr;
}

void ListenerState::end(Descriptor socket) noexcept {
  const CSyncGuard guard(lock_);
  if (socket.is_open() && socket_ == socket.number()) {
    socket_ = -1;
    if (owner_ != nullptr) SocketField(owner_->listenSocket).store(-1);
  }
  socket = Descriptor();
  std::atomic_ref<int>(ListenerThreadIsActive).store(0);
  has_ended_ = true;
  if (--threads_ == 0) tell_end();
}

ListenerLimits ListenerState::limits() noexcept {
  const CSyncGuard guard(lock_);
  return limits_;
}

bool ListenerState::admit_reader() noexcept {
  const CSyncGuard guard(lock_);
  if (readers_ >= limits_.mostReaders) return false;
  ++readers_;
  return true;
}

// Readers of an earlier start may hold more than a later one allows.
bool ListenerState::hold(std::size_t bytes) noexcept {
  const CSyncGuard guard(lock_);
  if (held_bytes_ > limits_.mostBytes || bytes > limits_.mostBytes - held_bytes_) return false;
  held_bytes_ += bytes;
  return true;
}

void ListenerState::drop(std::size_t bytes) noexcept {
  const CSyncGuard guard(lock_);
  held_bytes_ -= bytes;
}

void ListenerState::dismiss_reader() noexcept {
  const CSyncGuard guard(lock_);
  --readers_;
  changed_.Set();
}

}  // namespace zuCIM
