#pragma once

#include <string>
#include <string_view>

namespace simulator {

// Whether the type is one of uint8 ... sint64, real32, real64.
bool is_numeric(std::string_view type);

// Whether there is a CIM type of that name (references have none).
bool is_type(std::string_view type);

// Whether a text is a proper value of a CIM type: in range, in the form the type asks for.
bool is_value_of(std::string_view type, std::string_view text);

// A form in which equal values of the type are equal texts ("0x10" and "+16" are both "16",
// "True" is "true"). Texts that are no proper value stay as they are.
std::string normalised(std::string_view type, std::string_view text);

}  // namespace simulator
