#include "BRQ/ModuleInfo.h"

#include <cstdlib>
#include <cstring>

namespace BRQ::Misc {

CModuleInfo::CModuleInfo(unsigned number, const char* name, const char* version)
    : mask_(trace_mask_from(std::getenv("ZUBRQ_TRACE"), name)),
      number_(number),
      name_(name),
      version_(version) {}

namespace {

// Reads a mask in C notation (0x14, 20, 024) that ends at `end`; 0 when it is no number.
unsigned parse_mask(const char* text, const char* end) {
  if (*text < '0' || *text > '9') return 0;
  char* stop = nullptr;
  const unsigned long long mask = std::strtoull(text, &stop, 0);
  return stop == end && mask <= 0xFFFFFFFFU ? static_cast<unsigned>(mask) : 0;
}

}  // namespace

unsigned trace_mask_from(const char* settings, const char* name) noexcept {
  if (settings == nullptr || name == nullptr) return 0;
  const std::size_t name_length = std::strlen(name);
  for (const char* entry = settings; *entry != '\0';) {
    const char* end = entry + std::strcspn(entry, ",;");
    if (std::strncmp(entry, name, name_length) == 0 && entry[name_length] == '=')
      return parse_mask(entry + name_length + 1, end);
    entry = *end == '\0' ? end : end + 1;
  }
  return 0;
}

}  // namespace BRQ::Misc
