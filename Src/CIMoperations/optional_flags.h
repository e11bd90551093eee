#pragma once

namespace zuCIM {

// The optional boolean parameters by their index in CIMcontainer::addOptionalParameter.
enum : int {
  local_only_flag,
  include_qualifiers_flag,
  include_class_origin_flag,
  deep_inheritance_flag
};

}  // namespace zuCIM
