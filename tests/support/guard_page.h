#pragma once

#include <cstddef>
#include <string_view>

// A copy of some bytes that ends exactly where a page begins that nobody may touch, so that reading
// one byte too many ends the program.
class GuardedBytes {
 public:
  // Throws std::system_error when the system gives no memory.
  explicit GuardedBytes(std::string_view bytes);
  ~GuardedBytes();
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;

  // The first byte of the copy.
  const char* data() const { return begin_; }
  // Number of bytes.
  std::size_t size() const { return size_; }
  // The copy as a view.
  std::string_view view() const { return {begin_, size_}; }

 private:
  void* mapping_;
  std::size_t mapping_size_;
  char* begin_;
  std::size_t size_;
};

// The same for a text whose terminating NUL is the last byte before the page.
class GuardedText {
 public:
  explicit GuardedText(std::string_view text);

  // The text, NUL-terminated.
  const char* c_str() const { return bytes_.data(); }

 private:
  GuardedBytes bytes_;
};
