#include "BRQ/Time.h"

#include <atomic>
#include <cerrno>
#include <ctime>

namespace BRQ::Misc {
namespace {

std::uint32_t system_seconds() {
  return static_cast<std::uint32_t>(std::time(nullptr));
}

// The end is an absolute time: however many signals interrupt the sleep, they neither shorten nor
// lengthen it.
void system_sleep(unsigned milliseconds) {
  constexpr long nanoseconds_of_second = 1000000000L;
  timespec end{};
  clock_gettime(CLOCK_MONOTONIC, &end);
  end.tv_sec += static_cast<std::time_t>(milliseconds / 1000);
  end.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000L;
  if (end.tv_nsec >= nanoseconds_of_second) {
    end.tv_nsec -= nanoseconds_of_second;
    ++end.tv_sec;
  }
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
  }
}

std::atomic<const Clock*> current_clock{&system_clock};

}  // namespace

const Clock system_clock{&system_seconds, &system_sleep, &std::chrono::steady_clock::now};

void set_clock(const Clock* clock) noexcept {
  current_clock.store(clock != nullptr ? clock : &system_clock);
}

bool is_clock_replaced() noexcept {
  return current_clock.load() != &system_clock;
}

std::uint32_t seconds_now() noexcept {
  return current_clock.load()->seconds();
}

std::chrono::steady_clock::time_point steady_now() noexcept {
  const auto steady = current_clock.load()->steady;
  return steady != nullptr ? steady() : std::chrono::steady_clock::now();
}

void msleep(unsigned milliseconds) noexcept {
  current_clock.load()->sleep(milliseconds);
}

}  // namespace BRQ::Misc
