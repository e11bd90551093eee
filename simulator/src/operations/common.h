#pragma once

#include <string>
#include <vector>

#include "../cim_error.h"
#include "operations.h"

// What several operations have in common.
namespace simulator {

// The class of that name, or CimError with the given status.
const Class& require_class(const Namespace& name_space, const std::string& class_name,
                           CimStatus otherwise);

// The instance that a path names, or CimError.
const Instance& require_instance(const Namespace& name_space, const InstanceName& name);
Instance& require_instance(Namespace& name_space, const InstanceName& name);

// Refuses to put a value in the place of another in an instance, if it is another and the property
// is a key or read-only (a qualifier says Write = false; without that qualifier it can be written).
void check_change(const Namespace& name_space, const Instance& instance, std::size_t position,
                  const Value& changed);

// The class and all its subclasses.
std::vector<const Class*> with_subclasses(const Namespace& name_space, const Class& type);

// Which properties of an instance are shown when it was found through the class `asked`.
struct InstanceView {
  const Class& asked;
  bool local_only;
  bool deep;  // also what subclasses of `asked` add
  PropertyList list;

  // The positions of the properties to show of instances of `type`.
  std::vector<std::size_t> properties_of(const Class& type) const;
};

// IncludeQualifiers and IncludeClassOrigin.
Detail read_detail(const OperationContext& context, bool qualifiers_by_default);

// One CLASS element as GetClass and EnumerateClasses return it.
void append_class_view(std::string& out, const Class& type, bool local_only,
                       const PropertyList& list, const Detail& detail);

}  // namespace simulator
