#include "BRQ/Time.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <thread>

#include "BRQ/replaced_clock.h"

namespace {

using std::chrono::steady_clock;
using namespace std::chrono_literals;

TEST(Time, IsTheSystemsTime) {
  const auto before = static_cast<std::uint32_t>(std::time(nullptr));
  const std::uint32_t now = BRQ::Misc::seconds_now();
  EXPECT_GE(now, before);
  EXPECT_LE(now, before + 60);
  EXPECT_FALSE(BRQ::Misc::is_clock_replaced());
}

TEST(Time, SleepsAtLeastAsLongAsAsked) {
  const auto start = steady_clock::now();
  BRQ::Misc::msleep(15);
  EXPECT_GE(steady_clock::now() - start, 15ms);
}

TEST(Time, SleepsNotAtAllForNothing) {
  const auto start = steady_clock::now();
  BRQ::Misc::msleep(0);
  EXPECT_LT(steady_clock::now() - start, 10s);
}

std::atomic<int> signals_seen{0};

void count_signal(int) {
  ++signals_seen;
}

TEST(Time, SignalsNeitherShortenNorLengthenASleep) {
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = count_signal;
  ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);
  std::atomic<bool> done{false};
  steady_clock::duration slept{};
  std::thread sleeper([&] {
    const auto start = steady_clock::now();
    BRQ::Misc::msleep(50);
    slept = steady_clock::now() - start;
    done = true;
  });
  while (!done) {
    ::pthread_kill(sleeper.native_handle(), SIGUSR1);
    std::this_thread::yield();
  }
  sleeper.join();
  ::sigaction(SIGUSR1, &before, nullptr);
  EXPECT_GE(slept, 50ms);
  EXPECT_LT(slept, 10s);
  EXPECT_GT(signals_seen, 0);
}

TEST(Time, AReplacedClockIsAskedForEverything) {
  ReplacedClock clock;
  EXPECT_TRUE(BRQ::Misc::is_clock_replaced());
  EXPECT_EQ(BRQ::Misc::seconds_now(), 3600U);
  const auto start = BRQ::Misc::steady_now();
  BRQ::Misc::msleep(2000);
  BRQ::Misc::msleep(500);
  EXPECT_EQ(clock.sleeps(), (std::vector<unsigned>{2000, 500}));
  EXPECT_EQ(BRQ::Misc::seconds_now(), 3602U);
  EXPECT_EQ(BRQ::Misc::steady_now() - start, 2500ms);
}

TEST(Time, NullRestoresTheSystemsClock) {
  { const ReplacedClock clock; }
  EXPECT_FALSE(BRQ::Misc::is_clock_replaced());
  EXPECT_GT(BRQ::Misc::seconds_now(), 3602U);
}

TEST(Time, AClockWithoutASteadyTimeTakesTheSystems) {
  static constexpr BRQ::Misc::Clock simple{[] { return std::uint32_t{1}; }, [](unsigned) {}};
  BRQ::Misc::set_clock(&simple);
  const auto before = steady_clock::now();
  const auto now = BRQ::Misc::steady_now();
  BRQ::Misc::set_clock(nullptr);
  EXPECT_GE(now, before);
  EXPECT_LE(now, steady_clock::now());
}

}  // namespace
