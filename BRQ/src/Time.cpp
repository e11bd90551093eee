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
// lengthen it. The steady clock is the monotonic one of the system.
void system_sleep(unsigned milliseconds) {
  using namespace std::chrono;
  const auto end = steady_clock::now().time_since_epoch() + std::chrono::milliseconds(milliseconds);
  const auto whole = floor<seconds>(end);
  timespec time{};
  time.tv_sec = static_cast<std::time_t>(whole.count());
  time.tv_nsec = static_cast<long>(nanoseconds(end - whole).count());
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr) == EINTR) {
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
