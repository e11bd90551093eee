#include <utility>
#include <vector>

#include "../indications/parts.h"
#include "../instance_builder.h"
#include "../names.h"
#include "common.h"

namespace simulator {

namespace {

void check_can_have_instances(const Class& type) {
  if (has_qualifier(type.qualifiers, "Abstract")) {
    throw CimError(CimStatus::not_supported, type.name + " is abstract");
  }
  if (type.keys.empty()) {
    throw CimError(CimStatus::invalid_parameter, type.name + " has no keys");
  }
}

void check_keys_are_given(const Instance& instance) {
  for (const std::size_t key : instance.type->keys) {
    if (instance.values[key]) continue;
    throw CimError(CimStatus::invalid_parameter,
                   "the key " + instance.type->properties[key].name + " has no value");
  }
}

std::size_t require_property(const Class& type, const std::string& name) {
  const auto position = type.find_property(name);
  if (!position) throw CimError(CimStatus::no_such_property, type.name + '.' + name);
  return *position;
}

// The values that a declaration gives for properties of the list.
std::vector<Change> given_changes(const Class& type, InstanceDeclaration&& declared,
                                  const PropertyList& list) {
  std::vector<Change> changes;
  for (auto& given : declared.values) {
    const std::size_t position = require_property(type, given.name);
    check_value(type, type.properties[position], given);
    if (list.contains(given.name)) changes.push_back({position, std::move(given.value)});
  }
  return changes;
}

// A property that is in the list but not in the declaration gets the default of its class. Keys
// stay: the path has given them.
void add_defaults(const Class& type, const PropertyList& list, std::vector<Change>& changes) {
  if (list.names() == nullptr) return;
  std::vector<bool> given(type.properties.size());
  for (const Change& each : changes) given[each.position] = true;
  for (const std::string& name : *list.names()) {
    const std::size_t position = require_property(type, name);
    const Property& property = type.properties[position];
    if (given[position] || has_qualifier(property.qualifiers, "Key")) continue;
    changes.push_back({position, property.default_value});
  }
}

}  // namespace

void create_instance(const ChangeContext& context, std::string& out) {
  InstanceDeclaration declared =
      read_instance(context.parameters.required_element("NewInstance", "INSTANCE"));
  context.parameters.refuse_others();

  Namespace& name_space = context.name_space;
  const Class& type = require_class(name_space, declared.class_name, CimStatus::invalid_class);
  check_can_have_instances(type);
  context.indications.complete(name_space, type, context.peer, declared);
  auto instance = build_instance(type, std::move(declared));
  check_keys_are_given(*instance);
  check_part(name_space, *instance);
  const InstanceName name = name_of(*instance);
  if (name_space.find_instance(type, name) != nullptr) {
    throw CimError(CimStatus::already_exists, "an instance of " + type.name + " with these keys");
  }
  const Instance& added = *instance;
  name_space.add_instance(std::move(instance));
  context.indications.note_creation(name_space, added, context.peer);
  append_instance_name(out, name);
}

void modify_instance(const ChangeContext& context, std::string&) {
  auto [name, declared] = context.parameters.required_named_instance("ModifiedInstance");
  context.parameters.boolean("IncludeQualifiers", true);
  const PropertyList list = context.parameters.property_list("PropertyList");
  context.parameters.refuse_others();

  Instance& instance = require_instance(context.name_space, name);
  const Class& type = *instance.type;
  if (!same_name(declared.class_name, type.name)) {
    throw CimError(CimStatus::invalid_parameter,
                   "the instance is of " + declared.class_name + ", its path of " + type.name);
  }
  std::vector<Change> changes = given_changes(type, std::move(declared), list);
  add_defaults(type, list, changes);
  change_instance(context.name_space, instance, std::move(changes));
}

void delete_instance(const ChangeContext& context, std::string&) {
  const InstanceName name = context.parameters.required_instance_name("InstanceName");
  context.parameters.refuse_others();

  const Instance& instance = require_instance(context.name_space, name);
  check_is_unused(context.name_space, instance);
  context.indications.note_removal(instance);
  context.name_space.remove_instance(instance);
}

}  // namespace simulator
