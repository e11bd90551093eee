#include "BRQ/Trace.h"

#include <boost/format.hpp>
#include <cerrno>
#include <cstdio>
#include <locale>
#include <memory>
#include <mutex>

namespace BRQ {
namespace {

// The character facet of libstdc++, which Boost.Format asks, fills tables at their first use and
// takes no lock. Filled while the library is loaded, they are only read when threads trace.
[[maybe_unused]] const bool facet_is_filled = [] {
  const auto& facet = std::use_facet<std::ctype<char>>(std::locale::classic());
  facet.widen('a');
  for (int c = 1; c < 256; ++c) facet.narrow(static_cast<char>(c), '\0');
  return true;
}();

// The sink lives as long as the process, since lines may come from destructors of other statics.
struct SinkSlot {
  std::mutex mutex;
  TraceSink sink;
};

SinkSlot& sink_slot() {
  static SinkSlot* slot = new SinkSlot;
  return *slot;
}

// One call writes the whole line, so that lines of other writers do not come in between.
void write_to_standard_error(const TraceLine& line) {
  const boost::format head = boost::format("%s 0x%x %s@%d: ", std::locale::classic()) %
                             line.module % line.level % line.source % line.line;
  const std::string whole = head.str() + line.text + '\n';
  std::fwrite(whole.data(), 1, whole.size(), stderr);
}

void deliver(const TraceLine& line) {
  SinkSlot& slot = sink_slot();
  const std::lock_guard<std::mutex> guard(slot.mutex);
  if (slot.sink)
    slot.sink(line);
  else
    write_to_standard_error(line);
}

// Gives `errno` back at its end as it was at its start.
class ErrnoKeeper {
 public:
  ErrnoKeeper() = default;
  ~ErrnoKeeper() { errno = kept_; }
  ErrnoKeeper(const ErrnoKeeper&) = delete;
  ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

 private:
  int kept_ = errno;
};

std::string formatted(const char* format,
                      std::initializer_list<Internals::TraceArgument> arguments) {
  boost::format text(format, std::locale::classic());
  for (const Internals::TraceArgument& argument : arguments) text % argument;
  return text.str();
}

}  // namespace

TraceSink set_trace_sink(TraceSink sink) {
  SinkSlot& slot = sink_slot();
  const std::lock_guard<std::mutex> guard(slot.mutex);
  slot.sink.swap(sink);
  return sink;
}

namespace Internals {

CTraceStreamBuffer::CTraceStreamBuffer(const Misc::CModuleInfo& module, unsigned level,
                                       const char* source, int line)
    : module_(module), level_(level), source_(source), line_(line) {}

CTraceStreamBuffer::~CTraceStreamBuffer() {
  if (is_discarded_) return;
  try {
    const std::string text = str();
    deliver(TraceLine{module_.name(), level_, source_, line_, text});
  } catch (...) {
    // A destructor must not throw; the line is lost.
  }
}

void write_line(const Misc::CModuleInfo& module, unsigned level, const char* source, int line,
                const char* format, std::initializer_list<TraceArgument> arguments) noexcept {
  const ErrnoKeeper keeper;
  try {
    const std::string text = formatted(format, arguments);
    CTraceStreamBuffer buffer(module, level, source, line);
    Output_Streams::CFormatStream stream(buffer);
    if (!(stream << text)) buffer.discard();
  } catch (...) {
    // Tracing must not disturb the work that it reports on.
  }
}

}  // namespace Internals

namespace Output_Streams {

CFormatStream::CFormatStream(Internals::CTraceStreamBuffer& buffer) : std::ostream(&buffer) {
  imbue(std::locale::classic());
}
CFormatStream::~CFormatStream() = default;

}  // namespace Output_Streams
}  // namespace BRQ
