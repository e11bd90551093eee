#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define ZUCIM_TELLS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZUCIM_TELLS_SANITIZER 1
#endif
#endif

#ifdef ZUCIM_TELLS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

namespace zuCIM {

// What is freed in a chunk stays readable as long as the chunk lives. The address sanitizer is
// told, so that it finds those who read it; without it these do nothing.
inline void forbid_access([[maybe_unused]] const void* block,
                          [[maybe_unused]] std::size_t size) noexcept {
#ifdef ZUCIM_TELLS_SANITIZER
  ASAN_POISON_MEMORY_REGION(block, size);
#endif
}
inline void allow_access([[maybe_unused]] const void* block,
                         [[maybe_unused]] std::size_t size) noexcept {
#ifdef ZUCIM_TELLS_SANITIZER
  ASAN_UNPOISON_MEMORY_REGION(block, size);
#endif
}

}  // namespace zuCIM
