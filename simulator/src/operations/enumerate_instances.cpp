#include "common.h"

namespace simulator {

namespace {

void append_named_instances(std::string& out, const InstanceSet& instances,
                            const std::vector<std::size_t>& properties, const Detail& detail) {
  for (const auto& each : instances.list()) {
    out += "<VALUE.NAMEDINSTANCE>\n";
    append_instance_name(out, name_of(*each));
    append_instance(out, *each, properties, detail);
    out += "</VALUE.NAMEDINSTANCE>\n";
  }
}

}  // namespace

std::string enumerate_instances(const OperationContext& context) {
  const std::string class_name = context.parameters.required_class_name("ClassName");
  const bool local_only = context.parameters.boolean("LocalOnly", true);
  const bool deep = context.parameters.boolean("DeepInheritance", true);
  const Detail detail = read_detail(context, false);
  const PropertyList list = context.parameters.property_list("PropertyList");
  context.parameters.refuse_others();

  const Class& asked = require_class(context.name_space, class_name, CimStatus::invalid_class);
  const InstanceView view{asked, local_only, deep, list};
  std::string out;
  for (const Class* type : with_subclasses(context.name_space, asked)) {
    append_named_instances(out, context.name_space.instances_of(*type), view.properties_of(*type),
                           detail);
  }
  return out;
}

std::string enumerate_instance_names(const OperationContext& context) {
  const std::string class_name = context.parameters.required_class_name("ClassName");
  context.parameters.refuse_others();

  const Class& asked = require_class(context.name_space, class_name, CimStatus::invalid_class);
  std::string out;
  for (const Class* type : with_subclasses(context.name_space, asked)) {
    for (const auto& each : context.name_space.instances_of(*type).list()) {
      append_instance_name(out, name_of(*each));
    }
  }
  return out;
}

}  // namespace simulator
