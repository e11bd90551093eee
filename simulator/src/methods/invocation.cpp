#include "invocation.h"

#include <cstring>
#include <utility>

#include "../instance_builder.h"
#include "../names.h"
#include "../operations/common.h"
#include "../xml_reader.h"
#include "../xml_writer.h"
#include "methods.h"

namespace simulator {

namespace {

const char* wire_type(const Parameter& parameter) {
  const bool refers =
      parameter.shape == Shape::reference || parameter.shape == Shape::reference_array;
  return refers ? "reference" : parameter.type.c_str();
}

// A boolean qualifier of a parameter that has a default.
bool says(const Parameter& parameter, const char* qualifier, bool otherwise) {
  if (find_qualifier(parameter.qualifiers, qualifier) == nullptr) return otherwise;
  return has_qualifier(parameter.qualifiers, qualifier);
}

const Parameter& require_in_parameter(const Method& method, const std::string& name) {
  for (const Parameter& each : method.parameters) {
    if (!same_name(each.name, name)) continue;
    if (!says(each, "In", true)) refuse(method.name + " does not take " + each.name);
    return each;
  }
  refuse(method.name + " has no parameter " + name);
}

Argument read_argument(const Method& method, const pugi::xml_node& node) {
  const Parameter& parameter = require_in_parameter(method, required_attribute(node, "NAME"));
  const std::string type = node.attribute("PARAMTYPE").value();
  if (!type.empty() && type != wire_type(parameter)) {
    refuse(parameter.name + " is " + wire_type(parameter) + ", not " + type);
  }
  Value value = read_value(node);
  if (!fits(parameter.type, parameter.shape, value)) {
    refuse(parameter.name + " is given a value that does not fit");
  }
  return {&parameter, std::move(value)};
}

void check_required(const MethodCall& call) {
  for (const Parameter& each : call.method.parameters) {
    const bool needed = says(each, "In", true) && says(each, "Required", false);
    if (needed && call.argument(each.name).is_null()) refuse(each.name + " is missing");
  }
}

void read_arguments(const pugi::xml_node& node, MethodCall& call) {
  for (const auto& each : node.children("PARAMVALUE")) {
    Argument argument = read_argument(call.method, each);
    for (const Argument& other : call.arguments) {
      if (other.parameter == argument.parameter) refuse(other.parameter->name + " is given twice");
    }
    call.arguments.push_back(std::move(argument));
  }
  check_required(call);
}

// A call of an instance needs that instance; a call of a class a method that is static.
Instance* find_target(const RequestMessage& message, Namespace& name_space, const Method& method) {
  const auto path = message.call.child("LOCALINSTANCEPATH");
  if (path) {
    return &require_instance(name_space, read_instance_name(path.child("INSTANCENAME")));
  }
  if (!has_qualifier(method.qualifiers, "Static")) {
    refuse(method.name + " is not static: it needs an instance");
  }
  return nullptr;
}

void append_result(const Method& method, const MethodResult& result, std::string& out) {
  if (result.return_value) {
    out += "<RETURNVALUE PARAMTYPE=\"" + method.type + "\">\n";
    append_value(out, Value{*result.return_value});
    out += "</RETURNVALUE>\n";
  }
  for (const Argument& each : result.out) {
    out += "<PARAMVALUE NAME=\"" + each.parameter->name + "\" PARAMTYPE=\"" +
           wire_type(*each.parameter) + "\">\n";
    append_value(out, each.value);
    out += "</PARAMVALUE>\n";
  }
}

}  // namespace

void invoke(const RequestMessage& message, Namespace& name_space, Indications& indications,
            std::string& out) {
  const Class& type = require_class(name_space, message.class_name, CimStatus::invalid_class);
  const std::string name = type.name + '.' + message.method;
  const Method* method = type.find_method(message.method);
  if (method == nullptr) throw CimError(CimStatus::method_not_found, name);
  const MethodWork work = find_work(*method);
  if (work == nullptr) throw CimError(CimStatus::method_not_available, name);

  Instance* const target = find_target(message, name_space, *method);
  MethodCall call{name_space, type, *method, indications, target, {}};
  read_arguments(message.call, call);
  append_result(*method, work(call), out);
}

}  // namespace simulator
