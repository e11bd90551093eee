#include "common.h"

namespace simulator {

namespace {

// After so many instances their average length is known well enough to set room aside for all.
constexpr std::size_t sample_size = 64;

void reserve_for(std::string& out, std::size_t start, std::size_t count) {
  const std::size_t average = (out.size() - start) / sample_size;
  out.reserve(out.size() + average * count + average * count / 16);
}

void append_named_instances(std::string& out, const InstanceSet& instances,
                            const InstanceWriter& writer) {
  const std::size_t start = out.size();
  std::size_t written = 0;
  for (const auto& each : instances.list()) {
    out += "<VALUE.NAMEDINSTANCE>\n";
    append_instance_name(out, name_of(*each));
    writer.append(out, *each);
    out += "</VALUE.NAMEDINSTANCE>\n";
    if (++written == sample_size) reserve_for(out, start, instances.list().size() - written);
  }
}

}  // namespace

void enumerate_instances(const OperationContext& context, std::string& out) {
  const std::string class_name = context.parameters.required_class_name("ClassName");
  const bool local_only = context.parameters.boolean("LocalOnly", true);
  const bool deep = context.parameters.boolean("DeepInheritance", true);
  const Detail detail = read_detail(context, false);
  const PropertyList list = context.parameters.property_list("PropertyList");
  context.parameters.refuse_others();

  const Class& asked = require_class(context.name_space, class_name, CimStatus::invalid_class);
  const InstanceView view{asked, local_only, deep, list};
  for (const Class* type : with_subclasses(context.name_space, asked)) {
    const InstanceWriter writer(*type, view.properties_of(*type), detail);
    append_named_instances(out, context.name_space.instances_of(*type), writer);
  }
}

void enumerate_instance_names(const OperationContext& context, std::string& out) {
  const std::string class_name = context.parameters.required_class_name("ClassName");
  context.parameters.refuse_others();

  const Class& asked = require_class(context.name_space, class_name, CimStatus::invalid_class);
  for (const Class* type : with_subclasses(context.name_space, asked)) {
    for (const auto& each : context.name_space.instances_of(*type).list()) {
      append_instance_name(out, name_of(*each));
    }
  }
}

}  // namespace simulator
