#include "CIMoperations/entry_trace.h"
#include "CIMoperations/failure.h"
#include "CIMoperations/held_answer.h"
#include "CIMoperations/typed_value.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

// The intrinsic operations that change instances.
namespace zuCIM {
namespace {

void empty_instance_names(CIMcontainer& container) {
  CIMclass* const entry = container.currentClass;
  if (entry != nullptr) entry->kill_element(&entry->instanceNames);
}

bool add_reference_property(CIMcontainer& container, const _properties_& property,
                            std::uint32_t count) {
  const char* const class_name = static_cast<const char*>(property.values);
  begin_typed_element(container, elem::PROPERTY_REFERENCE, property.name, attr::REFERENCECLASS,
                      class_name);
  for (std::uint32_t i = 0; class_name != nullptr && i < count; ++i)
    if (!add_reference(container, property.reference)) return false;
  container.endElement(elem::PROPERTY_REFERENCE);
  return true;
}

void add_value_property(CIMcontainer& container, const _properties_& property, ValueType type,
                        std::uint32_t count) {
  const int element = type.is_array ? elem::PROPERTY_ARRAY : elem::PROPERTY;
  begin_typed_element(container, element, property.name, attr::TYPE, known_cim_types[type.id]);
  if (type.is_array) begin_line(container, elem::VALUE_ARRAY);
  if (property.values != nullptr) add_typed_values(container, property.values, count, type.id);
  if (type.is_array) container.endElement(elem::VALUE_ARRAY);
  container.endElement(element);
}

// Appends one property. Returns what is wrong with it, null if nothing is.
const char* add_property(CIMcontainer& container, const _properties_& property) {
  const ValueType type(property.type);
  if (!type.is_known()) return "Imethod_CreateInstance() bad Type";
  if (property.values == nullptr && property.count == 0) return nullptr;
  const std::uint32_t count = property.count > 1 && !type.is_array ? 1 : property.count;
  if (!type.is_reference())
    add_value_property(container, property, type, count);
  else if (!add_reference_property(container, property, count))
    return "Imethod_CreateInstance() bad CIMelement: reference";
  return nullptr;
}

// Builds the request of CreateInstance. Returns what is wrong with the properties, null if nothing
// is.
const char* write_new_instance(CIMcontainer& container, const _properties_* property) {
  const HeldAnswer held(container);
  container.beginIntrinsicMethod(imethod::CreateInstance);
  if (property == nullptr) return "Imethod_CreateInstance() missing NewInstance definition";
  const CIMclass* const entry = container.currentClass;
  container.beginElement(elem::IPARAMVALUE, nullptr);
  container.addAttribute(attr::NAME, "NewInstance", ">\n");
  container.beginElement(elem::INSTANCE, nullptr);
  container.addAttribute(attr::CLASSNAME, entry != nullptr ? entry->className : nullptr, ">\n");
  for (; property->name != nullptr; ++property)
    if (const char* const fault = add_property(container, *property); fault != nullptr)
      return fault;
  container.endElement(elem::INSTANCE);
  container.endElement(elem::IPARAMVALUE);
  return nullptr;
}

// Builds the request of ModifyInstance. Returns what is wrong with the instance, null if nothing
// is.
//
// The named instance stands directly in the method call, not in a parameter of its own; servers are
// asked in exactly this form.
const char* write_modified_instance(CIMcontainer& container, CIMelement* instance_name,
                                    CIMelement& instance, const CIMarray* property_list) {
  const HeldAnswer held(container);
  container.beginIntrinsicMethod(imethod::ModifyInstance);
  if (instance.name != known_cim_elements[elem::INSTANCE])
    return "Imethod_ModifyInstance() missing modifiedinstance";
  container.addOptionalPropertyList(property_list);
  begin_line(container, elem::VALUE_NAMEDINSTANCE);
  container.addInstanceNameParam(instance_name);
  if (instance.GenerateCIMXML(container.request) != status::success)
    return "Imethod_ModifyInstance() bad CIMelement: modifiedinstance";
  container.endElement(elem::VALUE_NAMEDINSTANCE);
  return nullptr;
}

// Builds the request of DeleteInstance. True when the name lay in the answer before, and is gone
// with it.
bool write_deleted_name(CIMcontainer& container, CIMelement* instance_name) {
  const HeldAnswer held(container);
  container.beginIntrinsicMethod(imethod::DeleteInstance);
  container.addInstanceNameParam(instance_name);
  return held.contains(instance_name);
}

}  // namespace

int CIMcontainer::Imethod_DeleteInstance(CIMelement* instance_name) noexcept {
  trace_entry(*this, "Imethod_DeleteInstance()");
  const bool is_gone = write_deleted_name(*this, instance_name);
  const int outcome = performIntrinsicMethod();
  if (outcome != status::success) {
    empty_instance_names(*this);
    return outcome;
  }
  if (is_gone) return outcome;
  const CIMelement* const before = instance_name->deleteElement(true);
  if (before != nullptr && before == currentClass->instanceNames) empty_instance_names(*this);
  return outcome;
}

std::intptr_t CIMcontainer::Imethod_CreateInstance(const _properties_* properties) noexcept {
  trace_entry(*this, "Imethod_CreateInstance()");
  const char* const fault = write_new_instance(*this, properties);
  if (fault != nullptr) {
    refuse_request(*this, fault);
    return 0;
  }
  if (performIntrinsicMethod() == status::success) return ExtractInstanceNames(&result);
  empty_instance_names(*this);
  return 0;
}

int CIMcontainer::Imethod_ModifyInstance(CIMelement* instance_name, CIMelement& instance,
                                         const CIMarray* property_list) noexcept {
  trace_entry(*this, "Imethod_ModifyInstance()");
  const char* const fault = write_modified_instance(*this, instance_name, instance, property_list);
  return fault != nullptr ? refuse_request(*this, fault) : performIntrinsicMethod();
}

}  // namespace zuCIM
