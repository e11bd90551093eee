#pragma once

#include <map>
#include <optional>
#include <pugixml.hpp>
#include <set>
#include <string>
#include <string_view>

#include "model.h"
#include "xml_reader.h"

namespace simulator {

// The property names a client wants to see; without a list, all of them.
class PropertyList {
 public:
  PropertyList() = default;
  explicit PropertyList(std::set<std::string> folded_names) : names_(std::move(folded_names)) {}

  bool contains(std::string_view property_name) const;

  // The names in lower case, or null where there is no list.
  const std::set<std::string>* names() const { return names_ ? &*names_ : nullptr; }

 private:
  std::optional<std::set<std::string>> names_;
};

// An instance and the path under which it is kept.
struct NamedInstance {
  InstanceName name;
  InstanceDeclaration instance;
};

// The parameters of one intrinsic call, read by name. Every reading member throws CimError
// (invalid parameter) for a parameter of the wrong form; a parameter without a value counts as
// absent.
class Parameters {
 public:
  explicit Parameters(const pugi::xml_node& method_call);

  // The name of a class; empty if absent.
  std::string class_name(const char* name);

  // The name of a class, which must be there.
  std::string required_class_name(const char* name);

  // The path of an instance, which must be there.
  InstanceName required_instance_name(const char* name);

  // The element of that kind, which must be there.
  pugi::xml_node required_element(const char* name, const char* element);

  // An instance and its path, which must be there. Besides the parameter of that name
  // (VALUE.NAMEDINSTANCE with INSTANCENAME and INSTANCE) a VALUE.NAMEDINSTANCE beside the
  // parameters is taken, with the path as a parameter InstanceName in it: some clients write that.
  NamedInstance required_named_instance(const char* name);

  bool boolean(const char* name, bool otherwise);

  // A value of whatever kind; null if absent.
  Value value(const char* name);

  // A plain text, which must be there.
  std::string required_text(const char* name);

  PropertyList property_list(const char* name);

  // To be called when all parameters have been read: refuses those that nobody asked for.
  void refuse_others() const;

 private:
  // The element below the IPARAMVALUE of that name, or an empty node.
  pugi::xml_node take(const char* name);

  // The IPARAMVALUE of that name, or an empty node.
  pugi::xml_node take_parameter(const char* name);

  pugi::xml_node call_;
  std::map<std::string, pugi::xml_node> unread_;
};

}  // namespace simulator
