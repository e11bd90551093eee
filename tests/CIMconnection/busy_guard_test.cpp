#include "CIMconnection/busy_guard.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "CIMconnection/busy_flag.h"
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

TEST_F(BusyGuard, TakesTheConnectionAfter150LooksAllTheSame) {
  connection_.ESXi_Occupied(true);
  take_when_free(connection_, 1);
  EXPECT_TRUE(connection_.esxiBusy);
  EXPECT_EQ(traces_.count(warning, source, occupied), 150);
  EXPECT_EQ(traces_.count(warning, source, "[far] ESXi_Busy: ready (loop=0)"), 1);
  EXPECT_EQ(traces_.lines().size(), 152U);
}

TEST_F(BusyGuard, LooksFiveTimesASecond) {
  connection_.ESXi_Occupied(true);
  const auto start = std::chrono::steady_clock::now();
  std::thread holder = free_after(5);
  connection_.ESXi_Occupied(true);
  holder.join();
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1000));
  EXPECT_TRUE(is_busy(connection_));
  EXPECT_GE(looks(), 5);
  EXPECT_EQ(traces_.texts(warning).back(),
            "[far] ESXi_Busy: ready (loop=" + std::to_string(150 - looks()) + ")");
}

}  // namespace
}  // namespace zuCIM
