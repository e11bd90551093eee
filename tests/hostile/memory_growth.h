#pragma once

#include <gtest/gtest.h>

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
    is_reset_ = static_cast<bool>(file << "5" << std::flush);
    before_ = kilobytes("VmRSS:");
  }

  // Whether it was at most this. Always under a sanitizer; never where the peak could not be reset,
  // since a limit that nobody looks at holds nothing.
  testing::AssertionResult is_at_most(std::size_t mebibytes) const {
    if (under_sanitizer) return testing::AssertionSuccess();
    if (!is_reset_) return testing::AssertionFailure() << "/proc/self/clear_refs cannot be written";
    const std::size_t grown = grown_kilobytes();
    if (grown <= mebibytes * 1024) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "it took " << grown << " KiB";
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

  std::size_t grown_kilobytes() const {
    const std::size_t peak = kilobytes("VmHWM:");
    return peak > before_ ? peak - before_ : 0;
  }

  bool is_reset_ = false;
  std::size_t before_ = 0;
};
