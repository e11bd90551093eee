#include "xml_reader.h"

#include <cstring>
#include <string_view>

namespace simulator {

namespace {

// References may nest (a key of a key of ...); nobody needs more levels than this, and the
// recursion must not follow whatever a message holds.
constexpr int deepest_reference = 16;

bool is(const pugi::xml_node& node, const char* name) {
  return std::strcmp(node.name(), name) == 0;
}

bool flag(const pugi::xml_node& node, const char* name, bool otherwise) {
  const std::string_view value = node.attribute(name).value();
  if (value.empty()) return otherwise;
  return value == "true";
}

ReferencePtr read_reference(const pugi::xml_node& value_reference, int depth);

InstanceName read_instance_name(const pugi::xml_node& node, int depth);

KeyBinding read_key(const std::string& name, const pugi::xml_node& holder, int depth) {
  if (const auto key_value = holder.child("KEYVALUE")) {
    return {name, Value{text_of(key_value)}, key_value.attribute("VALUETYPE").as_string("string")};
  }
  if (const auto reference = holder.child("VALUE.REFERENCE")) {
    return {name, Value{read_reference(reference, depth + 1)}, {}};
  }
  throw FormatError("a key binding has neither KEYVALUE nor VALUE.REFERENCE");
}

InstanceName read_instance_name(const pugi::xml_node& node, int depth) {
  if (depth > deepest_reference) throw FormatError("references are nested too deeply");
  InstanceName result{required_attribute(node, "CLASSNAME"), {}};
  for (const auto& binding : node.children("KEYBINDING")) {
    result.keys.push_back(read_key(required_attribute(binding, "NAME"), binding, depth));
  }
  if (result.keys.empty() && first_element(node)) result.keys.push_back(read_key({}, node, depth));
  return result;
}

void read_namespace_of(const pugi::xml_node& path, Reference& reference) {
  if (const auto full = path.child("NAMESPACEPATH")) {
    reference.host = text_of(full.child("HOST"));
    reference.name_space = read_namespace_path(full.child("LOCALNAMESPACEPATH"));
  } else if (const auto local = path.child("LOCALNAMESPACEPATH")) {
    reference.name_space = read_namespace_path(local);
  }
}

ReferencePtr read_reference(const pugi::xml_node& value_reference, int depth) {
  auto result = std::make_shared<Reference>();
  pugi::xml_node path = first_element(value_reference);
  if (path && !is(path, "INSTANCENAME") && !is(path, "CLASSNAME")) {
    read_namespace_of(path, *result);
    path = path.last_child();
  }
  if (is(path, "INSTANCENAME")) {
    result->target = read_instance_name(path, depth);
  } else if (is(path, "CLASSNAME")) {
    result->target.class_name = required_attribute(path, "NAME");
    result->is_class = true;
  } else {
    throw FormatError("a VALUE.REFERENCE holds neither an instance path nor a class path");
  }
  return result;
}

TextArray read_array(const pugi::xml_node& value_array) {
  TextArray result;
  for (const auto& each : value_array.children()) {
    if (is(each, "VALUE")) {
      result.emplace_back(text_of(each));
    } else if (is(each, "VALUE.NULL")) {
      result.emplace_back();
    } else {
      throw FormatError(std::string("unexpected ") + each.name() + " in VALUE.ARRAY");
    }
  }
  return result;
}

ReferenceArray read_reference_array(const pugi::xml_node& array) {
  ReferenceArray result;
  for (const auto& each : array.children("VALUE.REFERENCE")) {
    result.push_back(read_reference(each, 0));
  }
  return result;
}

std::vector<Qualifier> read_qualifiers(const pugi::xml_node& owner) {
  std::vector<Qualifier> result;
  for (const auto& node : owner.children("QUALIFIER")) {
    Qualifier qualifier;
    qualifier.name = required_attribute(node, "NAME");
    qualifier.type = required_attribute(node, "TYPE");
    qualifier.value = read_value(node);
    qualifier.overridable = flag(node, "OVERRIDABLE", true);
    qualifier.to_subclass = flag(node, "TOSUBCLASS", true);
    qualifier.translatable = flag(node, "TRANSLATABLE", false);
    result.push_back(std::move(qualifier));
  }
  return result;
}

Shape property_shape(const pugi::xml_node& node) {
  if (is(node, "PROPERTY.ARRAY")) return Shape::array;
  if (is(node, "PROPERTY.REFERENCE")) return Shape::reference;
  return Shape::scalar;
}

bool is_property(const pugi::xml_node& node) {
  return is(node, "PROPERTY") || is(node, "PROPERTY.ARRAY") || is(node, "PROPERTY.REFERENCE");
}

std::string embedded_object(const pugi::xml_node& node) {
  const std::string upper = node.attribute("EMBEDDEDOBJECT").value();
  return upper.empty() ? node.attribute("EmbeddedObject").value() : upper;
}

Property read_property(const pugi::xml_node& node) {
  Property property;
  property.name = required_attribute(node, "NAME");
  property.shape = property_shape(node);
  if (property.shape != Shape::reference) property.type = required_attribute(node, "TYPE");
  property.array_size = node.attribute("ARRAYSIZE").value();
  property.reference_class = node.attribute("REFERENCECLASS").value();
  property.embedded_object = embedded_object(node);
  property.qualifiers = read_qualifiers(node);
  property.default_value = read_value(node);
  return property;
}

Shape parameter_shape(const pugi::xml_node& node) {
  if (is(node, "PARAMETER.ARRAY")) return Shape::array;
  if (is(node, "PARAMETER.REFERENCE")) return Shape::reference;
  if (is(node, "PARAMETER.REFARRAY")) return Shape::reference_array;
  return Shape::scalar;
}

Parameter read_parameter(const pugi::xml_node& node) {
  Parameter parameter;
  parameter.name = required_attribute(node, "NAME");
  parameter.type = node.attribute("TYPE").value();
  parameter.shape = parameter_shape(node);
  parameter.array_size = node.attribute("ARRAYSIZE").value();
  parameter.reference_class = node.attribute("REFERENCECLASS").value();
  parameter.qualifiers = read_qualifiers(node);
  return parameter;
}

Method read_method(const pugi::xml_node& node) {
  Method method;
  method.name = required_attribute(node, "NAME");
  method.type = node.attribute("TYPE").value();
  method.qualifiers = read_qualifiers(node);
  for (const auto& child : node.children()) {
    if (std::string_view(child.name()).starts_with("PARAMETER")) {
      method.parameters.push_back(read_parameter(child));
    }
  }
  return method;
}

}  // namespace

std::string required_attribute(const pugi::xml_node& node, const char* name) {
  std::string value = node.attribute(name).value();
  if (value.empty()) throw FormatError(std::string(node.name()) + " has no " + name);
  return value;
}

pugi::xml_node first_element(const pugi::xml_node& node) {
  return node.find_child(
      [](const pugi::xml_node& child) { return child.type() == pugi::node_element; });
}

std::string text_of(const pugi::xml_node& node) {
  std::string text;
  for (const auto& child : node.children()) {
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
      text += child.value();
    }
  }
  return text;
}

