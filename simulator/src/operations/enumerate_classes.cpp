#include "common.h"

namespace simulator {

namespace {

// The classes below the one that ClassName names, or below the top if it names none.
std::vector<const Class*> find_subclasses(const OperationContext& context) {
  const std::string class_name = context.parameters.class_name("ClassName");
  const bool deep = context.parameters.boolean("DeepInheritance", false);
  if (class_name.empty()) return context.name_space.subclasses(nullptr, deep);
  const Class& base = require_class(context.name_space, class_name, CimStatus::invalid_class);
  return context.name_space.subclasses(&base, deep);
}

}  // namespace

void enumerate_classes(const OperationContext& context, std::string& out) {
  const std::vector<const Class*> classes = find_subclasses(context);
  const bool local_only = context.parameters.boolean("LocalOnly", true);
  const Detail detail = read_detail(context, true);
  context.parameters.refuse_others();

  for (const Class* each : classes) append_class_view(out, *each, local_only, {}, detail);
}

void enumerate_class_names(const OperationContext& context, std::string& out) {
  const std::vector<const Class*> classes = find_subclasses(context);
  context.parameters.refuse_others();

  for (const Class* each : classes) append_class_name(out, each->name);
}

}  // namespace simulator
