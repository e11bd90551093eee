#pragma once

#include "BRQ/Trace.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {

// The traces of the listener and its readers; each carries the line that its text is known by.
inline void trace_listener(unsigned level, int line, const char* text) noexcept {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, level, "Src/CIMlistener", line, "%s", text);
}

// Traces that `function` was ended by an exception.
inline void trace_listener_exception(const char* function, const char* text,
                                     int line = __builtin_LINE()) noexcept {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::error, "Src/CIMlistener", line,
               "%s: Exception raised: %s", function, text);
}

}  // namespace zuCIM
