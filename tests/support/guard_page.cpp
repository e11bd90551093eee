#include "support/guard_page.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>

namespace {

std::size_t page_size() {
  static const std::size_t size = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  return size;
}

// The number of whole pages that `size` bytes need, in bytes.
std::size_t whole_pages(std::size_t size) {
  return (size + page_size() - 1) / page_size() * page_size();
}

void check(bool good) {
  if (!good) throw std::system_error(errno, std::generic_category(), "guard page");
}

}  // namespace

GuardedBytes::GuardedBytes(std::string_view bytes)
    : mapping_size_(whole_pages(bytes.size()) + page_size()), size_(bytes.size()) {
  mapping_ =
      ::mmap(nullptr, mapping_size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  check(mapping_ != MAP_FAILED);
  char* const guard = static_cast<char*>(mapping_) + (mapping_size_ - page_size());
  begin_ = guard - size_;
  std::ranges::copy(bytes, begin_);
  check(::mprotect(guard, page_size(), PROT_NONE) == 0);
}

GuardedBytes::~GuardedBytes() {
  ::munmap(mapping_, mapping_size_);
}

GuardedText::GuardedText(std::string_view text) : bytes_(std::string(text) + '\0') {}
