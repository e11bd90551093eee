#include "CIMoperations/extraction_judge.h"

#include <cstring>
#include <set>

#include "zuCIM/vocabulary.h"

namespace {

using namespace zuCIM;

bool is(const CIMelement* element, int kind) {
  return element != nullptr && element->name == known_cim_elements[kind];
}

bool is_property(const CIMelement* element) {
  return is(element, elem::PROPERTY) || is(element, elem::PROPERTY_ARRAY) ||
         is(element, elem::PROPERTY_REFERENCE);
}

bool is_parameter(const CIMelement* element) {
  return is(element, elem::PARAMETER) || is(element, elem::PARAMETER_ARRAY) ||
         is(element, elem::PARAMETER_REFERENCE) || is(element, elem::PARAMETER_REFARRAY);
}

CIMelement* new_head(int kind) {
  auto* const head = new CIMelement;
  head->name = known_cim_elements[kind];
  return head;
}

// Moves an element with its subtree. Elements that are taken along although their parents are not
// become its children.
CIMelement* move_whole(CIMelement* element, CIMelement** list) {
  CIMelement* const following = element->redirect_chain(list, true);
  std::set<const CIMelement*> moved;
  for (const CIMelement* node = element; node != nullptr; node = node->next) moved.insert(node);
  for (CIMelement* node = element->next; node != nullptr; node = node->next)
    if (!moved.contains(node->parent)) node->parent = element;
  return following;
}

bool contains(const CIMelement* list, const CIMelement* element) {
  while (list != nullptr && list != element) list = list->next;
  return list != nullptr;
}

// Moves a run of elements of one kind; null and a trace when there is none.
CIMelement* move_run(CIMelement* tree, int kind, CIMelement*& list, const std::string& fault,
                     std::vector<std::string>& traces) {
  CIMelement* element = is(tree, elem::CIM) ? tree->findelement(kind, 0) : tree;
  if (!is(element, kind)) {
    traces.push_back(fault);
    return nullptr;
  }
  if (element == list) return element;
  CIMelement* const first = element;
  if (list == nullptr) list = new_head(elem::CIM);
  const bool is_listed = contains(list, first);
  do {
    CIMelement* const following =
        is_listed ? element->redirect_chain(&list, true) : move_whole(element, &list);
    element->parent = list;
    element = following;
  } while (element != first && is(element, kind));
  return first;
}

const char* fault_of_pair(CIMelement* pair) {
  CIMelement* const name = pair->next;
  if (!is(name, elem::INSTANCENAME)) return "missing INSTANCENAME-subelement";
  CIMelement* const instance = name->getLastElement()->next;
  if (!is(instance, elem::INSTANCE)) return "missing INSTANCE-subelement";
  CIMelement* const following = instance->getLastElement()->next;
  if (following != nullptr && !is(following, elem::VALUE_NAMEDINSTANCE))
    return "missing next VALUE_NAMEDINSTANCE-element";
  return nullptr;
}

bool has_key_qualifier(CIMelement* property) {
  CIMelement* const end = property->getLastElement()->next;
  for (CIMelement* node = property->next; node != end; node = node->next)
    if (node->parent == property && is(node, elem::QUALIFIER) &&
        node->attr_find_exact(attr::NAME, "Key") == 0)
      return true;
  return false;
}

bool judge_properties(CIMelement* definition, CIMclass& entry) {
  CIMelement* child = definition->next;
  while (child != nullptr && child->parent == definition) {
    CIMelement* const end = child->getLastElement()->next;
    if (is_property(child)) {
      if (has_key_qualifier(child)) {
        free(child->value);
        child->value = strdup("Key");
      }
      if (child->redirect_chain(&entry.instances, false) != end) return false;
      child->parent = entry.instances;
    }
    child = end;
  }
  return true;
}

// Moves one method; `node` goes on to what follows it.
bool judge_method(CIMelement*& node, CIMclass& entry) {
  CIMelement* const method = node;
  CIMelement* const end = method->getLastElement()->next;
  CIMelement* parameters = nullptr;
  for (CIMelement* each = method->next; each != nullptr && each != end;)
    each = is_parameter(each) ? move_whole(each, &parameters) : each->next;

  if (entry.methods == nullptr) entry.methods = new_head(elem::CIM);
  node = method->redirect_chain(&entry.methods, false);
  method->parent = entry.methods;
  if (node != end) {
    delete parameters;
    return false;
  }
  CIMelement* last = entry.methods;
  while (last->next != nullptr) last = last->next;
  for (CIMelement* each = parameters; each != nullptr; each = each->next)
    if (each->parent == nullptr) each->parent = last;
  last->next = parameters;
  return true;
}

bool judge_methods(CIMelement* definition, CIMclass& entry) {
  CIMelement* const parent = definition->parent;
  CIMelement* const grandparent = parent != nullptr ? parent->parent : nullptr;
  CIMelement* node = definition->next;
  while (node != nullptr && node->parent != parent && node->parent != grandparent) {
    if (!is(node, elem::METHOD))
      node = node->next;
    else if (!judge_method(node, entry))
      return false;
  }
  return true;
}

const char* judge_steps(CIMelement& answer, CIMclass& entry) {
  CIMelement* const definition = answer.findelement(elem::CLASS, 0);
  if (definition->attr_find_exact(attr::NAME, entry.className) != 0) return "Class-ClassName";
  entry.instances = new_head(elem::INSTANCE);
  entry.instances->attr_put(attr::CLASSNAME, entry.className);
  entry.instances->attributes->FreeUnused();
  if (!judge_properties(definition, entry)) return "Class-Properties";
  return judge_methods(definition, entry) ? nullptr : "Class-Methods";
}

std::string line(const std::string& host, const char* function, const std::string& text) {
  return "[" + host + "] " + function + "() " + text;
}

}  // namespace

