#include <gtest/gtest.h>

#include <vector>

#include "hostile/memory_growth.h"
#include "hostile/stopwatch.h"

// What the limits of hostile peers are measured with.

namespace {

TEST(MemoryGrowth, SeesWhatWasInUseForAMoment) {
  const MemoryGrowth growth;
  std::vector<char>(64 * 1024 * 1024, 'x').clear();
  EXPECT_EQ(bool(growth.is_at_most(32)), MemoryGrowth::under_sanitizer);
  EXPECT_TRUE(growth.is_at_most(128));
}

TEST(Stopwatch, SeesThatTimeHasPassed) {
  const Stopwatch stopwatch;
  EXPECT_FALSE(stopwatch.is_within(std::chrono::seconds(0)));
  EXPECT_TRUE(stopwatch.is_within(std::chrono::minutes(1)));
}

}  // namespace
