#pragma once

#include "zuCIM/container.h"

namespace zuCIM {

// Sends the finished request of `container`; `operation` is the name that its traces carry.
//
// A failed connect, an HTTP error, a transfer that the time limit ended (42) and an empty reply are
// tried again every two seconds, up to ten times; a negative extra time-out rules that out. Returns
// the status. The answer stays in the container after success, else the transfer handle is
// released.
int send_request(CIMcontainer& container, const char* operation) noexcept;

// Whether a request that ended with `result` may fare better when it is sent again.
bool is_worth_a_retry(int result) noexcept;

}  // namespace zuCIM
