#include <utility>

#include "../instance_builder.h"
#include "common.h"

namespace simulator {

namespace {

std::size_t require_property(const Instance& instance, const std::string& name) {
  const auto position = instance.type->find_property(name);
  if (!position) {
    throw CimError(CimStatus::no_such_property, instance.type->name + '.' + name);
  }
  return *position;
}

}  // namespace

void get_property(const OperationContext& context, std::string& out) {
  const InstanceName name = context.parameters.required_instance_name("InstanceName");
  const std::string property_name = context.parameters.required_text("PropertyName");
  context.parameters.refuse_others();

  const Instance& instance = require_instance(context.name_space, name);
  const ValuePtr& value = instance.values[require_property(instance, property_name)];
  if (value) append_value(out, *value);
}

void set_property(const ChangeContext& context, std::string&) {
  const InstanceName name = context.parameters.required_instance_name("InstanceName");
  const std::string property_name = context.parameters.required_text("PropertyName");
  Value value = context.parameters.value("NewValue");
  context.parameters.refuse_others();

  Instance& instance = require_instance(context.name_space, name);
  const std::size_t position = require_property(instance, property_name);
  const Property& property = instance.type->properties[position];
  if (!fits(property.type, property.shape, value)) {
    throw CimError(CimStatus::type_mismatch, "NewValue does not fit " + property.name);
  }
  change_instance(context.name_space, instance, {{position, std::move(value)}});
}

}  // namespace simulator
