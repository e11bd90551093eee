#pragma once

#include <cstddef>
#include <string_view>

// What the listener reads out of an export request. There is no further parsing of HTTP or XML: a
// sender may break its lines and order its headers as it likes.
namespace zuCIM {

// The number after the first "content-length:", in any case, in the first piece of a request; 0
// when there is none above 0. A number too large for the type gives the largest one.
std::size_t announced_length(std::string_view first_piece) noexcept;

// What the first piece of a request holds of its body: everything from "<?xml" on, in any case;
// empty when that is not in it.
std::string_view start_of_body(std::string_view first_piece) noexcept;

// The id of the MESSAGE element; 1 when there is none above 0, and the largest int for one that is
// larger.
int message_id(std::string_view body) noexcept;

}  // namespace zuCIM
