#pragma once

#include <atomic>

#include "zuCIM/connection.h"

namespace zuCIM {

// The busy flag is a plain field that several threads look at, so every access goes through here.

inline bool is_busy(const CIMconnection& connection) noexcept {
  return std::atomic_ref<bool>(const_cast<bool&>(connection.esxiBusy)).load();
}

inline void set_busy(CIMconnection& connection, bool busy) noexcept {
  std::atomic_ref<bool>(connection.esxiBusy).store(busy);
}

}  // namespace zuCIM
