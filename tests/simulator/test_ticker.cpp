#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <stdexcept>
#include <vector>

#include "ticker.h"

namespace {

using simulator::Ticker;
using testing::ElementsAre;

TEST(TickerTest, ReportsWhatFailsAndGoesOn) {
  std::promise<void> third;
  int count = 0;
  std::vector<std::string> reported;
  {
    const Ticker ticker(
        1000,
        [&] {
          if (++count == 3) third.set_value();
          if (count < 3) throw std::runtime_error("number " + std::to_string(count));
        },
        [&](const std::string& line) { reported.push_back(line); });
    third.get_future().wait();
  }
  EXPECT_THAT(reported, ElementsAre("number 1", "number 2"));
}

}  // namespace
