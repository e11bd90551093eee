#include "zuCIM/indication.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <memory>
#include <new>

#include "BRQ/FileDescriptorSet.h"
#include "BRQ/Time.h"
#include "CIMlistener/interruption.h"
#include "CIMlistener/listener.h"
#include "CIMlistener/listener_state.h"
#include "CIMlistener/listener_trace.h"

// The listener as its owner sees it.
namespace zuCIM {
namespace {

constexpr int line_of_select = 117;
constexpr int line_of_already_running = 358;
constexpr int line_of_no_callback = 363;
constexpr int line_of_not_started = 376;
constexpr int line_of_started = 381;
constexpr int line_of_not_stopped = 421;
constexpr int line_of_stopped = 428;
constexpr int polls_for_end = 30;
constexpr unsigned poll_milliseconds = 1000;

int refuse(unsigned level, int line, const char* text) noexcept {
  trace_listener(level, line, text);
  return status::failure;
}

bool has_callback(CIMindication& listener) noexcept {
  return std::atomic_ref<IndicationCallback>(listener.pCallBack).load() != nullptr;
}

bool is_listening(CIMindication& listener) noexcept {
  return std::atomic_ref<int>(listener.listenSocket).load() != -1;
}

// One wait. A shortage of memory counts as a lack of resources that passes.
int wait_once(int descriptor, int milliseconds) noexcept {
  BRQ::Misc::CFileDescriptorSet set;
  if (set.Add(descriptor)) return set.WaitReadable(milliseconds);
  errno = EAGAIN;
  return -1;
}

// Interruptions are not counted: each starts the whole wait anew.
int wait_readable(int descriptor, int milliseconds) noexcept {
  int ready = wait_once(descriptor, milliseconds);
  while (ready < 0 && is_to_be_repeated()) ready = wait_once(descriptor, milliseconds);
  return ready;
}

using SharedState = std::shared_ptr<ListenerState>;

// Null when memory is short.
SharedState make_state(CIMindication* owner) noexcept {
  try {
    return std::make_shared<ListenerState>(owner);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

// What pthread_create said, or ENOMEM. A listener that was made while memory was short gets its
// state now.
int start(CIMindication* owner, SharedState& state) noexcept {
  try {
    if (state == nullptr) state = std::make_shared<ListenerState>(owner);
    return start_thread_of(state);
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
}

// Without a state there was never a thread, but who waits for the listener waits as long.
void wait_for_end(ListenerState* state) noexcept {
  if (state != nullptr)
    state->wait_for_end(poll_milliseconds);
  else
    BRQ::Misc::msleep(poll_milliseconds);
}

}  // namespace

int ListenerThreadIsActive = 0;

CIMindication::CIMindication() noexcept
    : pCallBack(nullptr), port(-1), listenSocket(-1), startResult(0), state_(make_state(this)) {}

CIMindication::~CIMindication() {
  if (state_ != nullptr) state_->abandon();
}

int CIMindication::start_Listener() noexcept {
  if (is_listening(*this))
    return refuse(trace_level::warning, line_of_already_running,
                  "start_Listener: Listener is already running");
  if (!has_callback(*this))
    return refuse(trace_level::error, line_of_no_callback,
                  "start_Listener: pCallBack (null) not set!");
  startResult = start(this, state_);
  if (startResult != 0)
    return refuse(trace_level::error, line_of_not_started,
                  "start_Listener: Cannot start listener-thread");
  trace_listener(trace_level::warning, line_of_started,
                 "start_Listener: Listener-Thread started\n");
  return status::success;
}

void CIMindication::stop_Listener() noexcept {
  const bool was_listening = state_ != nullptr && state_->stop();
  if (!was_listening && startResult == 0) return;
  for (int poll = 0; poll < polls_for_end && has_callback(*this); ++poll)
    wait_for_end(state_.get());
  startResult = 0;
  if (has_callback(*this))
    trace_listener(trace_level::error, line_of_not_stopped,
                   "stop_Listener: Listener-Thread is not stopped yet!");
  else
    trace_listener(trace_level::warning, line_of_stopped,
                   "stop_Listener: Listener-Thread stopped.");
}

int CIMindication::check_Listener() noexcept {
  return is_listening(*this) ? 0 : 1;
}

int CIMindication::mySelect(int descriptor, int seconds) noexcept {
  const int milliseconds = std::clamp(seconds, 0, INT_MAX / 1000) * 1000;
  if (descriptor == -1) return BRQ::Misc::CFileDescriptorSet().WaitReadable(milliseconds);
  const int ready = wait_readable(descriptor, milliseconds);
  if (ready < 0) trace_listener(trace_level::error, line_of_select, "mySelect: ERROR in 'select'");
  return ready;
}

}  // namespace zuCIM
