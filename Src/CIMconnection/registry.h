#pragma once

#include <cstdint>
#include <string>

#include "zuCIM/container.h"

namespace zuCIM {

// The index of a context that makeContainer did not make.
inline constexpr std::uint32_t no_index = 0xFFFFFFFF;

// Gives `context` another index. When it is a registered one, look-ups learn that the indices in
// the registry no longer grow with the position.
void change_index(CIMcontainer& context, std::uint32_t index) noexcept;

// Takes a registered context out of the registry and destroys it; later ones move down by one
// position. What the context has on its server stays there.
void erase_context(CIMcontainer& context) noexcept;

// Takes all contexts out of the registry and destroys them. Returns what emptying the array
// returned.
int erase_all_contexts() noexcept;

// Exchanges the connection's server address and name for these. Threads that admit contexts of
// their own read the two of a registered one, so they change under the registry's lock.
void swap_server_address(CIMconnection& connection, std::string& ip, std::string& name) noexcept;

// Makes sure that the transfer handles of all registered contexts are released when the process
// ends, before the TLS library beneath libcurl is taken down; unless an exchange is running then.
// Call it once libcurl has started that library.
void release_handles_at_exit() noexcept;

}  // namespace zuCIM
