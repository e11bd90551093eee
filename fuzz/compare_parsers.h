#pragma once

#include <string>

// Parses `text` with the library and with the plain parser; aborts with a description when status,
// tree or messages differ.
void compare_parsers(const std::string& text);
