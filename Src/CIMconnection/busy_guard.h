#pragma once

#include "zuCIM/connection.h"

namespace zuCIM {

// Takes a connection that another holder has: looks at it up to 150 times, `poll_milliseconds`
// apart, and takes it as soon as it is free, or all the same when the looks are used up.
void take_when_free(CIMconnection& connection, unsigned poll_milliseconds) noexcept;

}  // namespace zuCIM
