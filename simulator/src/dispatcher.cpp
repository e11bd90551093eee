#include "dispatcher.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <shared_mutex>
#include <string_view>

#include "methods/invocation.h"
#include "operations/operations.h"
#include "xml_reader.h"

namespace simulator {

namespace {

template <typename Context>
struct Operation {
  std::string_view name;
  void (*work)(const Context& context, std::string& out);
};

constexpr std::array reading_operations{
    Operation<OperationContext>{"GetClass", get_class},
    Operation<OperationContext>{"EnumerateClasses", enumerate_classes},
    Operation<OperationContext>{"EnumerateClassNames", enumerate_class_names},
    Operation<OperationContext>{"GetInstance", get_instance},
    Operation<OperationContext>{"EnumerateInstances", enumerate_instances},
    Operation<OperationContext>{"EnumerateInstanceNames", enumerate_instance_names},
    Operation<OperationContext>{"GetProperty", get_property},
    Operation<OperationContext>{"ExecQuery", exec_query}};

constexpr std::array changing_operations{
    Operation<ChangeContext>{"CreateClass", create_class},
    Operation<ChangeContext>{"ModifyClass", modify_class},
    Operation<ChangeContext>{"DeleteClass", delete_class},
    Operation<ChangeContext>{"CreateInstance", create_instance},
    Operation<ChangeContext>{"ModifyInstance", modify_instance},
    Operation<ChangeContext>{"DeleteInstance", delete_instance},
    Operation<ChangeContext>{"SetProperty", set_property}};

template <typename Operations>
auto find_operation(const Operations& operations, const std::string& name) {
  const auto found = std::find_if(operations.begin(), operations.end(),
                                  [&](const auto& each) { return each.name == name; });
  return found == operations.end() ? nullptr : found->work;
}

}  // namespace

std::string Dispatcher::answer(const RequestMessage& message) const {
  std::string out = response_start(message);
  const std::size_t content = out.size();
  try {
    if (message.intrinsic) {
      append_return_value(message, out);
    } else {
      call_method(message, out);
    }
  } catch (const CimError& error) {
    out.resize(content);
    out += error_element(error);
  } catch (const DeclarationError& error) {
    out.resize(content);
    out += error_element(CimError(CimStatus::invalid_parameter, error.what()));
  } catch (const FormatError& error) {
    throw ProtocolError(400, "request-not-valid", error.what());
  }
  out += response_end(message);
  return out;
}

void Dispatcher::send_test_indication(const std::string& class_name) const {
  const std::lock_guard lock(mutex_);
  indications_.send_test(class_name, 1);
}

// An operation that returns nothing has no IRETURNVALUE.
void Dispatcher::append_return_value(const RequestMessage& message, std::string& out) const {
  const std::size_t before = out.size();
  out += "<IRETURNVALUE>\n";
  const std::size_t start = out.size();
  work(message, out);
  if (out.size() == start) {
    out.resize(before);
  } else {
    out += "</IRETURNVALUE>\n";
  }
}

void Dispatcher::work(const RequestMessage& message, std::string& out) const {
  const auto reading = find_operation(reading_operations, message.method);
  const auto changing = find_operation(changing_operations, message.method);
  if (reading == nullptr && changing == nullptr) {
    throw CimError(CimStatus::not_supported, message.method);
  }
  Namespace& name_space = require_namespace(message.name_space);
  Parameters parameters(message.call);
  if (reading != nullptr) {
    const std::shared_lock lock(mutex_);
    reading({name_space, parameters, style_}, out);
  } else {
    const std::lock_guard lock(mutex_);
    changing({name_space, parameters, indications_, message.peer}, out);
  }
}

void Dispatcher::call_method(const RequestMessage& message, std::string& out) const {
  Namespace& name_space = require_namespace(message.name_space);
  const std::lock_guard lock(mutex_);
  invoke(message, name_space, indications_, out);
}

Namespace& Dispatcher::require_namespace(const std::string& name) const {
  Namespace* name_space = repository_.find(name);
  if (name_space == nullptr) throw CimError(CimStatus::invalid_namespace, name);
  return *name_space;
}

}  // namespace simulator
