#include "BRQ/FileDescriptorSet.h"

#include <cerrno>

namespace BRQ::Misc {

bool CFileDescriptorSet::Add(int descriptor) noexcept {
  try {
    descriptors_.push_back(pollfd{descriptor, POLLIN, 0});
    return true;
  } catch (...) {
    return false;
  }
}

int CFileDescriptorSet::WaitReadable(int milliseconds) noexcept {
  const int ready = ::poll(descriptors_.data(), descriptors_.size(), milliseconds);
  for (const pollfd& entry : descriptors_)
    if (ready > 0 && (entry.revents & POLLNVAL) != 0) {
      errno = EBADF;
      return -1;
    }
  return ready;
}

bool CFileDescriptorSet::IsReadable(int descriptor) const noexcept {
  for (const pollfd& entry : descriptors_)
    if (entry.fd == descriptor && entry.revents != 0) return true;
  return false;
}

}  // namespace BRQ::Misc
