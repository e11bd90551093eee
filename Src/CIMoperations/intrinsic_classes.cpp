#include "CIMoperations/entry_trace.h"
#include "CIMoperations/failure.h"
#include "CIMoperations/held_answer.h"
#include "CIMoperations/optional_flags.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

// The intrinsic operations on classes that do not read a definition.
namespace zuCIM {
namespace {

// How an operation that sends a class names its parameter and its failures.
struct ClassArgument {
  int method;
  const char* parameter;
  const char* missing;
  const char* bad;
};

constexpr ClassArgument new_class_argument{imethod::CreateClass, "NewClass",
                                           "Imethod_CreateClass() missing NewClass definition",
                                           "Imethod_CreateClass() bad CIMelement: newclass"};
constexpr ClassArgument modified_class_argument{
    imethod::ModifyClass, "ModifiedClass", "Imethod_ModifyClass() missing ModifiedClass definition",
    "Imethod_ModifyClass() bad CIMelement: modifiedclass"};

// Builds the request. Returns what is wrong with the class, null if nothing is.
const char* write_class(CIMcontainer& container, CIMelement& definition,
                        const ClassArgument& argument) {
  const HeldAnswer held(container);
  container.beginIntrinsicMethod(argument.method);
  if (definition.name != known_cim_elements[elem::CLASS]) return argument.missing;
  container.beginElement(elem::IPARAMVALUE, nullptr);
  container.addAttribute(attr::NAME, argument.parameter, ">\n");
  if (definition.GenerateCIMXML(container.request) != status::success) return argument.bad;
  container.endElement(elem::IPARAMVALUE);
  return nullptr;
}

int send_class(CIMcontainer& container, CIMelement& definition, const ClassArgument& argument) {
  const char* const fault = write_class(container, definition, argument);
  return fault != nullptr ? refuse_request(container, fault) : container.performIntrinsicMethod();
}

}  // namespace

int CIMcontainer::Imethod_DeleteClass() noexcept {
  trace_entry(*this, "Imethod_DeleteClass()");
  beginIntrinsicMethod(imethod::DeleteClass);
  addClassNameParam(1);
  return performIntrinsicMethod();
}

int CIMcontainer::Imethod_CreateClass(CIMelement& new_class) noexcept {
  trace_entry(*this, "Imethod_CreateClass()");
  return send_class(*this, new_class, new_class_argument);
}

int CIMcontainer::Imethod_ModifyClass(CIMelement& modified_class) noexcept {
  trace_entry(*this, "Imethod_ModifyClass()");
  return send_class(*this, modified_class, modified_class_argument);
}

int CIMcontainer::Imethod_EnumerateClasses(int local_only, int include_qualifiers,
                                           int include_class_origin,
                                           int deep_inheritance) noexcept {
  trace_entry(*this, "Imethod_EnumerateClasses()");
  beginIntrinsicMethod(imethod::EnumerateClasses);
  addOptionalParameter(local_only_flag, local_only);
  addOptionalParameter(include_qualifiers_flag, include_qualifiers);
  addOptionalParameter(include_class_origin_flag, include_class_origin);
  addOptionalParameter(deep_inheritance_flag, deep_inheritance);
  addClassNameParam(0);
  return performIntrinsicMethod();
}

int CIMcontainer::Imethod_EnumerateClassNames(int deep_inheritance) noexcept {
  trace_entry(*this, "Imethod_EnumerateClassNames()");
  beginIntrinsicMethod(imethod::EnumerateClassNames);
  addOptionalParameter(deep_inheritance_flag, deep_inheritance);
  addClassNameParam(0);
  return performIntrinsicMethod();
}

}  // namespace zuCIM
