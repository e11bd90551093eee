#pragma once

#include "zuCIM/container.h"

// How the operations report what went wrong. Every line carries the number of the line that calls.
namespace zuCIM {

// Makes the request that is being built a failed one: its text is emptied, the status becomes 1001
// and `text` is traced at the warning level.
void reject_request(CIMcontainer& container, const char* text,
                    int line = __builtin_LINE()) noexcept;

// The same for an operation that ends here: the transfer handle is released, too. Returns the
// status.
int refuse_request(CIMcontainer& container, const char* text, int line = __builtin_LINE()) noexcept;

// Makes the request a failed one because `function` was ended by an exception, which is traced.
void abandon_request(CIMcontainer& container, const char* function, const char* text,
                     int line = __builtin_LINE()) noexcept;

// Traces "[host] function() text" at the error level; a null `container` has an empty host.
void trace_error(const CIMcontainer* container, const char* function, const char* text,
                 int line = __builtin_LINE()) noexcept;

// Traces that `function` was ended by an exception.
void trace_exception(const char* function, const char* text, int line = __builtin_LINE()) noexcept;

}  // namespace zuCIM
