#pragma once

#include <optional>
#include <string_view>

#include "zuCIM/element.h"

namespace zuCIM {

// Reading the verdict of a server out of its answer. Any bytes are good input.

// The number that `text` starts with, after white space and a sign, as in strtol; 0 without one.
// A number beyond the range of int becomes the nearest end of that range.
int decimal_number(std::string_view text) noexcept;

// `number`, an HTTP status or CIMStatusCode, in the number space of the status; what would be too
// large becomes the largest int.
int http_status(int number) noexcept;

// A number found in the header lines, and the text that tells of it.
struct HeaderVerdict {
  int number;
  std::string_view text;
};

// The first HTTP/1 status line in `header`: its status and the line without its end.
std::optional<HeaderVerdict> find_status_line(std::string_view header) noexcept;

// The first CIMStatusCode header in `header`: its number, and the header text from there on.
std::optional<HeaderVerdict> find_cim_status_code(std::string_view header) noexcept;

// The first ERROR element of the document; null without one.
CIMelement* find_error_element(CIMelement& root) noexcept;

// What an ERROR element says.
struct ErrorVerdict {
  int code;
  // Owned by the element, or constant.
  const char* text;
};

// Reads an ERROR element. CODE counts as the first and DESCRIPTION as the second attribute only.
ErrorVerdict read_error_element(CIMelement& error) noexcept;

}  // namespace zuCIM
