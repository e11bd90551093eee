#include "../query.h"
#include "common.h"

namespace simulator {

namespace {

// Clients are on this machine, or reach it by a name that the simulator cannot know.
constexpr const char* host_name = "localhost";

void append_object(std::string& out, const std::string& name_space, const Instance& instance,
                   const InstanceWriter& writer) {
  out += "<VALUE.OBJECTWITHPATH>\n";
  append_path(out, Reference{name_of(instance), name_space, host_name, false});
  writer.append(out, instance);
  out += "</VALUE.OBJECTWITHPATH>\n";
}

}  // namespace

void exec_query(const OperationContext& context, std::string& out) {
  const std::string language = context.parameters.required_text("QueryLanguage");
  const std::string query = context.parameters.required_text("Query");
  context.parameters.refuse_others();

  const Namespace& name_space = context.name_space;
  const Class& asked =
      require_class(name_space, read_query(language, query), CimStatus::invalid_class);
  const InstanceView view{asked, false, true, {}};
  Detail detail;
  detail.style = context.style;
  for (const Class* type : with_subclasses(name_space, asked)) {
    const InstanceWriter writer(*type, view.properties_of(*type), detail);
    for (const auto& each : name_space.instances_of(*type).list()) {
      append_object(out, name_space.name(), *each, writer);
    }
  }
}

}  // namespace simulator
