#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// Reads an input from its front to its end. Behind the end there are zeros.
class ByteSource {
 public:
  ByteSource(const std::uint8_t* data, std::size_t size)
      : rest_(reinterpret_cast<const char*>(data), size) {}

  bool is_empty() const { return rest_.empty(); }
  // The next byte.
  unsigned byte() {
    if (rest_.empty()) return 0;
    const auto value = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return value;
  }
  // A number below `limit`, which is at most 256.
  unsigned below(std::size_t limit) { return byte() % static_cast<unsigned>(limit); }
  // At most `size` bytes.
  std::string_view bytes(std::size_t size) {
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(taken.size());
    return taken;
  }
  // All that is left.
  std::string_view rest() { return bytes(rest_.size()); }

 private:
  std::string_view rest_;
};
