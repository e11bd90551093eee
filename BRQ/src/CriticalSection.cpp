#include "BRQ/CriticalSection.h"

namespace BRQ::Threading::Native_OS {
namespace {

constexpr std::uint32_t section_free = 0;
constexpr std::uint32_t section_taken = 1;
constexpr std::uint32_t section_awaited = 2;

// A thread is known by the address of a variable of its own.
const void* this_thread() {
  static thread_local char identity;
  return &identity;
}

}  // namespace

bool CCriticalSection::TryEnter() noexcept {
  if (owner_.load(std::memory_order_relaxed) == this_thread()) {
    ++depth_;
    return true;
  }
  std::uint32_t expected = section_free;
  if (!state_.compare_exchange_strong(expected, section_taken, std::memory_order_acquire))
    return false;
  owner_.store(this_thread(), std::memory_order_relaxed);
  depth_ = 1;
  return true;
}

void CCriticalSection::Enter() noexcept {
  if (!TryEnter()) wait_and_take();
}

void CCriticalSection::wait_and_take() noexcept {
  for (std::uint32_t tries = 0; tries < spin_; ++tries)
    if (state_.load(std::memory_order_relaxed) == section_free && TryEnter()) return;
  while (state_.exchange(section_awaited, std::memory_order_acquire) != section_free)
    state_.wait(section_awaited, std::memory_order_relaxed);
  owner_.store(this_thread(), std::memory_order_relaxed);
  depth_ = 1;
}

void CCriticalSection::Leave() noexcept {
  if (--depth_ != 0) return;
  owner_.store(nullptr, std::memory_order_relaxed);
  if (state_.exchange(section_free, std::memory_order_release) == section_awaited)
    state_.notify_one();
}

}  // namespace BRQ::Threading::Native_OS
