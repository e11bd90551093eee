#include "names.h"

#include <algorithm>

namespace simulator {

namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

std::string folded(std::string_view name) {
  std::string result(name);
  std::transform(result.begin(), result.end(), result.begin(), lower);
  return result;
}

bool same_name(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return lower(a) == lower(b); });
}

}  // namespace simulator
