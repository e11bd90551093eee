#pragma once

#include <poll.h>

#include <vector>

#include "BRQ/Export.h"

namespace BRQ::Misc {

// A set of descriptors to wait on. Any descriptor number is good: `poll` is used underneath.
class BRQ_API CFileDescriptorSet {
 public:
  // Adds a descriptor, unless it is in the set already; false when memory is short.
  bool Add(int descriptor) noexcept;
  // Takes all descriptors out.
  void Clear() noexcept { descriptors_.clear(); }
  // Waits until a descriptor can be read without blocking (data, end of stream or an error on it),
  // at most `milliseconds`; a negative time has no end. Returns the number of such descriptors, 0
  // on time-out, or -1 with `errno` set: EBADF when one of them is not open, EINTR when a signal
  // came first. An empty set waits the whole time.
  int WaitReadable(int milliseconds) noexcept;
  // Whether the last wait found `descriptor` readable; false after a wait that failed.
  bool IsReadable(int descriptor) const noexcept;

 private:
  int fail(int error) noexcept;

  std::vector<pollfd> descriptors_;
};

}  // namespace BRQ::Misc
