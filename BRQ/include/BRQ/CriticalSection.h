#pragma once

#include <atomic>
#include <cstdint>

#include "BRQ/Export.h"

namespace BRQ::Threading {

namespace Native_OS {

// A recursive lock: the thread that holds it may enter again and must leave as often. Free or taken
// without contention it costs one atomic operation; a thread that waits long sleeps.
// An all-zero section is a valid, free one.
class BRQ_API CCriticalSection {
 public:
  constexpr CCriticalSection() noexcept = default;
  // A free section with this number of looks, see Init.
  explicit constexpr CCriticalSection(unsigned spin) noexcept : spin_(spin) {}
  CCriticalSection(const CCriticalSection&) = delete;
  CCriticalSection& operator=(const CCriticalSection&) = delete;

  // Sets how often Enter looks at a taken section before it sleeps. Call it before the section is
  // shared.
  void Init(unsigned spin) noexcept { spin_ = spin; }
  // Takes the section; waits while another thread holds it.
  void Enter() noexcept;
  // Takes the section if that needs no waiting; tells whether it did.
  bool TryEnter() noexcept;
  // Gives the section back once. Only the thread that holds it may call this.
  void Leave() noexcept;

 private:
  void wait_and_take() noexcept;

  std::atomic<const void*> owner_{nullptr};
  std::atomic<std::uint32_t> state_{0};
  std::uint32_t depth_ = 0;
  std::uint32_t spin_ = 0;
};

}  // namespace Native_OS

// Holds a critical section from its construction to its end.
class CSyncGuard {
 public:
  explicit CSyncGuard(Native_OS::CCriticalSection& section) noexcept : section_(section) {
    section_.Enter();
  }
  ~CSyncGuard() { section_.Leave(); }
  CSyncGuard(const CSyncGuard&) = delete;
  CSyncGuard& operator=(const CSyncGuard&) = delete;

 private:
  Native_OS::CCriticalSection& section_;
};

}  // namespace BRQ::Threading
