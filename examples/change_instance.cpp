// Creates an instance, reads it, changes it and deletes it again.
// Usage: change_instance HOST PORT USER PASSWORD
#include <cstdlib>
#include <cstring>

#include "connect.h"

using namespace zuCIM;

namespace {

constexpr const char* class_name = "CIM_IndicationFilter";

_properties_ text_property(const char* name, const char* text) {
  return {.name = name, .type = type::string, .count = 1, .values = text, .reference = nullptr};
}

// Reads the instance and returns it; it lies in the current class entry until the next reading.
CIMelement* read_instance(CIMcontainer& context, CIMelement* name) {
  return reinterpret_cast<CIMelement*>(context.Imethod_GetInstance(name, -1, nullptr));
}

bool print_query(CIMcontainer& context, CIMelement* name, const char* when) {
  CIMelement* const instance = read_instance(context, name);
  if (instance == nullptr) return false;
  const char* const query = instance->getValueOf(elem::PROPERTY, PROP_QUERY);
  std::printf("%-8s %s\n", when, query != nullptr ? query : "(null)");
  return true;
}

// Gives the property Query of the instance another value, and sends that property alone.
int change_query(CIMcontainer& context, CIMelement* name, const char* query) {
  CIMelement* const instance = read_instance(context, name);
  CIMelement* const property = instance->findProperty(PROP_QUERY);
  CIMelement* const value = property != nullptr ? property->next : nullptr;
  if (value == nullptr || value->name != known_cim_elements[elem::VALUE]) return status::failure;
  std::free(value->value);
  value->value = strdup(query);

  CIMarray changed;
  changed.putargv(PROP_QUERY, -1, 15);
  return context.Imethod_ModifyInstance(name, *instance, &changed);
}

}  // namespace

int main(int argc, char* argv[]) {
  CIMcontainer* const context = connect_as_told(argc, argv);
  if (context == nullptr) return 2;
  context->setCurrentClass(class_name, "root/interop");

  const _properties_ properties[] = {
      text_property(PROP_SYSCREATIONCLASSNAME, "CIM_ComputerSystem"),
      text_property(PROP_SYSTEMNAME, "console.example"),
      text_property(PROP_CREATIONCLASSNAME, class_name),
      text_property(PROP_NAME, "example filter"),
      text_property(PROP_SOURCENAMESPACE, "root/cimv2"),
      text_property(PROP_QUERYLANGUAGE, "WQL"),
      text_property(PROP_QUERY, "SELECT * FROM CIM_AlertIndication"),
      {.name = nullptr, .type = 0, .count = 0, .values = nullptr, .reference = nullptr}};
  auto* const name = reinterpret_cast<CIMelement*>(context->Imethod_CreateInstance(properties));
  if (name == nullptr) return report_failure("CreateInstance", context->ChkCimStatus());
  if (!print_query(*context, name, "created"))
    return report_failure("GetInstance", context->ChkCimStatus());

  int status = change_query(*context, name, "SELECT * FROM CIM_InstCreation");
  if (status != status::success) return report_failure("ModifyInstance", status);
  if (!print_query(*context, name, "changed"))
    return report_failure("GetInstance", context->ChkCimStatus());

  // The name is gone after this, too.
  status = context->Imethod_DeleteInstance(name);
  if (status != status::success) return report_failure("DeleteInstance", status);
  std::puts("deleted");

  context->ESXi_Occupied(false);
  return 0;
}
