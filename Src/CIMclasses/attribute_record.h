#pragma once

#include <cstddef>

// How an attribute lies in the array of its node: one byte with its id plus one, the text, a NUL.
namespace zuCIM::attribute_record {

// The element size of such an array.
inline constexpr int element_size = -2;
// The bytes of a record beside its text.
inline constexpr std::size_t overhead = 2;

}  // namespace zuCIM::attribute_record
