#include "parameters.h"

#include "cim_error.h"
#include "names.h"
#include "xml_reader.h"

namespace simulator {

namespace {

[[noreturn]] void refuse(const std::string& detail) {
  throw CimError(CimStatus::invalid_parameter, detail);
}

void expect(const pugi::xml_node& node, std::string_view element, const char* parameter) {
  if (node.name() != element) {
    refuse(std::string(parameter) + " is given as " + node.name() + ", not as " +
           std::string(element));
  }
}

}  // namespace

bool PropertyList::contains(std::string_view property_name) const {
  return !names_ || names_->count(folded(property_name)) > 0;
}

Parameters::Parameters(const pugi::xml_node& method_call) {
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
  const pugi::xml_node node = take(name);
  if (!node) refuse(std::string(name) + " is missing");
  expect(node, "INSTANCENAME", name);
  return read_instance_name(node);
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

std::string Parameters::required_text(const char* name) {
  const pugi::xml_node node = take(name);
  if (!node) refuse(std::string(name) + " is missing");
  expect(node, "VALUE", name);
  return text_of(node);
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
  const auto found = unread_.find(folded(name));
  if (found == unread_.end()) return {};
  const pugi::xml_node value = first_element(found->second);
  unread_.erase(found);
  return value;
}

}  // namespace simulator
