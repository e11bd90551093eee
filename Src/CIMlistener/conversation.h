#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "BRQ/Waiter.h"
#include "CIMlistener/descriptor.h"
#include "CIMlistener/listener_state.h"

namespace zuCIM {

// One request of a sender and its answer. Every failure ends it: the connection is closed and there
// is nothing to hand on.
class Conversation {
 public:
  // `listener` counts what is kept and outlives the conversation; null without a socket.
  Conversation(Descriptor socket, ListenerState* listener) noexcept;
  ~Conversation();
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;

  // Reads the request. True when its body is there. Throws std::bad_alloc.
  bool receive();
  // Sends the answer that confirms the request. A failure is traced.
  void answer() noexcept;
  // The text of the request, from "<?xml" to the last byte that came.
  std::string& body() noexcept { return body_; }

 private:
  enum class Step { go_on, done, ended };

  int seconds_left() const noexcept;
  bool wait_for_data(int seconds) noexcept;
  Step receive_piece();
  Step after_failure() noexcept;
  Step take_first_piece(std::string_view piece);
  Step keep(std::string_view piece);
  Step progress() const noexcept;
  Step end_as_closed() noexcept;

  Descriptor socket_;
  ListenerState* listener_;
  std::string body_;
  std::size_t held_ = 0;
  std::size_t length_ = 0;
  const ListenerLimits limits_;
  BRQ::Threading::CWaitInterval time_left_;
};

}  // namespace zuCIM
