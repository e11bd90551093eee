#pragma once

#include <span>
#include <string>
#include <string_view>

#include "CIMclasses/tree_memory.h"
#include "zuCIM/element.h"

namespace zuCIM::codec {

// Grows a document at its end. The root belongs to the caller, every other node to the chain.
class TreeBuilder {
 public:
  // `root` must be empty. All texts that it gets are pieces of `document`.
  TreeBuilder(CIMelement& root, std::string_view document)
      : root_(root), last_(&root), memory_(document) {}

  // Appends an element of kind `id` under `parent`; the first one fills the root itself.
  // Null when memory is short, which is traced.
  CIMelement* add(int id, CIMelement* parent);
  // Stores an attribute in `node`; false when memory is short, which is traced. Throws
  // std::bad_alloc.
  bool add_attribute(CIMelement& node, int id, std::string_view text);
  // Stores all attributes of `node`, in the least memory; false as above.
  bool add_attributes(CIMelement& node, std::span<const AttributeText> attributes);
  // Gives a value text to `node`. Throws std::bad_alloc.
  void set_value(CIMelement& node, std::string_view text);

 private:
  CIMelement& root_;
  CIMelement* last_;
  TreeMemory memory_;
  std::string terminated_;
};

}  // namespace zuCIM::codec
