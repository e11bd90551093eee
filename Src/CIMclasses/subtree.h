#pragma once

#include "zuCIM/element.h"

namespace zuCIM {

// Finds where the subtree of a node ends: before the first node whose parent is the parent or the
// grandparent of the subtree's top. Ancestors further up are deliberately not looked at, so a
// subtree that one of their children follows runs on.
class SubtreeEnd {
 public:
  explicit SubtreeEnd(const CIMelement& top) noexcept
      : parent_(top.parent), grandparent_(parent_ == nullptr ? nullptr : parent_->parent) {}

  // True when `node`, which comes after a node of the subtree or is null, is not of it any more.
  bool is_before(const CIMelement* node) const noexcept {
    return node == nullptr || node->parent == parent_ || node->parent == grandparent_;
  }
  // True when `node`, a node of the subtree, is the last one.
  bool is_at(const CIMelement& node) const noexcept { return is_before(node.next); }

 private:
  const CIMelement* parent_;
  const CIMelement* grandparent_;
};

}  // namespace zuCIM
