#include "CIMoperations/result_list.h"

#include <new>

#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

CIMelement* end_of_chain(CIMelement* element) {
  if (element == nullptr) return nullptr;
  while (element->next != nullptr) element = element->next;
  return element;
}

// Makes every element of the run whose parent is not in it a child of the first one. Such strays
// are only found when the run reaches the end of its document.
void adopt_strays(Run run) {
  const CIMelement* previous = run.first;
  for (CIMelement* node = run.first->next; node != nullptr; node = node->next) {
    const CIMelement* ancestor = previous;
    while (ancestor != run.first && ancestor != node->parent) ancestor = ancestor->parent;
    if (ancestor != node->parent) node->parent = run.first;
    previous = node;
  }
}

}  // namespace

bool is_kind(const CIMelement* element, int kind) noexcept {
  return element != nullptr && element->name == known_cim_elements[kind];
}

Run run_of(CIMelement* element) noexcept {
  return {element, element->getLastElement()};
}

CIMelement* take_out(CIMelement* before, Run run) noexcept {
  CIMelement* const following = run.last->next;
  run.last->next = nullptr;
  if (before != nullptr) before->next = following;
  if (following == nullptr) adopt_strays(run);
  return following;
}

Run without_descendants(Run run) noexcept {
  CIMelement* const descendants = run.first->next;
  run.first->next = nullptr;
  delete descendants;
  return {run.first, run.first};
}

ResultList::ResultList(CIMelement** slot) noexcept : slot_(slot), tail_(end_of_chain(*slot)) {}

bool ResultList::make_head(int kind) noexcept {
  if (*slot_ != nullptr) return true;
  CIMelement* const made = new (std::nothrow) CIMelement;
  if (made == nullptr) return false;
  made->name = known_cim_elements[kind];
  *slot_ = tail_ = made;
  return true;
}

CIMelement* ResultList::before(const CIMelement* element) const noexcept {
  CIMelement* node = *slot_;
  while (node != nullptr && node->next != element) node = node->next;
  return node;
}

void ResultList::append_under(CIMelement* parent, Run run) noexcept {
  run.first->parent = parent;
  tail_->next = run.first;
  tail_ = run.last;
}

}  // namespace zuCIM
