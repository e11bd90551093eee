#pragma once

#include <curl/curl.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace zuCIM {

// The header lines of a request with the value of each Authorization line masked. Throws
// std::bad_alloc.
std::string without_credentials(std::string_view header_lines);

// libcurl's callback for its verbose output: writes it to standard error as libcurl itself would,
// but without credentials: without Authorization lines, and without what a server sent back of the
// text that `credentials`, a SecretText or null, points at.
int write_verbose_output(CURL* handle, curl_infotype kind, char* data, std::size_t size,
                         void* credentials) noexcept;

}  // namespace zuCIM
