#pragma once

#include <string>
#include <string_view>

// CIM names (classes, properties, namespaces, ...) are compared without regard to case.
namespace simulator {

// The name in lower case (ASCII letters only), used as a key in maps.
std::string folded(std::string_view name);

// Whether two names are the same name.
bool same_name(std::string_view left, std::string_view right);

}  // namespace simulator
