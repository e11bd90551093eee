#pragma once

#include <string>
#include <string_view>

#include "zuCIM/connection.h"

namespace zuCIM {

// User name and password as they go over the wire, in Base64. Throws std::bad_alloc.
std::string wire_credentials(const CIMconnection& connection);

// `text` with "***" for what a server sent back of them. An empty `credentials` hides nothing.
// Throws std::bad_alloc.
std::string without_echo(std::string_view text, std::string_view credentials);

}  // namespace zuCIM
