#pragma once

#include <unistd.h>

#include <utility>

namespace zuCIM {

// Owns a file descriptor and closes it once; -1 stands for none.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) noexcept : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() {
    if (is_open()) ::close(number_);
  }

  bool is_open() const noexcept { return number_ >= 0; }
  int number() const noexcept { return number_; }
  // Gives the descriptor up without closing it.
  int release() noexcept { return std::exchange(number_, -1); }

 private:
  int number_;
};

}  // namespace zuCIM
