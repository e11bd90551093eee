#pragma once

#include "zuCIM/element.h"
#include "zuCIM/export.h"

namespace zuCIM {

// A chain of (class name, namespace) pairs; each entry owns its texts and up to three trees of
// results. The first entry belongs to whoever made it, the others to the chain.
// Thread rule: a chain is used by one thread at a time.
class ZUCIM_API CIMclass {
 public:
  // The class name, allocated with malloc; null for none, never empty.
  char* className;
  // The namespace, as in "root/cimv2", allocated with malloc; null for none, never empty.
  char* nameSpace;
  // Names of instances.
  CIMelement* instanceNames;
  // Instances, or the template of the last class definition.
  CIMelement* instances;
  // Methods of the last class definition.
  CIMelement* methods;
  // The next entry.
  CIMclass* next;

  // Makes an empty entry.
  CIMclass() noexcept;
  // Copies a chain, see operator=.
  CIMclass(const CIMclass& source) noexcept;
  // Empties the whole chain.
  ~CIMclass();
  // Replaces the chain by a copy of the names of `source`'s entries. Copies of all trees go into
  // the first entry of this chain; a later tree replaces an earlier one.
  CIMclass& operator=(const CIMclass& source) noexcept;

  // Sets every field to null without freeing anything.
  void clsInit() noexcept;
  // Replaces both texts by copies; null and empty texts become null.
  void setClassName(const char* class_name, const char* name_space) noexcept;
  // Fills this entry if it names no class, else appends one at the chain's end; returns the entry.
  // Null for a null `this` or when memory is short.
  CIMclass* makeNextClass(const char* class_name, const char* name_space) noexcept;
  // The first entry with these names, ignoring case. A null or empty namespace means nsCIMV2; an
  // empty class name finds an entry without one, a null class name finds nothing.
  CIMclass* findClassName(const char* class_name, const char* name_space) noexcept;
  // Frees the tree in `*slot`, if any, and clears the slot.
  void kill_element(CIMelement** slot) noexcept;
  // Empties the whole chain; this entry stays as an empty one.
  void clsClean() noexcept;
};

}  // namespace zuCIM
