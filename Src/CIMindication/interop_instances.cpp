#include "CIMindication/interop_instances.h"

#include <atomic>

#include "BRQ/Trace.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* interop_namespace = "root/interop";

// Eight upper-case hexadecimal digits.
std::string hexadecimal(std::uint32_t number) {
  std::string digits;
  for (unsigned shift = 32; shift > 0; shift -= 4)
    digits += "0123456789ABCDEF"[number >> (shift - 4) & 0xFU];
  return digits;
}

}  // namespace

void choose_interop_class(CIMcontainer& container, const char* class_name) noexcept {
  container.setCurrentClass(class_name, interop_namespace);
}

std::string owner_name(const CIMcontainer& container) {
  return container.localIP + "_" + hexadecimal(container.createdAt);
}

CIMelement* find_own_instance(CIMelement* names, const std::string& owner) noexcept {
  return names->findInstanceName(PROP_SYSTEMNAME, owner.c_str());
}

void change_listener_count(int difference) noexcept {
  std::atomic_ref<int>(ListenerThreadIsActive).fetch_add(difference);
}

void reset_listener_count() noexcept {
  std::atomic_ref<int>(ListenerThreadIsActive).store(0);
}

void trace_indication_exception(const char* function, const char* text, int line) noexcept {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::error, indication_source, line,
               "%s: Exception raised: %s", function, text);
}

}  // namespace zuCIM
