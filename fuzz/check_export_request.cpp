#include "check_export_request.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <limits>
#include <string>

#include "CIMlistener/export_request.h"
#include "failure.h"

namespace {

std::string in_lower_case(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return std::tolower(c); });
  return lower;
}

// The digits after blanks, or nothing.
std::string digits_at(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  if (text.starts_with('+')) text.remove_prefix(1);
  const std::size_t end = std::min(text.find_first_not_of("0123456789"), text.size());
  return std::string(text.substr(0, end));
}

// The number after `name`; 0 when there is none.
unsigned long long number_after(std::string_view text, std::string_view name) {
  const std::size_t start = text.find(name);
  if (start == text.npos) return 0;
  return std::strtoull(digits_at(text.substr(start + name.size())).c_str(), nullptr, 10);
}

unsigned long long plain_message_id(std::string_view piece) {
  constexpr auto largest = static_cast<unsigned long long>(std::numeric_limits<int>::max());
  return std::clamp(number_after(piece, "<MESSAGE ID=\""), 1ULL, largest);
}

}  // namespace

void check_export_request(std::string_view piece) {
  const std::string lower = in_lower_case(piece);
  const unsigned long long length = number_after(lower, "content-length:");
  constexpr auto longest = std::numeric_limits<std::size_t>::max();
  require(zuCIM::announced_length(piece) == std::min<unsigned long long>(length, longest),
          "the length");
  const std::size_t start = std::min(lower.find("<?xml"), lower.size());
  require(zuCIM::start_of_body(piece) == piece.substr(start), "the start of the body");
  require(zuCIM::message_id(piece) == static_cast<int>(plain_message_id(piece)), "the id");
}
