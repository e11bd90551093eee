#pragma once

#include "zuCIM/element.h"

// Moving elements out of an answer into the result lists of a class entry.
//
// The outcome is that of CIMelement::redirect_chain, node by node, with one exception. But that one
// looks for the element before the moved ones and for the end of the list each time, which makes
// moving n elements cost n * n steps; here the caller remembers the one and ResultList the other.
//
// The exception: a run may reach beyond the subtree of its first element and take along elements
// whose parents stay in the answer. A result outlives the answer, so these become children of the
// run's first element.
namespace zuCIM {

// An element and its descendants, as CIMelement::getLastElement delimits them.
struct Run {
  CIMelement* first;
  CIMelement* last;
};

// True when `element` exists and is of this kind (an element id).
bool is_kind(const CIMelement* element, int kind) noexcept;

// The run of `element`, which must not be null.
Run run_of(CIMelement* element) noexcept;

// Takes `run` out of its chain; `before` is the element before it, null when there is none. Returns
// the element that followed.
CIMelement* take_out(CIMelement* before, Run run) noexcept;

// Frees the descendants of the run's first element and returns the run that is left. The run must
// have been taken out.
Run without_descendants(Run run) noexcept;

// A result list: a head element that owns the elements moved under it.
class ResultList {
 public:
  // Works on the list in `*slot`, which must outlive this object. Finds the list's end.
  explicit ResultList(CIMelement** slot) noexcept;
  ResultList(const ResultList&) = delete;
  ResultList& operator=(const ResultList&) = delete;

  // Makes the head, of kind `kind`, if there is none; false when memory is short.
  bool make_head(int kind) noexcept;
  // The head; null when there is none.
  CIMelement* head() const noexcept { return *slot_; }
  // The last node; null when there is none.
  CIMelement* tail() const noexcept { return tail_; }
  // The node before `element`; null when that is not in the list, or is the head. Walks the list.
  CIMelement* before(const CIMelement* element) const noexcept;
  // Appends a run that was taken out; its first element becomes a child of the head.
  void append(Run run) noexcept { append_under(*slot_, run); }
  // The same with another parent.
  void append_under(CIMelement* parent, Run run) noexcept;

 private:
  CIMelement** slot_;
  CIMelement* tail_;
};

}  // namespace zuCIM