JudgedExtraction judge_instance_names(CIMelement* tree, CIMclass& entry, const std::string& host) {
  JudgedExtraction outcome;
  outcome.element = move_run(tree, elem::INSTANCENAME, entry.instanceNames,
                             line(host, "ExtractInstanceNames", "missing INSTANCENAME-subelement"),
                             outcome.traces);
  return outcome;
}

JudgedExtraction judge_instances(CIMelement* tree, CIMclass& entry, const std::string& host) {
  JudgedExtraction outcome;
  outcome.element =
      move_run(tree, elem::INSTANCE, entry.instances,
               line(host, "ExtractInstance", "missing INSTANCE-subelement"), outcome.traces);
  return outcome;
}

JudgedExtraction judge_named_instances(CIMelement& answer, CIMclass& entry,
                                       const std::string& host) {
  JudgedExtraction outcome;
  entry.kill_element(&entry.instanceNames);
  entry.kill_element(&entry.instances);
  CIMelement* pair = answer.findelement(elem::VALUE_NAMEDINSTANCE, 0);
  while (pair != nullptr) {
    const char* const fault = fault_of_pair(pair);
    if (fault != nullptr) {
      outcome.traces.push_back(line(host, "ExtractNamedInstances", fault));
      entry.kill_element(&entry.instanceNames);
      entry.kill_element(&entry.instances);
      outcome.traces.push_back(line(host, "ExtractNamedInstances", "wrong XML data"));
      return outcome;
    }
    CIMelement* const name = pair->next;
    CIMelement* const instance = name->getLastElement()->next;
    pair = instance->getLastElement()->next;
    judge_instance_names(name, entry, host);
    judge_instances(instance, entry, host);
  }
  outcome.element = entry.instanceNames->findelement(elem::INSTANCENAME, 0);
  return outcome;
}

JudgedExtraction judge_class_definition(CIMelement& answer, CIMclass& entry,
                                        const std::string& host) {
  JudgedExtraction outcome;
  entry.kill_element(&entry.instances);
  entry.kill_element(&entry.methods);
  const char* const fault = judge_steps(answer, entry);
  if (fault == nullptr) return outcome;
  outcome.traces.push_back(line(host, "ExtractClassDefinition", fault));
  entry.kill_element(&entry.instances);
  entry.kill_element(&entry.methods);
  outcome.traces.push_back(line(host, "ExtractClassDefinition", entry.className));
  outcome.code = 1001;
  return outcome;
}
