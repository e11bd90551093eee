#pragma once

#include <memory>
#include <utility>

#include "CIMlistener/descriptor.h"
#include "CIMlistener/listener_state.h"

namespace zuCIM {

// A place among the readers of a listener, which has admitted it; given back at the end.
class ReaderPlace {
 public:
  // A place at no listener, which need not be given back.
  ReaderPlace() noexcept = default;
  explicit ReaderPlace(std::shared_ptr<ListenerState> listener) noexcept
      : listener_(std::move(listener)) {}
  ReaderPlace(ReaderPlace&&) noexcept = default;
  ReaderPlace& operator=(ReaderPlace&&) = delete;
  ~ReaderPlace() {
    if (listener_ != nullptr) listener_->dismiss_reader();
  }

  // Null where this is no place.
  ListenerState* listener() const noexcept { return listener_.get(); }

 private:
  std::shared_ptr<ListenerState> listener_;
};

// What a reader gets. Two readers run for each connection, but a conversation belongs to one: it
// has the socket and a place, the other neither.
struct ConnectionRecord {
  Descriptor socket;
  ReaderPlace place;
};

}  // namespace zuCIM
