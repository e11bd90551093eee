#pragma once

#include "zuCIM/connection.h"

namespace zuCIM {

// Releases the transfer handle, whatever the busy flag says, and leaves the flag as it was.
void release_in_any_case(CIMconnection& connection) noexcept;

}  // namespace zuCIM
