#include "CIMconnection/progress.h"

#include <gtest/gtest.h>

#include <climits>

#include "CIMconnection/fixed_clock.h"
#include "support/trace_recorder.h"

namespace zuCIM {
namespace {

constexpr unsigned progress_level = 2;

TEST(TransferTimeout, IsTheBaseAndTheExtraTimeAndAtLeastFiveSeconds) {
  EXPECT_EQ(transfer_timeout(0, false), 30);
  EXPECT_EQ(transfer_timeout(0, true), 60);
  EXPECT_EQ(transfer_timeout(10, false), 40);
  EXPECT_EQ(transfer_timeout(-20, false), 10);
  EXPECT_EQ(transfer_timeout(-25, false), 5);
  EXPECT_EQ(transfer_timeout(-26, false), 5);
  EXPECT_EQ(transfer_timeout(-40, false), 5);
  EXPECT_EQ(transfer_timeout(-54, true), 6);
  EXPECT_EQ(transfer_timeout(INT_MIN, true), 5);
  EXPECT_EQ(transfer_timeout(INT_MAX, false), INT_MAX);
}

TEST(LastResortTimeout, IsLongerThanTheWatchCanLastAndFitsIntoLibcurl) {
  EXPECT_EQ(last_resort_timeout(5), 90);
  EXPECT_EQ(last_resort_timeout(30), 240);
  EXPECT_EQ(last_resort_timeout(60), 420);
  EXPECT_EQ(last_resort_timeout(357903), 2147478);
  EXPECT_EQ(last_resort_timeout(357904), 2147483);
  EXPECT_EQ(last_resort_timeout(INT_MAX), 2147483);
}

class CheckProgress : public testing::Test {
 protected:
  // One call at time `now` in a download of which nothing is known.
  int call(std::uint32_t now) {
    FixedClock::now = now;
    return checkProgress(&progress_, 0, 0, 100, 100);
  }

  FixedClock clock_{1000};
  Progress progress_{.timeout = 30, .host = "far"};
};

TEST_F(CheckProgress, StartsTheSpanOnTheFirstCall) {
  EXPECT_EQ(call(1000), 0);
  EXPECT_EQ(progress_.start, 1000U);
  EXPECT_EQ(progress_.last, 1000U);
  EXPECT_EQ(progress_.fixups, 1U);
}

TEST_F(CheckProgress, GoesOnUntilTheTimeoutHasPassed) {
  TraceRecorder traces;
  for (std::uint32_t now = 1000; now < 1030; ++now) EXPECT_EQ(call(now), 0) << now;
  EXPECT_EQ(progress_.last, 1029U);
  EXPECT_TRUE(traces.lines().empty());
  EXPECT_EQ(call(1030), 1);
  EXPECT_EQ(traces.lines().size(), 1U);
  EXPECT_EQ(traces.count(progress_level, "Src/CIMconnection",
                         "[far] Leave checkProgress() now-start=30 >= 30 (timeout: fail)"),
            1);
}

TEST_F(CheckProgress, AllowsAGapOfTenSeconds) {
  EXPECT_EQ(call(1000), 0);
  EXPECT_EQ(call(1010), 0);
  EXPECT_EQ(progress_.start, 1000U);
  EXPECT_EQ(progress_.fixups, 1U);
}

TEST_F(CheckProgress, RestartsTheSpanAfterAGapOfElevenSeconds) {
  EXPECT_EQ(call(1000), 0);
  EXPECT_EQ(call(1011), 0);
  EXPECT_EQ(progress_.start, 1011U);
  EXPECT_EQ(progress_.last, 1011U);
  EXPECT_EQ(progress_.fixups, 2U);
}

TEST_F(CheckProgress, RestartsTheSpanWhenTheClockIsSetBack) {
  EXPECT_EQ(call(1000), 0);
  EXPECT_EQ(call(999), 0);
  EXPECT_EQ(progress_.start, 999U);
  EXPECT_EQ(progress_.fixups, 2U);
}

TEST_F(CheckProgress, GivesUpAtTheSixthStartOfTheSpan) {
  TraceRecorder traces;
  for (std::uint32_t now = 1000; now < 1100; now += 20) EXPECT_EQ(call(now), 0) << now;
  EXPECT_EQ(progress_.fixups, 5U);
  EXPECT_TRUE(traces.lines().empty());
  EXPECT_EQ(call(1100), 1);
  EXPECT_EQ(traces.count(progress_level, "Src/CIMconnection",
                         "[far] Leave checkProgress() too many fixups occurred -> fail"),
            1);
  EXPECT_EQ(traces.lines().size(), 1U);
}

TEST_F(CheckProgress, NeverEndsACompleteDownload) {
  call(1000);
  FixedClock::now = 5000;
  EXPECT_EQ(checkProgress(&progress_, 7, 7, 0, 0), 0);
  EXPECT_EQ(progress_.last, 1000U);
  EXPECT_EQ(progress_.fixups, 1U);
}

TEST_F(CheckProgress, DoesNotTakeAnEmptyDownloadForAComplete) {
  call(1000);
  for (std::uint32_t now = 1005; now < 1030; now += 5) call(now);
  FixedClock::now = 1030;
  EXPECT_EQ(checkProgress(&progress_, 0, 0, 0, 0), 1);
  EXPECT_EQ(checkProgress(&progress_, 8, 7, 0, 0), 1);
}

TEST_F(CheckProgress, LetsTransfersWithoutARecordRun) {
  EXPECT_EQ(checkProgress(nullptr, 0, 0, 0, 0), 0);
}

TEST_F(CheckProgress, WorksOnAcrossTheEndOf32BitTime) {
  EXPECT_EQ(call(0xFFFFFFFFU), 0);
  EXPECT_EQ(call(0), 0);
  EXPECT_EQ(progress_.fixups, 2U);
  EXPECT_EQ(call(1), 0);
  EXPECT_EQ(progress_.start, 1U);
}

}  // namespace
}  // namespace zuCIM
