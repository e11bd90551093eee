#include <atomic>
#include <exception>
#include <string>

#include "BRQ/Trace.h"
#include "CIMindication/interop_instances.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr int line_before_request = 240;
constexpr int line_after_request = 242;
constexpr int line_of_listed_instance = 256;
constexpr int line_of_listener = 285;

constexpr unsigned subscription_is_missing = 0x1;
constexpr unsigned filter_is_missing = 0x10;
constexpr unsigned handler_is_missing = 0x100;
constexpr unsigned listener_is_missing = 0x1000;

bool is_debugging() noexcept {
  return std::atomic_ref<int>(do_cim_debug).load(std::memory_order_relaxed) != 0;
}

// Asks the server for the names of the current class's instances.
CIMelement* list_instances(CIMcontainer& container) noexcept {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::detail, indication_source, line_before_request,
               "Before can.Imethod_EnumerateInstanceNames()");
  CIMelement* const names = container.Imethod_EnumerateInstanceNames();
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::detail, indication_source, line_after_request,
               "After can.Imethod_EnumerateInstanceNames()");
  return names;
}

void trace_system_name(const char* class_name, CIMelement& instance) noexcept {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::warning, indication_source,
               line_of_listed_instance, "chk_subscr: %-16s: SystemName = %s", class_name,
               instance.getValueOf(elem::KEYBINDING, PROP_SYSTEMNAME));
}

void trace_system_names(const char* class_name, CIMelement* names) noexcept {
  CIMelement* instance = names;
  while ((instance = instance->findelement(elem::INSTANCENAME, 0)) != nullptr) {
    trace_system_name(class_name, *instance);
    instance = instance->getLastElement()->next;
  }
}

// Whether the server lacks this context's instance of a class.
bool chk_subscr(CIMcontainer& container, const char* class_name) noexcept {
  choose_interop_class(container, class_name);
  try {
    const std::string owner = owner_name(container);
    CIMelement* const names = list_instances(container);
    const bool is_missing = find_own_instance(names, owner) == nullptr;
    if (is_debugging()) trace_system_names(class_name, names);
    return is_missing;
  } catch (const std::exception& error) {
    trace_indication_exception("subscribe_check", error.what());
    return true;
  }
}

bool is_listening(CIMcontainer& container) noexcept {
  return container.listener != nullptr && container.listener->check_Listener() == 0;
}

}  // namespace

unsigned CIMcontainer::subscribe_check() noexcept {
  unsigned missing = 0;
  if (chk_subscr(*this, subscription_class)) missing |= subscription_is_missing;
  if (chk_subscr(*this, filter_class)) missing |= filter_is_missing;
  if (chk_subscr(*this, handler_class)) missing |= handler_is_missing;
  if (!is_listening(*this)) missing |= listener_is_missing;
  if (is_debugging())
    BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::warning, indication_source, line_of_listener,
                 missing < listener_is_missing ? "Listener is running" : "Listener was stopped");
  return missing;
}

}  // namespace zuCIM
