#pragma once

#include <string>
#include <string_view>

#include "zuCIM/connection.h"

namespace zuCIM {

// Records a failure found in this unit, at the line of the call. A null `text` means libcurl's text
// for the code. Returns the status that is recorded now.
int record(CIMconnection& connection, int code, const char* text = nullptr,
           int line = __builtin_LINE()) noexcept;

// The part of `path` after its last slash of either kind.
std::string_view base_name(std::string_view path) noexcept;

// libcurl's text for a code, fit for one trace line.
std::string curl_text(int code);

// Replaces control characters, and all bytes from 128 on, by blanks.
void blank_control_characters(std::string& text) noexcept;

}  // namespace zuCIM
