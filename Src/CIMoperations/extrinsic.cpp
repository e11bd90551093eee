#include <cstdlib>
#include <limits>

#include "BRQ/Trace.h"
#include "CIMoperations/failure.h"
#include "CIMoperations/held_answer.h"
#include "CIMoperations/sending.h"
#include "CIMoperations/typed_value.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

// Calling the methods that classes define.
namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMoperations";

// A method that returns this number is taken for one that returned none.
constexpr int no_return_value = 123456;

enum class Added { complete, bad_type, bad_reference, reference_array };

// Appends the path of the instance; false when it cannot be written.
bool add_instance_path(CIMcontainer& container, CIMelement* instance_name) {
  begin_line(container, elem::LOCALINSTANCEPATH);
  container.addLocalNameSpacePath();
  if (instance_name == nullptr || is_document(container, instance_name)) return false;
  if (instance_name->GenerateCIMXML(container.request) != status::success) return false;
  container.endElement(elem::LOCALINSTANCEPATH);
  return true;
}

// Appends the values of a parameter.
Added add_parameter_values(CIMcontainer& container, const _paramvalue_& parameter, ValueType type) {
  const std::uint32_t count = type.is_array ? parameter.count : 1;
  if (!type.is_reference()) {
    add_typed_values(container, parameter.values, count, type.id);
    return Added::complete;
  }
  auto* const tree = static_cast<CIMelement*>(const_cast<void*>(parameter.values));
  if (!add_reference(container, tree)) return Added::bad_reference;
  return count == 1 ? Added::complete : Added::reference_array;
}

Added add_parameter(CIMcontainer& container, const _paramvalue_& parameter) {
  const ValueType type(parameter.type);
  if (!type.is_known()) return Added::bad_type;
  const bool has_values = parameter.values != nullptr && parameter.count != 0;
  if (parameter.values == nullptr && parameter.count == 0) return Added::complete;
  begin_typed_element(container, elem::PARAMVALUE, parameter.name, attr::PARAMTYPE,
                      known_cim_types[type.id]);
  const int array = type.is_reference() ? elem::VALUE_REFARRAY : elem::VALUE_ARRAY;
  if (type.is_array) begin_line(container, array);
  if (has_values || !type.is_array) {
    const Added added = add_parameter_values(container, parameter, type);
    if (added != Added::complete) return added;
  }
  if (type.is_array) container.endElement(array);
  container.endElement(elem::PARAMVALUE);
  return Added::complete;
}

Added add_parameters(CIMcontainer& container, const _paramvalue_* parameter) {
  for (; parameter != nullptr && parameter->name != nullptr; ++parameter) {
    const Added added = add_parameter(container, *parameter);
    if (added != Added::complete) return added;
  }
  return Added::complete;
}

int refuse_reference_array(const CIMcontainer& container) {
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
            "[%s] performExtrinsicMethod: Sorry! VALUE_REFARRAY is not implemented yet!",
            container.host);
  return status::failure;
}

// Reads a decimal number up to the first character that is no digit; a number beyond the range of
// an int becomes the nearest int.
int read_number(const char* text) {
  const long long number = std::strtoll(text, nullptr, 10);
  if (number > std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
  if (number < std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
  return static_cast<int>(number);
}

int return_value(CIMelement& answer) {
  const CIMelement* const element = answer.findelement(elem::RETURNVALUE, 0);
  const CIMelement* const value = element != nullptr ? element->next : nullptr;
  if (value == nullptr || value->name != known_cim_elements[elem::VALUE]) return no_return_value;
  return value->value != nullptr ? read_number(value->value) : no_return_value;
}

void trace_return_value(const CIMcontainer& container, const char* method, int number) {
  if (number == no_return_value)
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
              "[%s] performExtrinsicMethod(\"%s\") RETURNVALUE not found!", container.host, method);
  else
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
              "[%s] performExtrinsicMethod(\"%s\") RETURNVALUE=%d", container.host, method, number);
}

// Makes the number that the method returned the status.
int record_return_value(CIMcontainer& container, const char* method) {
  const int number = return_value(container.result);
  if (number == 0) return container.ChkCimStatus();
  container.cimStatus = number == no_return_value ? status::failure : number;
  trace_return_value(container, method, number);
  container.Debug_Request_Response();
  const int outcome = container.ChkCimStatus();
  container.releaseCurlHandle();
  return outcome;
}

int call_method(CIMcontainer& container, CIMelement* instance_name,
                const _paramvalue_* parameters) {
  const char* const name = container.methodName;
  container.addCIMXMLheader();
  begin_line(container, elem::SIMPLEREQ);
  container.beginElement(elem::METHODCALL, nullptr);
  container.addAttribute(attr::NAME, name, ">\n");
  if (!add_instance_path(container, instance_name))
    return refuse_request(container, "performExtrinsicMethod() bad CIMelement: InstanceName");
  const Added added = add_parameters(container, parameters);
  if (added == Added::bad_type)
    return refuse_request(container, "performExtrinsicMethod() bad ParamType");
  if (added == Added::bad_reference)
    return refuse_request(container, "performExtrinsicMethod() bad CIMelement: reference");
  if (added == Added::reference_array) return refuse_reference_array(container);
  container.endElement(elem::METHODCALL);
  container.endElement(elem::SIMPLEREQ);
  container.endElement(elem::MESSAGE);
  container.endElement(elem::CIM);
  const int outcome = send_request(container, "performExtrinsicMethod");
  return outcome == status::success ? record_return_value(container, name) : outcome;
}

}  // namespace

int CIMcontainer::performExtrinsicMethod(const char* name, CIMelement* instance_name,
                                         const _paramvalue_* parameters) noexcept {
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::progress, trace_source,
            "[%s] performExtrinsicMethod(\"%s\")", host, name);
  if (currentClass == nullptr) return refuse_request(*this, "performExtrinsicMethod() pcls=NULL");
  methodName = name;
  // The method's name is needed until the call is over.
  const HeldAnswer held(*this);
  const int outcome = call_method(*this, instance_name, parameters);
  if (held.contains_text(name)) methodName = nullptr;
  return outcome;
}

}  // namespace zuCIM
