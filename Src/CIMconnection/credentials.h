#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zuCIM/connection.h"

namespace zuCIM {

// Overwrites what it gives back.
template <class Item>
struct WipingAllocator {
  using value_type = Item;

  Item* allocate(std::size_t count) { return std::allocator<Item>().allocate(count); }
  void deallocate(Item* items, std::size_t count) noexcept {
    ::explicit_bzero(items, count * sizeof(Item));
    std::allocator<Item>().deallocate(items, count);
  }
  bool operator==(const WipingAllocator&) const noexcept = default;
};

// A text that leaves nothing of itself in free memory, neither at its end nor when it grows or
// moves: no part of it lies in the object itself, as that of a short std::string would.
class SecretText {
 public:
  // Has room for so many bytes. Throws std::bad_alloc.
  explicit SecretText(std::size_t capacity = 0) { bytes_.reserve(capacity); }

  // Throws std::bad_alloc.
  SecretText& append(std::string_view text) {
    bytes_.insert(bytes_.end(), text.begin(), text.end());
    return *this;
  }
  std::string_view view() const noexcept { return {bytes_.data(), bytes_.size()}; }
  bool empty() const noexcept { return bytes_.empty(); }

 private:
  std::vector<char, WipingAllocator<char>> bytes_;
};

// User name and password as they go over the wire, in Base64. Throws std::bad_alloc.
SecretText wire_credentials(const CIMconnection& connection);

// `text` with "***" for what a server sent back of them. An empty `credentials` hides nothing.
// Throws std::bad_alloc.
std::string without_echo(std::string_view text, std::string_view credentials);

}  // namespace zuCIM