std::string read_namespace_path(const pugi::xml_node& local_namespace_path) {
  std::string result;
  for (const auto& each : local_namespace_path.children("NAMESPACE")) {
    if (!result.empty()) result += '/';
    result += required_attribute(each, "NAME");
  }
  return result;
}

Value read_value(const pugi::xml_node& parent) {
  if (const auto node = parent.child("VALUE")) return Value{text_of(node)};
  if (const auto node = parent.child("VALUE.ARRAY")) return Value{read_array(node)};
  if (const auto node = parent.child("VALUE.REFERENCE")) {
    return first_element(node) ? Value{read_reference(node, 0)} : Value{};
  }
  if (const auto node = parent.child("VALUE.REFARRAY")) return Value{read_reference_array(node)};
  return {};
}

InstanceName read_instance_name(const pugi::xml_node& node) {
  return read_instance_name(node, 0);
}

std::unique_ptr<Class> read_class(const pugi::xml_node& node) {
  auto result = std::make_unique<Class>();
  result->name = required_attribute(node, "NAME");
  result->superclass_name = node.attribute("SUPERCLASS").value();
  result->qualifiers = read_qualifiers(node);
  for (const auto& child : node.children()) {
    if (is_property(child)) result->properties.push_back(read_property(child));
    if (is(child, "METHOD")) result->methods.push_back(read_method(child));
  }
  return result;
}

InstanceDeclaration read_instance(const pugi::xml_node& node) {
  InstanceDeclaration result{required_attribute(node, "CLASSNAME"), {}};
  for (const auto& child : node.children()) {
    if (!is_property(child)) continue;
    result.values.push_back({required_attribute(child, "NAME"), child.attribute("TYPE").value(),
                             property_shape(child), read_value(child),
                             child.attribute("REFERENCECLASS").value()});
  }
  return result;
}

}  // namespace simulator
