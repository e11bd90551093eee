#include "parts.h"

#include "../cim_error.h"
#include "../names.h"
#include "../query.h"
#include "destination.h"

namespace simulator {

namespace {

constexpr const char* filter_class = "CIM_IndicationFilter";
constexpr const char* handler_class = "CIM_IndicationHandler";
constexpr const char* default_system_class = "CIM_ComputerSystem";
constexpr const char* default_system = "localhost";
constexpr const char* default_language = "WQL";

bool is_given(const InstanceDeclaration& declared, const char* property) {
  for (const auto& each : declared.values) {
    if (same_name(each.name, property)) return !each.value.is_null();
  }
  return false;
}

void add_default(InstanceDeclaration& declared, const char* property, const std::string& text) {
  if (is_given(declared, property)) return;
  declared.values.push_back({property, "string", Shape::scalar, Value{text}, {}});
}

void check_handler(const Instance& handler) {
  if (!handler.type->find_property("Destination")) return;
  const std::string* destination = handler.value("Destination").text();
  if (destination == nullptr) refuse("a handler needs a Destination");
  if (!is_destination(*destination)) refuse("indications cannot be sent to " + *destination);
}

void check_subscription(const Namespace& name_space, const Instance& subscription) {
  for (const char* property : {"Filter", "Handler"}) {
    if (referenced(name_space, subscription, property) == nullptr) {
      refuse(std::string(property) + " does not name an instance of " + name_space.name());
    }
  }
}

const Instance* find_target(const Namespace& name_space, const Property& property,
                            const Reference& reference) {
  const Class* type = name_space.find_class(reference.target.class_name);
  if (type == nullptr || reference.is_class) return nullptr;
  if (!is_a(name_space, *type, property.reference_class)) return nullptr;
  if (!reference.name_space.empty() && !same_name(reference.name_space, name_space.name())) {
    return nullptr;
  }
  return name_space.find_instance(*type, reference.target);
}

}  // namespace

SubscriptionPart part_of(const Namespace& name_space, const Class& type) {
  if (is_a(name_space, type, filter_class)) return SubscriptionPart::filter;
  if (is_a(name_space, type, handler_class)) return SubscriptionPart::handler;
  if (is_a(name_space, type, subscription_class)) return SubscriptionPart::subscription;
  return SubscriptionPart::none;
}

void add_key_defaults(const Class& type, InstanceDeclaration& declared) {
  add_default(declared, "SystemCreationClassName", default_system_class);
  add_default(declared, "SystemName", default_system);
  add_default(declared, "CreationClassName", type.name);
}

void check_part(const Namespace& name_space, const Instance& instance) {
  switch (part_of(name_space, *instance.type)) {
    case SubscriptionPart::filter:
      class_asked_by(instance);
      return;
    case SubscriptionPart::handler:
      return check_handler(instance);
    case SubscriptionPart::subscription:
      return check_subscription(name_space, instance);
    case SubscriptionPart::none:
      return;
  }
}

std::string class_asked_by(const Instance& filter) {
  const std::string* query = filter.value("Query").text();
  const std::string* language = filter.value("QueryLanguage").text();
  if (query == nullptr) refuse("a filter needs a Query");
  return read_filter_query(language == nullptr ? default_language : *language, *query);
}

void check_is_unused(const Namespace& name_space, const Instance& instance) {
  for (const Instance* each : all_instances(name_space, subscription_class)) {
    for (const char* property : {"Filter", "Handler"}) {
      if (referenced(name_space, *each, property) == &instance) {
        throw CimError(CimStatus::failed, "a subscription still names this " + instance.type->name);
      }
    }
  }
}

const Instance* referenced(const Namespace& name_space, const Instance& subscription,
                           std::string_view property) {
  const auto position = subscription.type->find_property(property);
  const ReferencePtr* reference = subscription.value(property).reference();
  if (!position || reference == nullptr) return nullptr;
  return find_target(name_space, subscription.type->properties[*position], **reference);
}

std::vector<const Instance*> all_instances(const Namespace& name_space,
                                           std::string_view class_name) {
  std::vector<const Instance*> result;
  const Class* top = name_space.find_class(class_name);
  if (top == nullptr) return result;
  for (const Class* type : with_subclasses(name_space, *top)) {
    for (const auto& each : name_space.instances_of(*type).list()) result.push_back(each.get());
  }
  return result;
}

}  // namespace simulator
