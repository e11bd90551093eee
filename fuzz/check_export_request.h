#pragma once

#include <string_view>

// Looks for length, body and id in a piece of a request and compares with a plain search. Aborts
// when they differ.
void check_export_request(std::string_view piece);
