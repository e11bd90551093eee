#pragma once

#include <boost/format.hpp>
#include <cerrno>
#include <functional>
#include <locale>
#include <ostream>
#include <sstream>
#include <string>
#include <type_traits>

#include "BRQ/Export.h"
#include "BRQ/ModuleInfo.h"

// Traces: a module writes lines of text, each with a level (one bit), a source and a line number.
// A line goes whole to one process-wide sink: standard error, or the callback that is set.
namespace BRQ {

// One finished trace line, as a sink sees it. The pointers are valid during the call only.
struct TraceLine {
  const char* module;
  unsigned level;
  const char* source;
  int line;
  const std::string& text;
};

using TraceSink = std::function<void(const TraceLine&)>;

// Makes `sink` the receiver of all lines; an empty function restores standard error. Calls of the
// sink are serialised. The sink may be called from any thread that traces; it must not trace
// itself. Returns the previous sink. Throws only std::bad_alloc.
BRQ_API TraceSink set_trace_sink(TraceSink sink);

namespace Internals {

// Collects the text of one trace line and hands it to the sink when it is destroyed.
class BRQ_API CTraceStreamBuffer : public std::stringbuf {
 public:
  // `source` must outlive the buffer.
  CTraceStreamBuffer(const Misc::CModuleInfo& module, unsigned level, const char* source, int line);
  ~CTraceStreamBuffer() override;
  CTraceStreamBuffer(const CTraceStreamBuffer&) = delete;
  CTraceStreamBuffer& operator=(const CTraceStreamBuffer&) = delete;

  // Keeps the line from being handed on.
  void discard() noexcept { is_discarded_ = true; }

 private:
  const Misc::CModuleInfo& module_;
  unsigned level_;
  const char* source_;
  int line_;
  bool is_discarded_ = false;
};

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

// An argument of a trace text. Boost.Format prints into a stream of its own that would swallow a
// failure and shorten the text; this makes the failure known.
template <class T>
struct TraceArgument {
  const T& value;
};
template <class T>
std::ostream& operator<<(std::ostream& stream, const TraceArgument<T>& argument) {
  stream.exceptions(std::ios_base::badbit);
  // A null text prints as nothing.
  if constexpr (std::is_convertible_v<T, const char*>)
    if (static_cast<const char*>(argument.value) == nullptr) return stream << "";
  return stream << argument.value;
}

}  // namespace Internals

namespace Output_Streams {

// The stream that a trace line is written with.
class BRQ_API CFormatStream : public std::ostream {
 public:
  // `buffer` must outlive the stream; the line ends with the buffer.
  explicit CFormatStream(Internals::CTraceStreamBuffer& buffer);
  ~CFormatStream() override;
};

}  // namespace Output_Streams

namespace Internals {

// Writes one line, formatted by Boost.Format without regard to the process's locale. Never throws
// and leaves `errno` alone: a line that cannot be formatted or delivered whole is dropped. Call it
// through BRQ_TRACE, which asks for the level first.
template <class... Arguments>
void write_trace(const Misc::CModuleInfo& module, unsigned level, const char* source, int line,
                 const char* format, const Arguments&... arguments) noexcept {
  const ErrnoKeeper keeper;
  try {
    boost::format formatted(format, std::locale::classic());
    static_cast<void>((formatted % ... % TraceArgument<Arguments>{arguments}));
    const std::string text = formatted.str();
    CTraceStreamBuffer buffer(module, level, source, line);
    Output_Streams::CFormatStream stream(buffer);
    if (!(stream << text)) buffer.discard();
  } catch (...) {
    // Tracing must not disturb the work that it reports on.
  }
}

}  // namespace Internals
}  // namespace BRQ

// Writes a trace line that carries `line`; the arguments are evaluated only when the level is on.
#define BRQ_TRACE_AT(module, level, source, line, ...)                                 \
  do {                                                                                 \
    if ((module).is_enabled(level))                                                    \
      ::BRQ::Internals::write_trace((module), (level), (source), (line), __VA_ARGS__); \
  } while (false)

// Writes a trace line that carries the position of the call.
#define BRQ_TRACE(module, level, source, ...) \
  BRQ_TRACE_AT(module, level, source, __LINE__, __VA_ARGS__)
