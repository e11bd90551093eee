#include <gtest/gtest.h>

#include "support/simulator_process.h"

namespace {

using test_support::SimulatorProcess;

TEST(SimulatorProcess, ListensOnAPortOfItsOwnAndEndsCleanlyOnSigterm) {
  SimulatorProcess first;
  SimulatorProcess second;
  EXPECT_EQ(first.address(), "127.0.0.2");
  EXPECT_NE(first.port(), second.port());
  EXPECT_EQ(first.url(), "http://127.0.0.2:" + std::to_string(first.port()));
  EXPECT_EQ(first.stop(), 0);
  EXPECT_EQ(second.stop(), 0);
}

}  // namespace
