#include "common.h"

namespace simulator {

void get_instance(const OperationContext& context, std::string& out) {
  const InstanceName name = context.parameters.required_instance_name("InstanceName");
  const bool local_only = context.parameters.boolean("LocalOnly", true);
  const Detail detail = read_detail(context, false);
  const PropertyList list = context.parameters.property_list("PropertyList");
  context.parameters.refuse_others();

  const Instance& instance = require_instance(context.name_space, name);
  const Class& type = *instance.type;
  const InstanceView view{type, local_only, true, list};
  InstanceWriter(type, view.properties_of(type), detail).append(out, instance);
}

}  // namespace simulator
