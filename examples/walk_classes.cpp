// Prints the definition of a class: its properties, which of them are keys, and its methods.
// Usage: walk_classes HOST PORT USER PASSWORD [CLASS]
#include "connect.h"

using namespace zuCIM;

namespace {

const char* or_dash(const char* text) {
  return text != nullptr ? text : "-";
}

bool is_kind(const CIMelement* element, int kind) {
  return element->name == known_cim_elements[kind];
}

// A key property of a class definition carries the text "Key".
void print_property(CIMelement* property) {
  const bool is_reference = is_kind(property, elem::PROPERTY_REFERENCE);
  const char* const type = property->attr_find(is_reference ? attr::REFERENCECLASS : attr::TYPE);
  std::printf("  %s%s %s%s%s\n", is_reference ? "ref " : "", or_dash(type),
              or_dash(property->attr_find(attr::NAME)),
              is_kind(property, elem::PROPERTY_ARRAY) ? "[]" : "",
              property->value != nullptr ? "  (key)" : "");
}

// The parameters of a method follow it and have it as their parent.
void print_method(CIMelement* method) {
  std::printf("  %s %s(", or_dash(method->attr_find(attr::TYPE)),
              or_dash(method->attr_find(attr::NAME)));
  const char* separator = "";
  for (CIMelement* node = method->next; node != nullptr; node = node->next) {
    if (node->parent != method) continue;
    std::printf("%s%s", separator, or_dash(node->attr_find(attr::NAME)));
    separator = ", ";
  }
  std::puts(")");
}

}  // namespace

int main(int argc, char* argv[]) {
  CIMcontainer* const context = connect_as_told(argc, argv);
  if (context == nullptr) return 2;
  const char* const class_name = argc > 5 ? argv[5] : "CIM_ComputerSystem";

  // LocalOnly false, IncludeQualifiers true (the qualifier "Key" tells the keys), all properties.
  const CIMclass* const entry = context->setCurrentClass(class_name, "root/cimv2");
  const int status = context->Imethod_GetClass(0, 1, 0, nullptr);
  if (status != status::success) return report_failure("GetClass", status);

  std::printf("class %s\n", class_name);
  for (CIMelement* node = entry->instances->next; node != nullptr; node = node->next)
    print_property(node);
  for (CIMelement* node = entry->methods; node != nullptr; node = node->next)
    if (is_kind(node, elem::METHOD)) print_method(node);

  context->ESXi_Occupied(false);
  return 0;
}
