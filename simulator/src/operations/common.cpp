#include "common.h"

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

}  // namespace

const Class& require_class(const Namespace& name_space, const std::string& class_name,
                           CimStatus otherwise) {
  const Class* type = name_space.find_class(class_name);
  if (type == nullptr) throw CimError(otherwise, class_name);
  return *type;
}

std::vector<const Class*> with_subclasses(const Namespace& name_space, const Class& type) {
  std::vector<const Class*> result = name_space.subclasses(&type, true);
  result.insert(result.begin(), &type);
  return result;
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
