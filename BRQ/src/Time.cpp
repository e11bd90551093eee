#include "BRQ/Time.h"

#include <atomic>
#include <cerrno>
#include <ctime>

namespace BRQ::Misc {
namespace {

std::uint32_t system_seconds() {
  return static_cast<std::uint32_t>(std::time(nullptr));
}

// A signal that interrupts the sleep does not shorten it.
void system_sleep(unsigned milliseconds) {
  timespec left{static_cast<std::time_t>(milliseconds / 1000),
                static_cast<long>(milliseconds % 1000) * 1000000L};
  while (nanosleep(&left, &left) == -1 && errno == EINTR) {
  }
}

std::atomic<const Clock*> current_clock{&system_clock};

}  // namespace

const Clock system_clock{&system_seconds, &system_sleep};

void set_clock(const Clock* clock) noexcept {
  current_clock.store(clock != nullptr ? clock : &system_clock);
}

std::uint32_t seconds_now() noexcept {
  return current_clock.load()->seconds();
}

void msleep(unsigned milliseconds) noexcept {
  current_clock.load()->sleep(milliseconds);
}

}  // namespace BRQ::Misc
