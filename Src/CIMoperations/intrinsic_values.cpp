#include "BRQ/Trace.h"
#include "CIMoperations/entry_trace.h"
#include "CIMoperations/failure.h"
#include "CIMoperations/held_answer.h"
#include "CIMoperations/typed_value.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

// The intrinsic operations on single properties, the query, and those that are not implemented.
namespace zuCIM {
namespace {

bool is_empty(const char* text) {
  return text == nullptr || *text == '\0';
}

// Appends a parameter whose value is plain text. `tail` closes the parameter's start tag.
void add_text_parameter(CIMcontainer& container, const char* name, const char* text,
                        const char* tail) {
  container.beginElement(elem::IPARAMVALUE, nullptr);
  container.addAttribute(attr::NAME, name, tail);
  container.addValue(text);
  container.endElement(elem::IPARAMVALUE);
}

// The functions that build a request return what is wrong with the arguments, null if nothing is.
// An instance name that is missing or wrong shows in the status.
const char* write_query(CIMcontainer& container, const char* query_language,
                        const char* class_name) {
  const HeldAnswer held(container);
  container.beginIntrinsicMethod(imethod::ExecQuery);
  if (is_empty(query_language) || is_empty(class_name))
    return "ExecQuery() missing QueryLanguage/Query";
  add_text_parameter(container, "QueryLanguage", query_language, ">");
  container.beginElement(elem::IPARAMVALUE, nullptr);
  container.addAttribute(attr::NAME, "Query", ">");
  container.beginElement(elem::VALUE, ">select * from ");
  append_text(container, class_name);
  container.endElement(elem::VALUE);
  container.endElement(elem::IPARAMVALUE);
  return nullptr;
}

const char* write_property_request(CIMcontainer& container, CIMelement* instance_name,
                                   const char* property_name) {
  const HeldAnswer held(container);
  container.beginIntrinsicMethod(imethod::GetProperty);
  if (is_empty(property_name)) return "Imethod_GetProperty() missing PropertyName";
  add_text_parameter(container, "PropertyName", property_name, ">\n");
  container.addInstanceNameParam(instance_name);
  return nullptr;
}

const char* write_property_change(CIMcontainer& container, CIMelement* instance_name,
                                  const char* property_name, const char* new_value) {
  const HeldAnswer held(container);
  container.beginIntrinsicMethod(imethod::SetProperty);
  if (is_empty(property_name)) return "Imethod_SetProperty() missing PropertyName";
  add_text_parameter(container, "PropertyName", property_name, ">\n");
  if (!is_empty(new_value)) add_text_parameter(container, "NewValue", new_value, ">\n");
  container.addInstanceNameParam(instance_name);
  return nullptr;
}

// Sends the request unless something is wrong with it.
int send_unless(const char* fault, CIMcontainer& container, int line = __builtin_LINE()) {
  return fault != nullptr ? refuse_request(container, fault, line)
                          : container.performIntrinsicMethod();
}

int not_implemented(const char* operation, int line = __builtin_LINE()) {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::error, "Src/CIMoperations", line,
               "%s: Noch nicht implementiert!", operation);
  return status::failure;
}

}  // namespace

int CIMcontainer::Imethod_ExecQuery(const char* query_language, const char* class_name) noexcept {
  trace_entry(*this, "Imethod_ExecQuery()");
  return send_unless(write_query(*this, query_language, class_name), *this);
}

int CIMcontainer::Imethod_GetProperty(CIMelement* instance_name,
                                      const char* property_name) noexcept {
  trace_entry(*this, "Imethod_GetProperty()");
  return send_unless(write_property_request(*this, instance_name, property_name), *this);
}

int CIMcontainer::Imethod_SetProperty(CIMelement* instance_name, const char* property_name,
                                      const char* new_value) noexcept {
  trace_entry(*this, "Imethod_SetProperty()");
  return send_unless(write_property_change(*this, instance_name, property_name, new_value), *this);
}

int CIMcontainer::Imethod_Associators() noexcept {
  return not_implemented("Imethod_Associators");
}

int CIMcontainer::Imethod_AssociatorNames() noexcept {
  return not_implemented("Imethod_AssociatorNames");
}

int CIMcontainer::Imethod_References() noexcept {
  return not_implemented("Imethod_References");
}

int CIMcontainer::Imethod_ReferenceNames() noexcept {
  return not_implemented("Imethod_ReferenceNames");
}

int CIMcontainer::Imethod_GetQualifier() noexcept {
  return not_implemented("Imethod_GetQualifier");
}

int CIMcontainer::Imethod_SetQualifier() noexcept {
  return not_implemented("Imethod_SetQualifier");
}

int CIMcontainer::Imethod_DeleteQualifier() noexcept {
  return not_implemented("Imethod_DeleteQualifier");
}

int CIMcontainer::Imethod_EnumerateQualifiers() noexcept {
  return not_implemented("Imethod_EnumerateQualifiers");
}

}  // namespace zuCIM
