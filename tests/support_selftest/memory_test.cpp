#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "support/failing_allocator.h"
#include "support/guard_page.h"

namespace {

// Keeps the compiler from leaving an allocation out.
void* volatile kept;

// Whether operator new gives memory.
bool can_make_object() {
  void* const block = ::operator new(8, std::nothrow);
  kept = block;
  ::operator delete(block);
  return block != nullptr;
}

bool can_malloc() {
  void* const block = std::malloc(8);
  kept = block;
  std::free(block);
  return block != nullptr;
}

TEST(AllocationFailure, FailsExactlyTheNthAllocation) {
  AllocationFailure failure(2, AllocationKind::cpp);
  const bool first = can_make_object();
  const bool second = can_make_object();
  const bool third = can_make_object();
  failure.disarm();
  EXPECT_TRUE(first);
  EXPECT_FALSE(second);
  EXPECT_TRUE(third);
  EXPECT_TRUE(failure.happened());
  EXPECT_EQ(failure.count(), 3U);
}

TEST(AllocationFailure, MayFailEverythingFromTheNthOn) {
  AllocationFailure failure(2, AllocationKind::cpp, FailureSpan::from_then_on);
  const bool first = can_make_object();
  const bool second = can_make_object();
  const bool third = can_make_object();
  failure.disarm();
  EXPECT_TRUE(first);
  EXPECT_FALSE(second);
  EXPECT_FALSE(third);
}

TEST(AllocationFailure, ThrowsFromOperatorNew) {
  bool thrown = false;
  {
    const AllocationFailure failure(1);
    try {
      kept = new int[4];
    } catch (const std::bad_alloc&) {
      thrown = true;
    }
  }
  EXPECT_TRUE(thrown);
}

#if !ZUCIM_SANITIZER_ALLOCATES

TEST(AllocationFailure, ReturnsNullFromMallocAndItsKin) {
  for (unsigned nth = 1; nth <= 4; ++nth) {
    AllocationFailure failure(nth, AllocationKind::c);
    void* const blocks[] = {std::malloc(5), std::calloc(5, 5), std::realloc(nullptr, 5),
                            ::strdup("text")};
    failure.disarm();
    for (unsigned i = 0; i < 4; ++i) EXPECT_EQ(blocks[i] == nullptr, i + 1 == nth) << i;
    EXPECT_EQ(failure.count(), 4U);
    for (void* const block : blocks) std::free(block);
  }
}

TEST(AllocationFailure, LeavesTheOldBlockWhenReallocFails) {
  char* const block = ::strdup("text");
  AllocationFailure failure(1);
  void* const bigger = std::realloc(block, 1000);
  failure.disarm();
  if (bigger != nullptr) {
    std::free(bigger);
    FAIL() << "realloc gave memory";
  }
  EXPECT_STREQ(block, "text");
  std::free(block);
}

#endif

TEST(AllocationFailure, CountsTheKindsApart) {
  AllocationFailure failure(1, AllocationKind::cpp);
  const bool c = can_malloc();
  const bool cpp = can_make_object();
  failure.disarm();
  EXPECT_TRUE(c);
  EXPECT_FALSE(cpp);
  EXPECT_EQ(failure.count(), 1U);
}

TEST(AllocationFailure, DoesNotDisturbOtherThreads) {
  bool other = false;
  std::thread thread;
  {
    AllocationFailure failure(1, AllocationKind::any, FailureSpan::from_then_on);
    failure.disarm();
    thread = std::thread([&other] { other = can_make_object() && can_malloc(); });
    failure.arm();
    thread.join();
    failure.disarm();
    EXPECT_FALSE(failure.happened());
  }
  EXPECT_TRUE(other);
}

TEST(AllocationFailure, LeavesUncountedAllocationsAlone) {
  AllocationFailure failure(2, AllocationKind::cpp);
  const bool first = can_make_object();
  bool between = false;
  {
    const UncountedAllocations uncounted;
    between = can_make_object();
  }
  const bool second = can_make_object();
  failure.disarm();
  EXPECT_TRUE(first);
  EXPECT_TRUE(between);
  EXPECT_FALSE(second);
  EXPECT_EQ(failure.count(), 2U);
}

TEST(AllocationFailure, StaysDisarmedBehindUncountedAllocations) {
  AllocationFailure failure(1);
  failure.disarm();
  { const UncountedAllocations uncounted; }
  EXPECT_TRUE(can_make_object());
  EXPECT_FALSE(failure.happened());
}

TEST(AllocationFailure, FailsEachAllocationInItsTurn) {
  unsigned failures = 0;
  const unsigned count = for_each_failing_allocation(
      [&failures] {
        try {
          const std::vector<std::string> texts(3, std::string(100, 'x'));
          kept = const_cast<std::string*>(texts.data());
        } catch (const std::bad_alloc&) {
          ++failures;
        }
      },
      AllocationKind::cpp);
  EXPECT_EQ(count, 5U);
  EXPECT_EQ(failures, 5U);
}

TEST(AllocationFailure, LeavesTheArmingToABodyThatAsksForIt) {
  unsigned runs = 0;
  const unsigned count = for_each_failing_allocation([&runs](AllocationFailure& failure) {
    EXPECT_TRUE(can_make_object());
    failure.arm();
    const bool made = can_make_object();
    failure.disarm();
    EXPECT_EQ(made, !failure.happened());
    ++runs;
  });
  EXPECT_EQ(count, 1U);
  EXPECT_EQ(runs, 2U);
}

TEST(LeavesNothing, TellsASmallLeakFromNone) {
  if (!malloc_can_fail) {
    SUCCEED() << "the sanitizer brings its own heap";
    return;
  }
  std::vector<void*> leaked;
  leaked.reserve(10000);
  EXPECT_FALSE(leaves_nothing(50, [&] { leaked.push_back(std::malloc(8)); }));
  EXPECT_TRUE(leaves_nothing(50, [] { std::free(std::malloc(8)); }));
  for (void* const block : leaked) std::free(block);
}

TEST(GuardedBytes, HoldsTheBytesRightBeforeTheForbiddenPage) {
  const std::string text(5000, 'x');
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{4096}, text.size()}) {
    const GuardedBytes bytes(std::string_view(text).substr(0, size));
    EXPECT_EQ(bytes.view(), text.substr(0, size));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes.data() + bytes.size()) % 4096, 0U);
  }
}

TEST(GuardedBytesDeathTest, EndsAProgramThatReadsTooFar) {
  const GuardedBytes bytes("abc");
  EXPECT_DEATH(
      {
        const volatile char* const behind = bytes.data() + bytes.size();
        std::exit(*behind);
      },
      "");
}

TEST(GuardedText, EndsWithItsTerminator) {
  const GuardedText text("abc");
  EXPECT_STREQ(text.c_str(), "abc");
}

}  // namespace
