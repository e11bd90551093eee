#pragma once

#include <malloc.h>

#include <concepts>
#include <cstddef>
#include <stdexcept>
#include <type_traits>

// Makes the n-th allocation of the calling thread fail; other threads are not disturbed.

// Which allocations count and can fail.
enum class AllocationKind {
  // malloc, calloc, realloc and all that is built on them, such as strdup: they return null.
  c,
  // operator new: it throws std::bad_alloc, or returns null in its nothrow form.
  cpp,
  // Both, counted together.
  any,
};

// What fails: the n-th allocation alone, the next one too, or everything from it on.
enum class FailureSpan { once, twice, from_then_on };

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZUCIM_SANITIZER_ALLOCATES 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZUCIM_SANITIZER_ALLOCATES 1
#endif
#endif
#ifndef ZUCIM_SANITIZER_ALLOCATES
#define ZUCIM_SANITIZER_ALLOCATES 0
#endif

// Whether malloc and its kin can be made to fail. Under address and thread sanitizers, which bring
// an allocator of their own, only operator new can.
inline constexpr bool malloc_can_fail = ZUCIM_SANITIZER_ALLOCATES == 0;

// While it lives, and is armed, the n-th allocation of the thread that made it fails. One at a time
// in a thread. n starts at 1; 0 only counts.
class AllocationFailure {
 public:
  explicit AllocationFailure(unsigned nth, AllocationKind kind = AllocationKind::any,
                             FailureSpan span = FailureSpan::once);
  ~AllocationFailure();
  AllocationFailure(const AllocationFailure&) = delete;
  AllocationFailure& operator=(const AllocationFailure&) = delete;

  // Stops counting and failing until arm is called.
  void disarm();
  // Counts on.
  void arm();
  // Whether an allocation was made to fail.
  bool happened() const;
  // How many allocations were asked for while armed, the failed one included.
  unsigned count() const;
};

// While it lives, the allocations of its thread neither count nor fail. For tools of a test that
// the tested code calls.
class UncountedAllocations {
 public:
  UncountedAllocations();
  ~UncountedAllocations();
  UncountedAllocations(const UncountedAllocations&) = delete;
  UncountedAllocations& operator=(const UncountedAllocations&) = delete;

 private:
  bool were_counted_;
};

// Runs `body` for n = 1, 2, ... with the n-th allocation failing, until it runs through without a
// failure; returns that run's number of allocations. A body that takes the AllocationFailure gets
// it disarmed, and arms it around the calls that are tested:
//
//   for_each_failing_allocation([](AllocationFailure& failure) {
//     CIMarray array;
//     failure.arm();
//     void* const block = array.putargv("x", -1, 15);
//     failure.disarm();
//     EXPECT_EQ(block == nullptr, failure.happened());
//   });
template <class Body>
unsigned for_each_failing_allocation(const Body& body, AllocationKind kind = AllocationKind::any,
                                     FailureSpan span = FailureSpan::once) {
  constexpr unsigned most_allocations = 1000000;
  for (unsigned nth = 1; nth < most_allocations; ++nth) {
    AllocationFailure failure(nth, kind, span);
    if constexpr (std::invocable<const Body&, AllocationFailure&>) {
      failure.disarm();
      body(failure);
    } else {
      body();
    }
    failure.disarm();
    if (!failure.happened()) return failure.count();
  }
  throw std::runtime_error("the body makes allocations without end");
}

// Whether `body` gives back all the memory that it takes: in one of some rounds, so many runs leave
// less behind than one small block each. It takes a few until the heap has found its shape, all the
// more where other threads take part. A sanitizer, whose allocator knows nothing of this, looks for
// leaks itself.
template <class Body>
bool leaves_nothing(unsigned runs, const Body& body) {
  constexpr int most_rounds = 20;
  constexpr std::size_t less_than_a_block = 2 * sizeof(void*);
  for (int round = 0; round < most_rounds; ++round) {
    const std::size_t before = mallinfo2().uordblks;
    for (unsigned i = 0; i < runs; ++i) body();
    if (mallinfo2().uordblks < before + runs * less_than_a_block) return true;
  }
  return false;
}
