#include "BRQ/CriticalSection.h"

#include <gtest/gtest.h>

#include <cstring>
#include <latch>
#include <memory>
#include <new>
#include <thread>
#include <vector>

#include "BRQ/Waiter.h"

namespace {

using BRQ::Threading::CSyncGuard;
using BRQ::Threading::Native_OS::CCriticalSection;

// Whether another thread can take the section at once; gives it back if so.
bool others_can_take(CCriticalSection& section) {
  bool taken = false;
  std::thread([&] {
    taken = section.TryEnter();
    if (taken) section.Leave();
  }).join();
  return taken;
}

TEST(CriticalSection, IsFreeAtFirst) {
  CCriticalSection section;
  EXPECT_TRUE(others_can_take(section));
}

TEST(CriticalSection, AllZeroMemoryIsAFreeSection) {
  alignas(CCriticalSection) unsigned char memory[sizeof(CCriticalSection)];
  std::memset(memory, 0, sizeof memory);
  auto* const section = std::launder(reinterpret_cast<CCriticalSection*>(memory));
  EXPECT_TRUE(others_can_take(*section));
  section->Enter();
  EXPECT_FALSE(others_can_take(*section));
  section->Leave();
  EXPECT_TRUE(others_can_take(*section));
}

TEST(CriticalSection, KeepsOtherThreadsOut) {
  CCriticalSection section;
  section.Enter();
  EXPECT_FALSE(others_can_take(section));
  section.Leave();
  EXPECT_TRUE(others_can_take(section));
}

TEST(CriticalSection, ItsHolderMayEnterAgainAndMustLeaveAsOften) {
  CCriticalSection section;
  section.Enter();
  section.Enter();
  EXPECT_TRUE(section.TryEnter());
  section.Leave();
  section.Leave();
  EXPECT_FALSE(others_can_take(section));
  section.Leave();
  EXPECT_TRUE(others_can_take(section));
}

TEST(CriticalSection, TryEnterTakesAFreeSection) {
  CCriticalSection section;
  EXPECT_TRUE(section.TryEnter());
  EXPECT_FALSE(others_can_take(section));
  section.Leave();
}

TEST(CriticalSection, AGuardHoldsItForItsLife) {
  CCriticalSection section;
  {
    const CSyncGuard guard(section);
    const CSyncGuard nested(section);
    EXPECT_FALSE(others_can_take(section));
  }
  EXPECT_TRUE(others_can_take(section));
}

TEST(CriticalSection, AWaitingThreadGetsItWhenItIsLeft) {
  for (const unsigned spin : {0U, 1000U}) {
    CCriticalSection section;
    section.Init(spin);
    BRQ::Threading::CEvent got_it;
    section.Enter();
    std::latch started(1);
    std::thread waiter([&] {
      started.count_down();
      const CSyncGuard guard(section);
      got_it.Set();
    });
    started.wait();
    EXPECT_EQ(got_it.Wait(20), BRQ::Threading::wait_timed_out);
    section.Leave();
    EXPECT_EQ(got_it.Wait(20000), BRQ::Threading::wait_signalled);
    waiter.join();
  }
}

// Adds to a plain counter from many threads; a lost addition or a data race shows a hole.
void contend(unsigned spin) {
  constexpr int threads = 6;
  constexpr int rounds = 3000;
  CCriticalSection section;
  section.Init(spin);
  int counter = 0;
  std::latch start(threads);
  std::vector<std::thread> workers;
  for (int i = 0; i < threads; ++i)
    workers.emplace_back([&] {
      start.arrive_and_wait();
      for (int round = 0; round < rounds; ++round) {
        const CSyncGuard guard(section);
        const CSyncGuard again(section);
        ++counter;
      }
    });
  for (std::thread& worker : workers) worker.join();
  EXPECT_EQ(counter, threads * rounds);
}

TEST(CriticalSection, StandsContentionWithoutSpinning) {
  contend(0);
}

TEST(CriticalSection, StandsContentionWithSpinning) {
  contend(1000);
}

TEST(CriticalSection, MayBeDestroyedByTheOneWhoGotItLast) {
  for (int round = 0; round < 300; ++round) {
    auto section = std::make_unique<CCriticalSection>();
    section->Enter();
    std::latch started(1);
    std::thread last([&] {
      started.count_down();
      section->Enter();
      section->Leave();
      section.reset();
    });
    started.wait();
    section->Leave();
    last.join();
  }
}

}  // namespace
