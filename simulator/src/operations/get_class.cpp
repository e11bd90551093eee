#include "common.h"

namespace simulator {

void get_class(const OperationContext& context, std::string& out) {
  const std::string class_name = context.parameters.required_class_name("ClassName");
  const bool local_only = context.parameters.boolean("LocalOnly", true);
  const Detail detail = read_detail(context, true);
  const PropertyList list = context.parameters.property_list("PropertyList");
  context.parameters.refuse_others();

  const Class& type = require_class(context.name_space, class_name, CimStatus::not_found);
  append_class_view(out, type, local_only, list, detail);
}

}  // namespace simulator
