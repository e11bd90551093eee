#include "CIMlistener/reader.h"

#include <atomic>
#include <exception>
#include <memory>
#include <string>

#include "CIMlistener/conversation.h"
#include "CIMlistener/listener_trace.h"

namespace zuCIM {
namespace {

// Counts a reader in ListenerThreadIsActive from its construction to its end.
class ActiveReader {
 public:
  ActiveReader() noexcept { std::atomic_ref<int>(ListenerThreadIsActive).fetch_add(1); }
  ~ActiveReader() { std::atomic_ref<int>(ListenerThreadIsActive).fetch_sub(1); }
  ActiveReader(const ActiveReader&) = delete;
  ActiveReader& operator=(const ActiveReader&) = delete;
};

// The callback is looked up only now: the listener may have been stopped or destroyed meanwhile.
void hand_over(ListenerState& listener, std::string& text) {
  if (const IndicationCallback callback = listener.callback()) callback(text);
}

// Serves the conversation. Without one the reader ends as if the sender had closed the connection.
void serve(Descriptor socket, const ReaderPlace& place) {
  Conversation conversation(std::move(socket), place.listener());
  if (!conversation.receive()) return;
  conversation.answer();
  hand_over(*place.listener(), conversation.body());
}

}  // namespace

// The place is given back last, so that a listener never has more readers than it may.
void* CIMindication::readerThread(void* record) noexcept {
  if (record == nullptr) return nullptr;
  std::unique_ptr<ConnectionRecord> owned(static_cast<ConnectionRecord*>(record));
  const ReaderPlace place = std::move(owned->place);
  const ActiveReader active;
  Descriptor socket = std::move(owned->socket);
  owned.reset();
  try {
    serve(std::move(socket), place);
  } catch (const std::exception& error) {
    trace_listener_exception("readerThread", error.what());
  } catch (...) {
    trace_listener_exception("readerThread", "unknown");
  }
  return nullptr;
}

}  // namespace zuCIM
