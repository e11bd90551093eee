#pragma once

#include <functional>
#include <initializer_list>
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

// An argument of a trace text: a reference to a value of any type that can be printed. It knows how
// to print it, so that only the library itself has to know Boost.Format.
class TraceArgument {
 public:
  // `value` must outlive the argument.
  template <class T>
  explicit TraceArgument(const T& value) noexcept : value_(&value), print_(&print<T>) {}

  // Boost.Format prints into a stream of its own that would swallow a failure and shorten the text;
  // this makes the failure known.
  friend std::ostream& operator<<(std::ostream& stream, const TraceArgument& argument) {
    stream.exceptions(std::ios_base::badbit);
    argument.print_(stream, argument.value_);
    return stream;
  }

 private:
  // A null text prints as nothing.
  template <class T>
  static void print(std::ostream& stream, const void* address) {
    const T& value = *static_cast<const T*>(address);
    if constexpr (std::is_convertible_v<T, const char*>) {
      const char* const text = value;
      stream << (text != nullptr ? text : "");
    } else {
      stream << value;
    }
  }

  const void* value_;
  void (*print_)(std::ostream&, const void*);
};

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
// and leaves `errno` alone: a line that cannot be formatted or delivered whole is dropped.
BRQ_API void write_line(const Misc::CModuleInfo& module, unsigned level, const char* source,
                        int line, const char* format,
                        std::initializer_list<TraceArgument> arguments) noexcept;

// The same for any number of arguments. Call it through BRQ_TRACE, which asks for the level first.
template <class... Arguments>
void write_trace(const Misc::CModuleInfo& module, unsigned level, const char* source, int line,
                 const char* format, const Arguments&... arguments) noexcept {
  write_line(module, level, source, line, format, {TraceArgument(arguments)...});
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
