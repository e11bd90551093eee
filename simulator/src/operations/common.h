#pragma once

#include <cstddef>
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

// A value to be put at a position of an instance.
struct Change {
  std::size_t position;
  Value value;
};

// Puts values into an instance, all or none. Refused with CimError where one is another than before
// and its property is a key or read-only (a qualifier says Write = false; without that qualifier it
// can be written), and where the instance would be a part of a subscription that cannot work.
void change_instance(const Namespace& name_space, Instance& instance, std::vector<Change> changes);

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
