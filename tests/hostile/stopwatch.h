#pragma once

#include <gtest/gtest.h>

#include <chrono>

#include "support/failing_allocator.h"

// How long something takes by the wall clock, from when this object was made. Under a sanitizer it
// may take ten times as long.
class Stopwatch {
 public:
  testing::AssertionResult is_within(std::chrono::seconds limit) const {
    const auto taken = std::chrono::steady_clock::now() - start_;
    if (taken <= limit * slowness) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "it took " << std::chrono::duration<double>(taken).count() << " seconds";
  }

 private:
  static constexpr int slowness = ZUCIM_SANITIZER_ALLOCATES != 0 ? 10 : 1;

  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};
