#pragma once

#include "zuCIM/container.h"

namespace zuCIM {

// Keeps the answer that a container holds alive beyond the start of the next request, which empties
// `result`: what the caller passes to an operation often lies in it. `result` is empty from the
// moment this object is made, as the start of a request leaves it.
class HeldAnswer {
 public:
  explicit HeldAnswer(CIMcontainer& container) noexcept;
  HeldAnswer(const HeldAnswer&) = delete;
  HeldAnswer& operator=(const HeldAnswer&) = delete;

  // Whether `element` lies in the answer. Walks the answer.
  bool contains(const CIMelement* element) const noexcept;
  // Whether `text` is a value or an attribute's text in the answer. Walks the answer.
  bool contains_text(const char* text) const noexcept;

 private:
  // The first element; those below it still have the container's `result` as parent.
  CIMelement root_;
};

// Whether `element` stands for a whole document, which the generator would put in the place of the
// request instead of into it. `result` is one even when it was emptied.
bool is_document(const CIMcontainer& container, const CIMelement* element) noexcept;

}  // namespace zuCIM
