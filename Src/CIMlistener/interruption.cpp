#include "CIMlistener/interruption.h"

#include <cerrno>

#include "BRQ/Time.h"

namespace zuCIM {

bool is_to_be_repeated() noexcept {
  constexpr unsigned retry_milliseconds = 1000;
  if (errno != EINTR && errno != EAGAIN) return false;
  if (errno == EAGAIN) BRQ::Misc::msleep(retry_milliseconds);
  errno = 0;
  return true;
}

}  // namespace zuCIM
