#include "CIMconnection/busy_guard.h"

#include <gtest/gtest.h>

#include <thread>

#include "CIMconnection/busy_flag.h"
#include "CIMconnection/sleepless_clock.h"
#include "support/trace_recorder.h"

namespace zuCIM {
namespace {

constexpr unsigned progress = 2;
constexpr unsigned warning = 4;
constexpr const char* source = "Src/CIMconnection";
constexpr const char* occupied = "[far] ESXi_Busy: occupied (true)";

class BusyGuard : public testing::Test {
 protected:
  BusyGuard() { connection_.host = "far"; }

  // A thread that frees the connection as soon as `looks` looks at it were traced.
  std::thread free_after(int looks) {
    return std::thread([this, looks] {
      while (traces_.count(warning, source, occupied) < looks) std::this_thread::yield();
      connection_.ESXi_Occupied(false);
    });
  }

  // Looks at the taken connection, and those of them that came after it was freed.
  int looks() const {
    return traces_.count(warning, source, occupied) +
           traces_.count(warning, source, "[far] ESXi_Busy: occupied (false)");
  }

  CIMconnection connection_;
  TraceRecorder traces_;
};

TEST_F(BusyGuard, FreesAFreeConnectionAtOnce) {
  connection_.ESXi_Occupied(false);
  EXPECT_FALSE(connection_.esxiBusy);
  EXPECT_TRUE(traces_.lines().empty());
}

TEST_F(BusyGuard, TakesAFreeConnectionAtOnce) {
  connection_.ESXi_Occupied(true);
  EXPECT_TRUE(connection_.esxiBusy);
  EXPECT_TRUE(traces_.lines().empty());
}

TEST_F(BusyGuard, FreesATakenConnectionAtOnce) {
  connection_.esxiBusy = true;
  connection_.ESXi_Occupied(false);
  EXPECT_FALSE(connection_.esxiBusy);
  EXPECT_TRUE(traces_.lines().empty());
}

TEST_F(BusyGuard, WaitsUntilTheHolderFreesTheConnection) {
  connection_.ESXi_Occupied(true);
  std::thread holder = free_after(3);
  take_when_free(connection_, 5);
  holder.join();
  EXPECT_TRUE(connection_.esxiBusy);
  EXPECT_GE(looks(), 3);
  EXPECT_EQ(traces_.count(progress, source, "[far] ESXi_Busy"), 1);
  EXPECT_EQ(traces_.count(warning, source,
                          "[far] ESXi_Busy: ready (loop=" + std::to_string(150 - looks()) + ")"),
            1);
  EXPECT_EQ(traces_.lines().front().text, "[far] ESXi_Busy");
}

TEST_F(BusyGuard, TakesTheConnectionAfterHalfAMinuteAllTheSame) {
  connection_.ESXi_Occupied(true);
  const SleeplessClock clock;
  connection_.ESXi_Occupied(true);
  EXPECT_TRUE(is_busy(connection_));
  EXPECT_EQ(clock.sleeps(), std::vector<unsigned>(150, 200));
  EXPECT_EQ(traces_.count(warning, source, occupied), 150);
  EXPECT_EQ(traces_.count(warning, source, "[far] ESXi_Busy: ready (loop=0)"), 1);
  EXPECT_EQ(traces_.lines().size(), 152U);
}

TEST_F(BusyGuard, TakesTheConnectionAsSoonAsItIsFree) {
  connection_.ESXi_Occupied(true);
  const SleeplessClock clock([this](std::size_t number) {
    if (number == 5) connection_.ESXi_Occupied(false);
  });
  connection_.ESXi_Occupied(true);
  EXPECT_TRUE(is_busy(connection_));
  EXPECT_EQ(clock.sleeps(), std::vector<unsigned>(5, 200));
  EXPECT_EQ(traces_.count(progress, source, "[far] ESXi_Busy"), 1);
  EXPECT_EQ(traces_.count(warning, source, occupied), 4);
  EXPECT_EQ(traces_.count(warning, source, "[far] ESXi_Busy: occupied (false)"), 1);
  EXPECT_EQ(traces_.count(warning, source, "[far] ESXi_Busy: ready (loop=145)"), 1);
  EXPECT_EQ(traces_.lines().size(), 7U);
}

}  // namespace
}  // namespace zuCIM
