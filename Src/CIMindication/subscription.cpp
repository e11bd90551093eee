#include <exception>
#include <memory>
#include <string>

#include "BRQ/Trace.h"
#include "CIMclasses/text.h"
#include "CIMindication/interop_instances.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr int line_of_missing_property = 51;
constexpr int line_of_second_subscription = 59;
constexpr int line_of_missing_data = 64;
constexpr int line_of_failure = 123;

constexpr _properties_ end_of_properties{nullptr, static_cast<std::uint32_t>(-1), 0, nullptr,
                                         nullptr};

int fail(const char* text, int line) noexcept {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::error, indication_source, line, text);
  return status::failure;
}

// Replaces the value of a property; false when the list has no such property.
bool set_prop_value(_properties_* list, const char* name, const char* value) noexcept {
  while (list->name != nullptr && !equal_ignoring_case(list->name, name)) ++list;
  if (list->name == nullptr) {
    BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::warning, indication_source,
                 line_of_missing_property, "set_prop_value: Missing Indication-Property: %s", name);
    return false;
  }
  list->values = value;
  return true;
}

_properties_ reference_property(const char* name, const char* class_name, CIMelement* instance) {
  return {name, type::reference, 1, class_name, instance};
}

// The name of the new instance; null when the server did not make one.
CIMelement* create(CIMcontainer& container, const char* class_name,
                   const _properties_* properties) noexcept {
  choose_interop_class(container, class_name);
  return reinterpret_cast<CIMelement*>(container.Imethod_CreateInstance(properties));
}

// Makes the three instances on the server and stops at the first that it refuses.
bool create_instances(CIMcontainer& container, const _properties_* filter,
                      const _properties_* handler) noexcept {
  CIMelement* const new_filter = create(container, filter_class, filter);
  if (new_filter == nullptr) return false;
  CIMelement* const new_handler = create(container, handler_class, handler);
  if (new_handler == nullptr) return false;
  const _properties_ subscription[] = {reference_property("Filter", filter_class, new_filter),
                                       reference_property("Handler", handler_class, new_handler),
                                       end_of_properties};
  return create(container, subscription_class, subscription) != nullptr;
}

// The server may send a first indication before it answers, so these requests count as receiving.
bool create_while_receiving(CIMcontainer& container, const _properties_* filter,
                            const _properties_* handler) noexcept {
  change_listener_count(1);
  if (!create_instances(container, filter, handler)) return false;
  change_listener_count(-1);
  return true;
}

bool start_listener(CIMcontainer& container, IndicationCallback callback, int port) {
  auto listener = std::make_unique<CIMindication>();
  listener->pCallBack = callback;
  listener->port = port;
  listener->limits = container.listenerLimits;
  container.listener = listener.release();
  return container.listener->start_Listener() == status::success;
}

// Throws std::bad_alloc, as long as nothing has happened but changes of the lists.
int make_subscription(CIMcontainer& container, IndicationCallback callback, int port,
                      _properties_* filter, _properties_* handler) {
  if (!set_prop_value(filter, PROP_CREATIONCLASSNAME, filter_class) ||
      !set_prop_value(handler, PROP_CREATIONCLASSNAME, handler_class))
    return status::failure;
  const std::string owner = owner_name(container);
  if (!set_prop_value(filter, PROP_SYSTEMNAME, owner.c_str()) ||
      !set_prop_value(handler, PROP_SYSTEMNAME, owner.c_str()))
    return status::failure;
  const std::string destination =
      "http://" + container.localIP + ":" + std::to_string(port) + "/test";
  if (!set_prop_value(handler, PROP_DESTINATION, destination.c_str())) return status::failure;

  if (start_listener(container, callback, port) &&
      create_while_receiving(container, filter, handler))
    return status::success;
  reset_listener_count();
  fail("subscribe: cannot subscribe Indication!", line_of_failure);
  container.unsubscribe();
  return status::failure;
}

}  // namespace

int CIMcontainer::subscribe(IndicationCallback callback, int listener_port, _properties_* filter,
                            _properties_* handler) noexcept {
  if (listener != nullptr)
    return fail("subscribe: Indication-Subscription already done!", line_of_second_subscription);
  if (callback == nullptr || listener_port < 1 || filter == nullptr || handler == nullptr)
    return fail("subscribe: missing data", line_of_missing_data);
  try {
    return make_subscription(*this, callback, listener_port, filter, handler);
  } catch (const std::exception& error) {
    trace_indication_exception("subscribe", error.what());
    return status::failure;
  }
}

}  // namespace zuCIM
