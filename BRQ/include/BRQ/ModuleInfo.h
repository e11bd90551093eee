#pragma once

#include <atomic>

#include "BRQ/Export.h"

namespace BRQ::Misc {

// Who writes traces: a module's number, name and version, and the mask of trace levels that are on.
// Thread rule: the mask may be read and changed from any thread at any time.
class BRQ_API CModuleInfo {
 public:
  // `name` and `version` are NUL-terminated texts that must outlive the module record. The mask
  // starts with what the environment variable ZUBRQ_TRACE says for `name`, else with 0 (silent).
  CModuleInfo(unsigned number, const char* name, const char* version);

  // The module's number.
  unsigned number() const { return number_; }
  // The module's name, as it stands in trace lines.
  const char* name() const { return name_; }
  // The module's version text.
  const char* version() const { return version_; }

  // True when any of the bits in `level` is switched on. Costs one relaxed load.
  bool is_enabled(unsigned level) const {
    return (mask_.load(std::memory_order_relaxed) & level) != 0;
  }
  // The mask of levels that are on.
  unsigned trace_mask() const { return mask_.load(std::memory_order_relaxed); }
  // Switches exactly the levels in `mask` on.
  void set_trace_mask(unsigned mask) { mask_.store(mask, std::memory_order_relaxed); }

 private:
  std::atomic<unsigned> mask_;
  unsigned number_;
  const char* name_;
  const char* version_;
};

// The mask that `settings` (as in "zuCIM=0x14,other=2") gives to the module `name`. Entries are
// separated by "," or ";"; a mask is a 32-bit number in C notation; the first entry of a module
// counts. 0 when the module is not named or its mask is malformed, and for a null `settings`.
BRQ_API unsigned trace_mask_from(const char* settings, const char* name) noexcept;

}  // namespace BRQ::Misc
