#include <cstdlib>
#include <cstring>

#include "CIMclasses/subtree.h"
#include "CIMoperations/failure.h"
#include "CIMoperations/result_list.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

// Turning the CLASS of an answer into a template for instances and a list of methods. Both carry
// names and types only: the qualifiers of properties and methods are freed, those of parameters
// stay.
namespace zuCIM {
namespace {

constexpr const char* function_name = "ExtractClassDefinition";

// What the failure traces call the three steps.
constexpr const char* class_step = "Class-ClassName";
constexpr const char* property_step = "Class-Properties";
constexpr const char* method_step = "Class-Methods";

bool is_property(const CIMelement* element) {
  return is_kind(element, elem::PROPERTY) || is_kind(element, elem::PROPERTY_ARRAY) ||
         is_kind(element, elem::PROPERTY_REFERENCE);
}

bool is_parameter(const CIMelement* element) {
  return is_kind(element, elem::PARAMETER) || is_kind(element, elem::PARAMETER_ARRAY) ||
         is_kind(element, elem::PARAMETER_REFERENCE) || is_kind(element, elem::PARAMETER_REFARRAY);
}

bool is_key(const Run& property) {
  const CIMelement* const end = property.last->next;
  for (CIMelement* node = property.first->next; node != end; node = node->next)
    if (node->parent == property.first && is_kind(node, elem::QUALIFIER) &&
        node->attr_find_exact(attr::NAME, "Key") == 0)
      return true;
  return false;
}

bool set_value(CIMelement& element, const char* text) {
  char* const copy = strdup(text);
  if (copy == nullptr) return false;
  std::free(element.value);
  element.value = copy;
  return true;
}

// Traces that memory is short; returns false.
bool memory_is_short(int line = __builtin_LINE()) {
  trace_exception(function_name, "cannot alloc memory!", line);
  return false;
}

bool make_template(ResultList& instance_template, const char* class_name) {
  if (!instance_template.make_head(elem::INSTANCE)) return memory_is_short();
  CIMelement& head = *instance_template.head();
  if (head.attr_put(attr::CLASSNAME, class_name) != status::success) return memory_is_short();
  head.attributes->FreeUnused();
  return true;
}

// Moves the properties among the children of `definition`, without their qualifiers and values.
// False when memory is short.
bool move_properties(CIMelement& definition, ResultList& instance_template) {
  CIMelement* before = &definition;
  CIMelement* child = definition.next;
  while (child != nullptr && child->parent == &definition) {
    const Run run = run_of(child);
    if (!is_property(child)) {
      before = run.last;
      child = before->next;
      continue;
    }
    if (is_key(run) && !set_value(*child, "Key")) return memory_is_short();
    child = take_out(before, run);
    instance_template.append(without_descendants(run));
  }
  return true;
}

// Takes the parameters out of `method`, whose subtree ends before `end`.
void take_parameters(CIMelement& method, const CIMelement* end, ResultList& parameters) {
  CIMelement* before = &method;
  while (before->next != nullptr && before->next != end) {
    if (!is_parameter(before->next)) {
      before = before->next;
      continue;
    }
    const Run run = run_of(before->next);
    take_out(before, run);
    parameters.append_under(&method, run);
  }
}

// Moves the METHOD that follows `before` to the end of the list, and its parameters behind it.
// False when its subtree does not end where it ended before the parameters were taken out: then one
// of them reached beyond the method, and is freed.
bool move_method(CIMelement* before, ResultList& methods) {
  CIMelement& method = *before->next;
  const CIMelement* const end = run_of(&method).last->next;

  CIMelement holder;
  CIMelement* holder_slot = &holder;
  ResultList parameters(&holder_slot);
  take_parameters(method, end, parameters);

  const Run run = run_of(&method);
  const bool ends_as_before = take_out(before, run) == end;
  methods.append(without_descendants(run));
  if (!ends_as_before) return false;

  if (holder.next == nullptr) return true;
  const Run moved{holder.next, parameters.tail()};
  holder.next = nullptr;
  methods.append_under(&method, moved);
  return true;
}

// Moves the methods of `definition`; false when one reaches too far or memory is short.
bool move_methods(CIMelement& definition, ResultList& methods) {
  const SubtreeEnd end(definition);
  CIMelement* before = &definition;
  for (CIMelement* node = before->next; !end.is_before(node); node = before->next) {
    if (!is_kind(node, elem::METHOD)) {
      before = node;
      continue;
    }
    if (!methods.make_head(elem::CIM)) return memory_is_short();
    if (!move_method(before, methods)) return false;
  }
  return true;
}

// Moves what `entry` wants out of the answer; returns the step that failed, null if none did.
const char* move_definition(CIMelement& answer, CIMclass& entry) {
  CIMelement* const definition = answer.findelement(elem::CLASS, 0);
  if (definition == nullptr) return class_step;
  if (definition->attr_find_exact(attr::NAME, entry.className) != 0) return class_step;

  ResultList instance_template(&entry.instances);
  if (!make_template(instance_template, entry.className)) return class_step;
  if (!move_properties(*definition, instance_template)) return property_step;
  ResultList methods(&entry.methods);
  return move_methods(*definition, methods) ? nullptr : method_step;
}

void empty_definition(CIMclass& entry) {
  entry.kill_element(&entry.instances);
  entry.kill_element(&entry.methods);
}

}  // namespace

int CIMcontainer::ExtractClassDefinition() noexcept {
  if (this == nullptr || currentClass == nullptr) {
    trace_error(this, function_name, "this or pcls = NULL");
    return status::failure;
  }
  empty_definition(*currentClass);
  const char* const failed_step = move_definition(result, *currentClass);
  if (failed_step == nullptr) return status::success;
  trace_error(this, function_name, failed_step);
  empty_definition(*currentClass);
  trace_error(this, function_name,
              currentClass->className != nullptr ? currentClass->className : "");
  return status::failure;
}

}  // namespace zuCIM
