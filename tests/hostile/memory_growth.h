#pragma once

#include <cstddef>
#include <fstream>
#include <string>

#include "support/failing_allocator.h"

// How much memory of this process was in use at most since this object was made, beyond what was in
// use then. Sanitizers use memory for themselves, so with them there is nothing to compare.
class MemoryGrowth {
 public:
  MemoryGrowth() {
    // Resets the peak.
    std::ofstream file("/proc/self/clear_refs");
    can_measure_ = !under_sanitizer && static_cast<bool>(file << "5" << std::flush);
    before_ = kilobytes("VmRSS:");
  }

  // Whether it was at most this. True where it cannot be told.
  bool is_at_most(std::size_t mebibytes) const {
    return !can_measure_ || grown_kilobytes() <= mebibytes * 1024;
  }

  // The growth up to now; nothing to rely on where it cannot be told.
  std::size_t grown_kilobytes() const {
    const std::size_t peak = kilobytes("VmHWM:");
    return peak > before_ ? peak - before_ : 0;
  }

  static constexpr bool under_sanitizer = ZUCIM_SANITIZER_ALLOCATES != 0;

 private:
  static std::size_t kilobytes(const std::string& field) {
    std::ifstream status("/proc/self/status");
    std::string word;
    std::size_t value = 0;
    while (status >> word)
      if (word == field) status >> value;
    return value;
  }

  bool can_measure_ = false;
  std::size_t before_ = 0;
};
