#include "BRQ/FileDescriptorSet.h"

#include <algorithm>
#include <cerrno>

namespace BRQ::Misc {
namespace {

// `poll` leaves negative descriptors out; here they are wrong like any other that is not open.
bool is_not_open(const pollfd& entry) {
  return entry.fd < 0 || (entry.revents & POLLNVAL) != 0;
}

}  // namespace

bool CFileDescriptorSet::Add(int descriptor) noexcept {
  const auto is_same = [descriptor](const pollfd& entry) { return entry.fd == descriptor; };
  if (std::ranges::any_of(descriptors_, is_same)) return true;
  try {
    descriptors_.push_back(pollfd{descriptor, POLLIN, 0});
    return true;
  } catch (...) {
    return false;
  }
}

int CFileDescriptorSet::WaitReadable(int milliseconds) noexcept {
  for (pollfd& entry : descriptors_) entry.revents = 0;
  if (std::ranges::any_of(descriptors_, is_not_open)) return fail(EBADF);
  const int ready = ::poll(descriptors_.data(), descriptors_.size(), milliseconds);
  if (ready < 0) return fail(errno);
  return std::ranges::any_of(descriptors_, is_not_open) ? fail(EBADF) : ready;
}

// Nothing is readable after a failure.
int CFileDescriptorSet::fail(int error) noexcept {
  for (pollfd& entry : descriptors_) entry.revents = 0;
  errno = error;
  return -1;
}

bool CFileDescriptorSet::IsReadable(int descriptor) const noexcept {
  for (const pollfd& entry : descriptors_)
    if (entry.fd == descriptor && entry.revents != 0) return true;
  return false;
}

}  // namespace BRQ::Misc
