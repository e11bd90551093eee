#pragma once

#include <cstddef>
#include <string>

namespace zuCIM {

// libcurl's callback for header and body: appends `size` times `count` bytes to `text`, a
// std::string. Returns how many it took; 0 when memory is short, which ends the transfer.
std::size_t append_data(char* data, std::size_t size, std::size_t count, void* text) noexcept;

// A text that an answer is collected in, up to a limit.
struct LimitedText {
  std::string& text;
  std::size_t limit;
  // Whether an answer had more than that.
  bool is_exceeded = false;
  // The transfer handle that knows the length of what is coming, to make room for it at once; null
  // to let the text grow.
  void* handle = nullptr;
};

// The same for a LimitedText. What would exceed the limit is not taken.
std::size_t append_limited_data(char* data, std::size_t size, std::size_t count,
                                void* limited_text) noexcept;

}  // namespace zuCIM
