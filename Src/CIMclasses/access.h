#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#endif

namespace zuCIM {

// A freed node stays readable as long as its chunk lives. The address sanitizer is told, so that it
// finds those who read it; without it these do nothing.
inline void forbid_access([[maybe_unused]] const void* block,
                          [[maybe_unused]] std::size_t size) noexcept {
#if defined(__SANITIZE_ADDRESS__)
  ASAN_POISON_MEMORY_REGION(block, size);
#endif
}
inline void allow_access([[maybe_unused]] const void* block,
                         [[maybe_unused]] std::size_t size) noexcept {
#if defined(__SANITIZE_ADDRESS__)
  ASAN_UNPOISON_MEMORY_REGION(block, size);
#endif
}

}  // namespace zuCIM
