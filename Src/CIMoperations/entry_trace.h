#pragma once

#include "zuCIM/container.h"

namespace zuCIM {

// Traces that `operation`, written as "Name()", begins.
void trace_entry(const CIMcontainer& container, const char* operation,
                 int line = __builtin_LINE()) noexcept;

}  // namespace zuCIM
