#pragma once

namespace zuCIM {

// True when both texts are equal ignoring the case of ASCII letters. The process's locale does not
// matter: a name is the same name everywhere.
inline bool equal_ignoring_case(const char* left, const char* right) noexcept {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; };
  for (; *left == *right || lower(*left) == lower(*right); ++left, ++right)
    if (*left == '\0') return true;
  return false;
}

}  // namespace zuCIM
