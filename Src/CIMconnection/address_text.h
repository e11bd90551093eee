#pragma once

#include <sys/socket.h>

#include <string>

namespace zuCIM {

// The text of an address, IPv6 with every group written out; empty for 127.0.0.1, ::1 and other
// families. Throws std::bad_alloc.
std::string usable_address_text(const sockaddr& address);

}  // namespace zuCIM
