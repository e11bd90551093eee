#include "CIMoperations/entry_trace.h"
#include "CIMoperations/held_answer.h"
#include "CIMoperations/optional_flags.h"
#include "CIMoperations/sending.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

// Empties a result list of the current class. The operations do so only when their request is
// built, since an instance name in it may lie in that very list.
void empty_results(CIMcontainer& container, CIMelement* CIMclass::*slot) {
  CIMclass* const entry = container.currentClass;
  if (entry != nullptr) entry->kill_element(&(entry->*slot));
}

}  // namespace

int CIMcontainer::performIntrinsicMethod() noexcept {
  endElement(elem::IMETHODCALL);
  endElement(elem::SIMPLEREQ);
  endElement(elem::MESSAGE);
  endElement(elem::CIM);
  return send_request(*this, "performIntrinsicMethod");
}

int CIMcontainer::Imethod_GetClass(int local_only, int include_qualifiers, int include_class_origin,
                                   const CIMarray* property_list) noexcept {
  trace_entry(*this, "Imethod_GetClass()");
  beginIntrinsicMethod(imethod::GetClass);
  addClassNameParam(1);
  addOptionalParameter(local_only_flag, local_only);
  addOptionalParameter(include_qualifiers_flag, include_qualifiers);
  addOptionalParameter(include_class_origin_flag, include_class_origin);
  addOptionalPropertyList(property_list);
  const int outcome = performIntrinsicMethod();
  return outcome == status::success ? ExtractClassDefinition() : outcome;
}

std::intptr_t CIMcontainer::Imethod_GetInstance(CIMelement* instance_name, int include_class_origin,
                                                const CIMarray* property_list) noexcept {
  trace_entry(*this, "Imethod_GetInstance()");
  {
    const HeldAnswer held(*this);
    beginIntrinsicMethod(imethod::GetInstance);
    addInstanceNameParam(instance_name);
  }
  addOptionalParameter(include_class_origin_flag, include_class_origin);
  addOptionalPropertyList(property_list);
  empty_results(*this, &CIMclass::instances);
  return performIntrinsicMethod() == status::success ? ExtractInstance(&result) : 0;
}

std::intptr_t CIMcontainer::Imethod_EnumerateInstances(int local_only, int include_qualifiers,
                                                       int include_class_origin,
                                                       int deep_inheritance,
                                                       const CIMarray* property_list) noexcept {
  trace_entry(*this, "Imethod_EnumerateInstances()");
  beginIntrinsicMethod(imethod::EnumerateInstances);
  addOptionalParameter(local_only_flag, local_only);
  addOptionalParameter(include_qualifiers_flag, include_qualifiers);
  addOptionalParameter(include_class_origin_flag, include_class_origin);
  addOptionalParameter(deep_inheritance_flag, deep_inheritance);
  addClassNameParam(1);
  addOptionalPropertyList(property_list);
  empty_results(*this, &CIMclass::instanceNames);
  empty_results(*this, &CIMclass::instances);
  return performIntrinsicMethod() == status::success ? ExtractNamedInstances() : 0;
}

CIMelement* CIMcontainer::Imethod_EnumerateInstanceNames() noexcept {
  trace_entry(*this, "Imethod_EnumerateInstanceNames()");
  beginIntrinsicMethod(imethod::EnumerateInstanceNames);
  addClassNameParam(1);
  empty_results(*this, &CIMclass::instanceNames);
  if (performIntrinsicMethod() != status::success) return nullptr;
  return reinterpret_cast<CIMelement*>(ExtractInstanceNames(&result));
}

}  // namespace zuCIM
