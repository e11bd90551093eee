#include "dispatcher.h"

#include <array>
#include <string_view>

#include "operations/operations.h"
#include "xml_reader.h"

namespace simulator {

namespace {

struct Operation {
  std::string_view name;
  void (*work)(const OperationContext& context, std::string& out);
};

constexpr std::array operations{Operation{"GetClass", get_class},
                                Operation{"EnumerateClasses", enumerate_classes},
                                Operation{"EnumerateClassNames", enumerate_class_names},
                                Operation{"GetInstance", get_instance},
                                Operation{"EnumerateInstances", enumerate_instances},
                                Operation{"EnumerateInstanceNames", enumerate_instance_names}};

const Operation& find_operation(const std::string& name) {
  for (const Operation& each : operations) {
    if (each.name == name) return each;
  }
  throw CimError(CimStatus::not_supported, name);
}

}  // namespace

std::string Dispatcher::answer(const RequestMessage& message) const {
  std::string out = response_start(message);
  const std::size_t content = out.size();
  try {
    if (!message.intrinsic) refuse_extrinsic(message);
    append_return_value(message, out);
  } catch (const CimError& error) {
    out.resize(content);
    out += error_element(error);
  } catch (const FormatError& error) {
    throw ProtocolError(400, "request-not-valid", error.what());
  }
  out += response_end(message);
  return out;
}

// An operation that returns nothing has no IRETURNVALUE.
void Dispatcher::append_return_value(const RequestMessage& message, std::string& out) const {
  const Operation& operation = find_operation(message.method);
  const Namespace& name_space = require_namespace(message.name_space);
  Parameters parameters(message.call);
  const std::size_t before = out.size();
  out += "<IRETURNVALUE>\n";
  const std::size_t start = out.size();
  operation.work({name_space, parameters, style_}, out);
  if (out.size() == start) {
    out.resize(before);
  } else {
    out += "</IRETURNVALUE>\n";
  }
}

// The inventory declares methods, but nothing here can carry them out.
void Dispatcher::refuse_extrinsic(const RequestMessage& message) const {
  const Class* type = require_namespace(message.name_space).find_class(message.class_name);
  if (type == nullptr) throw CimError(CimStatus::invalid_class, message.class_name);
  const std::string name = type->name + "." + message.method;
  if (type->find_method(message.method) == nullptr) {
    throw CimError(CimStatus::method_not_found, name);
  }
  throw CimError(CimStatus::method_not_available, name);
}

const Namespace& Dispatcher::require_namespace(const std::string& name) const {
  const Namespace* name_space = repository_.find(name);
  if (name_space == nullptr) throw CimError(CimStatus::invalid_namespace, name);
  return *name_space;
}

}  // namespace simulator
