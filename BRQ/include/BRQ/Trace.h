#pragma once

#include <boost/format.hpp>
#include <functional>
#include <ostream>
#include <sstream>
#include <string>

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

 private:
  const Misc::CModuleInfo& module_;
  unsigned level_;
  const char* source_;
  int line_;
};

// What a trace text prints for an argument: a null text prints as nothing.
inline const char* trace_argument(const char* text) {
  return text != nullptr ? text : "";
}
inline const char* trace_argument(char* text) {
  return text != nullptr ? text : "";
}
template <class T>
const T& trace_argument(const T& value) {
  return value;
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

// Writes one line, formatted by Boost.Format. Never throws: a line that cannot be formatted or
// delivered is dropped. Call it through BRQ_TRACE, which asks for the level first.
template <class... Arguments>
void write_trace(const Misc::CModuleInfo& module, unsigned level, const char* source, int line,
                 const char* format, const Arguments&... arguments) noexcept {
  try {
    boost::format text(format);
    static_cast<void>((text % ... % trace_argument(arguments)));
    CTraceStreamBuffer buffer(module, level, source, line);
    Output_Streams::CFormatStream stream(buffer);
    stream << text;
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
