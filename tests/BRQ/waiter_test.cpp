#include "BRQ/Waiter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <latch>
#include <limits>
#include <thread>
#include <vector>

#include "BRQ/replaced_clock.h"

namespace {

using BRQ::Threading::CEvent;
using BRQ::Threading::CWaiter;
using BRQ::Threading::CWaitInterval;
using BRQ::Threading::wait_signalled;
using BRQ::Threading::wait_timed_out;
using std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr unsigned long_time = 20000;

TEST(Event, TheTimeOutResultIs130) {
  EXPECT_EQ(wait_timed_out, 130);
  EXPECT_EQ(CEvent(false, false).Wait(0), 130);
}

TEST(Event, AWaitThatTimesOutTakesItsTime) {
  CEvent event;
  const auto start = steady_clock::now();
  EXPECT_EQ(event.Wait(20), wait_timed_out);
  EXPECT_GE(steady_clock::now() - start, 20ms);
}

TEST(Event, MayStartSignalled) {
  CEvent event(false, true);
  EXPECT_EQ(event.Wait(0), wait_signalled);
  EXPECT_EQ(event.Wait(0), wait_timed_out);
}

TEST(Event, OneWaitConsumesAnAutomaticEvent) {
  CEvent event;
  event.Set();
  event.Set();
  EXPECT_EQ(event.Wait(0), wait_signalled);
  EXPECT_EQ(event.Wait(0), wait_timed_out);
}

TEST(Event, AManualEventStaysSignalledUntilItIsReset) {
  CEvent event(true);
  event.Set();
  EXPECT_EQ(event.Wait(0), wait_signalled);
  EXPECT_EQ(event.Wait(0), wait_signalled);
  event.Reset();
  EXPECT_EQ(event.Wait(0), wait_timed_out);
}

TEST(Event, SettingItWakesAWaiterAtOnce) {
  CEvent event;
  std::thread setter([&event] { event.Set(); });
  const auto start = steady_clock::now();
  EXPECT_EQ(event.Wait(std::numeric_limits<unsigned>::max()), wait_signalled);
  EXPECT_LT(steady_clock::now() - start, 20s);
  setter.join();
}

TEST(Event, SettingAManualEventWakesAllWaiters) {
  CEvent event(true);
  std::vector<std::thread> waiters;
  std::vector<int> results(4, -1);
  for (int& result : results)
    waiters.emplace_back([&event, &result] { result = event.Wait(long_time); });
  event.Set();
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_EQ(results, std::vector<int>(4, wait_signalled));
}

TEST(Event, SettingAnAutomaticEventWakesOneWaiter) {
  CEvent event;
  CEvent woken;
  std::vector<std::thread> waiters;
  for (int i = 0; i < 2; ++i)
    waiters.emplace_back([&] {
      EXPECT_EQ(event.Wait(long_time), wait_signalled);
      woken.Set();
    });
  event.Set();
  EXPECT_EQ(woken.Wait(long_time), wait_signalled);
  EXPECT_EQ(woken.Wait(10), wait_timed_out);
  event.Set();
  for (std::thread& waiter : waiters) waiter.join();
}

TEST(Waiter, WaitsForItsEvent) {
  CEvent event;
  CWaiter waiter(event);
  EXPECT_EQ(waiter.Wait(0), wait_timed_out);
  event.Set();
  EXPECT_EQ(waiter.Wait(long_time), wait_signalled);
}

TEST(Waiter, SleepsByAReplacedClock) {
  ReplacedClock clock;
  CEvent never;
  CWaiter waiter(never);
  for (int i = 0; i < 150; ++i) EXPECT_EQ(waiter.Wait(200), wait_timed_out);
  EXPECT_EQ(clock.sleeps(), std::vector<unsigned>(150, 200));
}

TEST(Waiter, DoesNotSleepForASignalledEventByAReplacedClock) {
  ReplacedClock clock;
  CEvent event(false, true);
  EXPECT_EQ(CWaiter(event).Wait(200), wait_signalled);
  EXPECT_TRUE(clock.sleeps().empty());
}

TEST(Waiter, SeesASignalThatComesWhileAReplacedClockSleeps) {
  ReplacedClock clock;
  CEvent event;
  clock.on_sleep([&event] { event.Set(); });
  EXPECT_EQ(CWaiter(event).Wait(200), wait_signalled);
  EXPECT_EQ(event.Wait(0), wait_signalled);
}

TEST(WaitInterval, CountsDownByTheClock) {
  ReplacedClock clock;
  CWaitInterval interval(200);
  EXPECT_EQ(interval.Remaining(), 200U);
  clock.advance(150ms);
  EXPECT_EQ(interval.Remaining(), 50U);
  clock.advance(49ms + 1us);
  EXPECT_EQ(interval.Remaining(), 1U);
  clock.advance(999us);
  EXPECT_EQ(interval.Remaining(), 0U);
  clock.advance(1h);
  EXPECT_EQ(interval.Remaining(), 0U);
}

TEST(WaitInterval, StartsAnew) {
  ReplacedClock clock;
  CWaitInterval interval(200);
  clock.advance(500ms);
  interval.Restart();
  EXPECT_EQ(interval.Remaining(), 200U);
}

TEST(WaitInterval, HoldsTheLongestSpan) {
  constexpr unsigned longest = std::numeric_limits<unsigned>::max();
  ReplacedClock clock;
  EXPECT_EQ(CWaitInterval(longest).Remaining(), longest);
  EXPECT_EQ(CWaitInterval(0).Remaining(), 0U);
}

TEST(WaitInterval, FollowsTheSystemsClockWithoutAReplacement) {
  const CWaitInterval interval(1000000);
  EXPECT_LE(interval.Remaining(), 1000000U);
  EXPECT_GT(interval.Remaining(), 900000U);
}

}  // namespace
