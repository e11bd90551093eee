#pragma once

#include <atomic>

#include "zuCIM/indication.h"

namespace zuCIM {

// Counts a reader in ListenerThreadIsActive from its construction to its end.
class ActiveReader {
 public:
  ActiveReader() noexcept { std::atomic_ref<int>(ListenerThreadIsActive).fetch_add(1); }
  ~ActiveReader() { std::atomic_ref<int>(ListenerThreadIsActive).fetch_sub(1); }
  ActiveReader(const ActiveReader&) = delete;
  ActiveReader& operator=(const ActiveReader&) = delete;
};

}  // namespace zuCIM
