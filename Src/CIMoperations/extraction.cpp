#include "CIMoperations/failure.h"
#include "CIMoperations/result_list.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

// Moving instance names and instances out of an answer.
namespace zuCIM {
namespace {

// One of the two kinds of results that are moved as they are.
struct ResultKind {
  const char* function;
  int element;
  CIMelement* CIMclass::*slot;
  const char* missing;
};

constexpr ResultKind instance_names{"ExtractInstanceNames", elem::INSTANCENAME,
                                    &CIMclass::instanceNames, "missing INSTANCENAME-subelement"};
constexpr ResultKind whole_instances{"ExtractInstance", elem::INSTANCE, &CIMclass::instances,
                                     "missing INSTANCE-subelement"};

// An element and the one before it in its chain, null when there is none.
struct Place {
  CIMelement* before;
  CIMelement* element;
};

std::intptr_t as_result(CIMelement* element) {
  return reinterpret_cast<std::intptr_t>(element);
}

bool has_class(const CIMcontainer* container, const char* function) {
  if (container != nullptr && container->currentClass != nullptr) return true;
  trace_error(container, function, "this or pcls = NULL");
  return false;
}

CIMelement* element_before(const CIMelement* element) {
  CIMelement* node = element->parent;
  while (node != nullptr && node->next != element) node = node->next;
  return node;
}

Place first_in_chain(CIMelement* root, int kind) {
  Place place{nullptr, root};
  while (place.element != nullptr && !is_kind(place.element, kind))
    place = {place.element, place.element->next};
  return place;
}

// Where the extraction from `tree` starts; no element when there is nothing to extract.
Place find_start(CIMelement* tree, int kind) {
  if (is_kind(tree, elem::CIM)) return first_in_chain(tree, kind);
  if (is_kind(tree, kind)) return {element_before(tree), tree};
  return {nullptr, nullptr};
}

// Moves `start` and the elements of the same kind that follow it.
void move_run(Place start, int kind, ResultList& list) {
  for (CIMelement* element = start.element; is_kind(element, kind);) {
    const Run run = run_of(element);
    element = take_out(start.before, run);
    list.append(run);
  }
}

// The caller may name elements that stand in the list already. They go to its end one by one, until
// the first of them comes round again. Nothing leaves the list, so no element loses its parent.
void move_within_list(Place start, int kind, ResultList& list) {
  CIMelement* element = start.element;
  do {
    const Run run = run_of(element);
    CIMelement* const following = run.last->next;
    if (following == nullptr) {
      element->parent = list.head();
      return;
    }
    start.before->next = following;
    run.last->next = nullptr;
    list.append(run);
    element = following;
  } while (element != start.element && is_kind(element, kind));
}

std::intptr_t extract(CIMcontainer* container, CIMelement* tree, const ResultKind& kind) {
  if (!has_class(container, kind.function)) return 0;
  const Place start = find_start(tree, kind.element);
  if (start.element == nullptr) {
    trace_error(container, kind.function, kind.missing);
    return 0;
  }
  ResultList list(&(container->currentClass->*kind.slot));
  if (!list.make_head(elem::CIM)) {
    trace_exception(kind.function, "cannot alloc memory!");
    return 0;
  }
  // A class template is the head of its list, and stays that.
  if (start.element == list.head()) return as_result(start.element);
  CIMelement* const before = list.before(start.element);
  if (before != nullptr)
    move_within_list({before, start.element}, kind.element, list);
  else
    move_run(start, kind.element, list);
  return as_result(start.element);
}

// Moves the name and the instance of `pair`, a VALUE.NAMEDINSTANCE; the next one then follows it.
// Returns what is wrong with it, null if nothing is.
const char* move_pair(CIMelement* pair, ResultList& names, ResultList& instance_list) {
  CIMelement* const name = pair->next;
  if (!is_kind(name, elem::INSTANCENAME)) return instance_names.missing;
  const Run name_run = run_of(name);

  CIMelement* const instance = name_run.last->next;
  if (!is_kind(instance, elem::INSTANCE)) return whole_instances.missing;
  const Run instance_run = run_of(instance);

  const CIMelement* const following = instance_run.last->next;
  if (following != nullptr && !is_kind(following, elem::VALUE_NAMEDINSTANCE))
    return "missing next VALUE_NAMEDINSTANCE-element";

  take_out(pair, name_run);
  take_out(pair, instance_run);
  names.append(name_run);
  instance_list.append(instance_run);
  return nullptr;
}

// Moves all pairs from `pair` on into the empty lists of `entry`; false if one is malformed or
// memory is short.
bool move_pairs(const CIMcontainer& container, CIMelement* pair, CIMclass& entry) {
  ResultList names(&entry.instanceNames);
  ResultList instance_list(&entry.instances);
  if (!names.make_head(elem::CIM) || !instance_list.make_head(elem::CIM)) {
    trace_exception("ExtractNamedInstances", "cannot alloc memory!");
    return false;
  }
  for (; pair != nullptr; pair = pair->next) {
    const char* const fault = move_pair(pair, names, instance_list);
    if (fault == nullptr) continue;
    trace_error(&container, "ExtractNamedInstances", fault);
    trace_error(&container, "ExtractNamedInstances", "wrong XML data");
    return false;
  }
  return true;
}

void empty_instance_lists(CIMclass& entry) {
  entry.kill_element(&entry.instanceNames);
  entry.kill_element(&entry.instances);
}

}  // namespace

std::intptr_t CIMcontainer::ExtractInstanceNames(CIMelement* tree) noexcept {
  return extract(this, tree, instance_names);
}

std::intptr_t CIMcontainer::ExtractInstance(CIMelement* tree) noexcept {
  return extract(this, tree, whole_instances);
}

std::intptr_t CIMcontainer::ExtractNamedInstances() noexcept {
  if (!has_class(this, "ExtractNamedInstances")) return 0;
  empty_instance_lists(*currentClass);
  CIMelement* const first = result.findelement(elem::VALUE_NAMEDINSTANCE, 0);
  if (first == nullptr) return 0;
  if (move_pairs(*this, first, *currentClass))
    return as_result(currentClass->instanceNames->findelement(elem::INSTANCENAME, 0));
  empty_instance_lists(*currentClass);
  return 0;
}

}  // namespace zuCIM
