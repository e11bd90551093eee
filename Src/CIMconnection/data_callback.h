#pragma once

#include <cstddef>

namespace zuCIM {

// libcurl's callback for header and body: appends `size` times `count` bytes to `text`, a
// std::string. Returns how many it took; 0 when memory is short, which ends the transfer.
std::size_t append_data(char* data, std::size_t size, std::size_t count, void* text) noexcept;

}  // namespace zuCIM
