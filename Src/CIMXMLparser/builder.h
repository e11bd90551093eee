#pragma once

#include <string>
#include <string_view>

#include "zuCIM/element.h"

namespace zuCIM::codec {

// Grows a document at its end. The root belongs to the caller, every other node to the chain.
class TreeBuilder {
 public:
  // `root` must be empty.
  explicit TreeBuilder(CIMelement& root) : root_(root), last_(&root) {}

  // Appends an element of kind `id` under `parent`; the first one fills the root itself.
  // Null when memory is short, which is traced.
  CIMelement* add(int id, CIMelement* parent);
  // Stores an attribute in `node`; false when memory is short, which is traced. Throws
  // std::bad_alloc.
  bool add_attribute(CIMelement& node, int id, std::string_view text);
  // Gives a value text to `node`. Throws std::bad_alloc.
  void set_value(CIMelement& node, std::string_view text);

 private:
  CIMelement& root_;
  CIMelement* last_;
  std::string terminated_;
};

}  // namespace zuCIM::codec
