#include "common.h"

#include <utility>

#include "../indications/parts.h"

namespace simulator {

namespace {

// Whether a property is defined or overridden in `type` or, if `deep`, in a class between `type`
// and `asked`.
bool is_local(const Class& type, const std::string& property_name, const Class& asked) {
  for (const Class* each = &type; each != nullptr; each = each->superclass) {
    const auto position = each->find_property(property_name);
    if (position && !each->properties[*position].propagated) return true;
    if (each == &asked) break;
  }
  return false;
}

// Refuses to put another value in the place of a key or of what is read-only.
void check_change(const Namespace& name_space, const Instance& instance, const Change& change) {
  const Property& property = instance.type->properties[change.position];
  const ValuePtr& current = instance.values[change.position];
  if (name_space.is_same(property, current ? *current : Value{}, change.value)) return;
  const std::string what = instance.type->name + '.' + property.name;
  if (has_qualifier(property.qualifiers, "Key")) {
    throw CimError(CimStatus::invalid_parameter, what + " is a key and cannot change");
  }
  const Qualifier* write = find_qualifier(property.qualifiers, "Write");
  if (write != nullptr && !has_qualifier(property.qualifiers, "Write")) {
    throw CimError(CimStatus::access_denied, what + " is read-only");
  }
}

}  // namespace

const Class& require_class(const Namespace& name_space, const std::string& class_name,
                           CimStatus otherwise) {
  const Class* type = name_space.find_class(class_name);
  if (type == nullptr) throw CimError(otherwise, class_name);
  return *type;
}

const Instance& require_instance(const Namespace& name_space, const InstanceName& name) {
  const Class& type = require_class(name_space, name.class_name, CimStatus::invalid_class);
  const Instance* instance = name_space.find_instance(type, name);
  if (instance == nullptr) {
    throw CimError(CimStatus::not_found, "no such instance of " + type.name);
  }
  return *instance;
}

Instance& require_instance(Namespace& name_space, const InstanceName& name) {
  return const_cast<Instance&>(require_instance(std::as_const(name_space), name));
}

void change_instance(const Namespace& name_space, Instance& instance, std::vector<Change> changes) {
  for (const Change& each : changes) check_change(name_space, instance, each);
  Instance changed = instance;
  for (Change& each : changes) changed.assign(each.position, std::move(each.value));
  check_part(name_space, changed);
  instance = std::move(changed);
}

std::vector<std::size_t> InstanceView::properties_of(const Class& type) const {
  std::vector<std::size_t> result;
  for (std::size_t i = 0; i < type.properties.size(); ++i) {
    const std::string& name = type.properties[i].name;
    if (!list.contains(name)) continue;
    if (!deep && !asked.find_property(name)) continue;
    if (local_only && !is_local(deep ? type : asked, name, asked)) continue;
    result.push_back(i);
  }
  return result;
}

Detail read_detail(const OperationContext& context, bool qualifiers_by_default) {
  Detail detail;
  detail.qualifiers = context.parameters.boolean("IncludeQualifiers", qualifiers_by_default);
  detail.class_origin = context.parameters.boolean("IncludeClassOrigin", false);
  detail.style = context.style;
  return detail;
}

void append_class_view(std::string& out, const Class& type, bool local_only,
                       const PropertyList& list, const Detail& detail) {
  ClassView view{{}, local_only};
  for (std::size_t i = 0; i < type.properties.size(); ++i) {
    const Property& property = type.properties[i];
    if (local_only && property.propagated) continue;
    if (list.contains(property.name)) view.properties.push_back(i);
  }
  append_class(out, type, view, detail);
}

}  // namespace simulator
