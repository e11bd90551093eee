#pragma once

#include <cstddef>

#include "BRQ/CriticalSection.h"
#include "BRQ/Waiter.h"
#include "CIMlistener/descriptor.h"
#include "zuCIM/indication.h"

namespace zuCIM {

// What a listener shares with its threads. It lives as long as the last of them, since the listener
// itself may be destroyed at any time. Its members lock it themselves.
struct ListenerState {
  explicit ListenerState(CIMindication* owner) noexcept : owner_(owner) {}
  ListenerState(const ListenerState&) = delete;
  ListenerState& operator=(const ListenerState&) = delete;

  // For the owner.

  // Counts a thread in, before it is started, and takes the owner's limits over.
  void begin() noexcept;
  // Counts a thread out that could not be started.
  void cancel() noexcept;
  // Parts from the owner and stops the thread.
  void abandon() noexcept;
  // Takes the owner's socket away and wakes the thread, which then ends. False when there is none.
  bool stop() noexcept;
  // Waits until the thread has ended, at most `milliseconds`.
  void wait_for_end(unsigned milliseconds) noexcept { ended_.Wait(milliseconds); }

  // For the threads. Without an owner there is no port, socket or callback.

  // The port to listen on; -1 for none.
  int port() noexcept;
  // Makes `socket` the owner's socket; a thread that listens on another one ends. False when the
  // owner is gone.
  bool publish(int socket) noexcept;
  // Whether `socket` is still the owner's.
  bool is_wanted(int socket) noexcept;
  // The callback of this moment; may be null.
  IndicationCallback callback() noexcept;
  // Closes the thread's socket. When no other thread is left, it tells the owner that it has ended.
  void end(Descriptor socket) noexcept;

  // The limits of the latest start.
  ListenerLimits limits() noexcept;
  // Counts a reader in; false when there are too many.
  bool admit_reader() noexcept;
  // Counts a reader out and wakes the listener's thread.
  void dismiss_reader() noexcept;
  // Counts bytes in that a reader is about to keep; false when that were too many.
  bool hold(std::size_t bytes) noexcept;
  // Counts them out.
  void drop(std::size_t bytes) noexcept;
  // Waits until a reader ends or the listener is stopped, at most `milliseconds`.
  void wait_for_change(unsigned milliseconds) noexcept { changed_.Wait(milliseconds); }

 private:
  void wake() noexcept;
  void tell_end() noexcept;

  BRQ::Threading::Native_OS::CCriticalSection lock_;
  BRQ::Threading::CEvent changed_;
  BRQ::Threading::CEvent ended_{true};
  CIMindication* owner_;
  // The socket that the thread listens on; -1 when there is none.
  int socket_ = -1;
  // More than one when the owner started the listener again before the first one listened.
  int threads_ = 0;
  // Whether one of them has ended while others were left.
  bool has_ended_ = false;
  ListenerLimits limits_;
  int readers_ = 0;
  std::size_t held_bytes_ = 0;
};

}  // namespace zuCIM
