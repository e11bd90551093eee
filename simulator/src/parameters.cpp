#include "parameters.h"

#include "cim_error.h"
#include "names.h"
#include "xml_reader.h"

namespace simulator {

namespace {

void expect(const pugi::xml_node& node, std::string_view element, const char* parameter) {
  if (node.name() != element) {
    refuse(std::string(parameter) + " is given as " + node.name() + ", not as " +
           std::string(element));
  }
}

constexpr const char* named_instance_element = "VALUE.NAMEDINSTANCE";

NamedInstance read_named_instance(const pugi::xml_node& node, const pugi::xml_node& path,
                                  const char* parameter) {
  const pugi::xml_node instance = node.child("INSTANCE");
  if (!path) refuse(std::string(parameter) + " has no INSTANCENAME");
  if (!instance) refuse(std::string(parameter) + " has no INSTANCE");
  return {read_instance_name(path), read_instance(instance)};
}

}  // namespace

bool PropertyList::contains(std::string_view property_name) const {
  return !names_ || names_->count(folded(property_name)) > 0;
}

Parameters::Parameters(const pugi::xml_node& method_call) : call_(method_call) {
  for (const auto& node : method_call.children("IPARAMVALUE")) {
    const std::string name = required_attribute(node, "NAME");
    if (!unread_.emplace(folded(name), node).second) refuse(name + " is given twice");
  }
}

std::string Parameters::class_name(const char* name) {
  const pugi::xml_node node = take(name);
  if (!node) return {};
  expect(node, "CLASSNAME", name);
  return required_attribute(node, "NAME");
}

std::string Parameters::required_class_name(const char* name) {
  std::string result = class_name(name);
  if (result.empty()) refuse(std::string(name) + " is missing");
  return result;
}

InstanceName Parameters::required_instance_name(const char* name) {
  return read_instance_name(required_element(name, "INSTANCENAME"));
}

pugi::xml_node Parameters::required_element(const char* name, const char* element) {
  const pugi::xml_node node = take(name);
  if (!node) refuse(std::string(name) + " is missing");
  expect(node, element, name);
  return node;
}

NamedInstance Parameters::required_named_instance(const char* name) {
  const pugi::xml_node direct = call_.child(named_instance_element);
  if (!direct) {
    const pugi::xml_node node = required_element(name, named_instance_element);
    return read_named_instance(node, node.child("INSTANCENAME"), name);
  }
  if (take(name)) refuse(std::string(name) + " is given twice");
  const pugi::xml_node path = direct.child("IPARAMVALUE");
  if (!same_name(path.attribute("NAME").value(), "InstanceName")) {
    refuse(std::string(name) + " has no InstanceName");
  }
  return read_named_instance(direct, path.child("INSTANCENAME"), name);
}

bool Parameters::boolean(const char* name, bool otherwise) {
  const pugi::xml_node node = take(name);
  if (!node) return otherwise;
  expect(node, "VALUE", name);
  const std::string text = text_of(node);
  if (same_name(text, "true")) return true;
  if (!same_name(text, "false")) refuse(std::string(name) + " is neither TRUE nor FALSE");
  return false;
}

Value Parameters::value(const char* name) {
  return read_value(take_parameter(name));
}

std::string Parameters::required_text(const char* name) {
  return text_of(required_element(name, "VALUE"));
}

PropertyList Parameters::property_list(const char* name) {
  const pugi::xml_node node = take(name);
  if (!node) return {};
  expect(node, "VALUE.ARRAY", name);
  std::set<std::string> names;
  for (const auto& each : node.children("VALUE")) names.insert(folded(text_of(each)));
  return PropertyList(std::move(names));
}

void Parameters::refuse_others() const {
  if (!unread_.empty()) {
    refuse("unknown parameter " + required_attribute(unread_.begin()->second, "NAME"));
  }
}

pugi::xml_node Parameters::take(const char* name) {
  return first_element(take_parameter(name));
}

pugi::xml_node Parameters::take_parameter(const char* name) {
  const auto found = unread_.find(folded(name));
  if (found == unread_.end()) return {};
  const pugi::xml_node parameter = found->second;
  unread_.erase(found);
  return parameter;
}

}  // namespace simulator
