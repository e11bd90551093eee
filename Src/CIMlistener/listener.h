#pragma once

#include <memory>

#include "CIMlistener/listener_state.h"

namespace zuCIM {

// Starts a listener's thread, which shares the state. Returns what pthread_create said. Throws
// std::bad_alloc.
int start_thread_of(const std::shared_ptr<ListenerState>& state);

}  // namespace zuCIM
