#include "CIMlistener/export_request.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>
#include <system_error>

namespace zuCIM {
namespace {

// `pattern` is in lower case.
std::size_t find_in_any_case(std::string_view text, std::string_view pattern) noexcept {
  const auto is_same = [](char c, char wanted) {
    return std::tolower(static_cast<unsigned char>(c)) == wanted;
  };
  const auto* const found =
      std::search(text.begin(), text.end(), pattern.begin(), pattern.end(), is_same);
  return found == text.end() ? std::string_view::npos
                             : static_cast<std::size_t>(found - text.begin());
}

// The decimal number that `text` begins with, after blanks; 0 when there is none above 0.
template <class Number>
Number leading_number(std::string_view text) noexcept {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  if (text.starts_with('+')) text.remove_prefix(1);
  Number number = 0;
  const auto outcome = std::from_chars(text.data(), text.data() + text.size(), number);
  if (outcome.ec == std::errc::result_out_of_range)
    return text.starts_with('-') ? 0 : std::numeric_limits<Number>::max();
  return std::max(number, Number{0});
}

}  // namespace

std::size_t announced_length(std::string_view first_piece) noexcept {
  constexpr std::string_view name = "content-length:";
  const std::size_t position = find_in_any_case(first_piece, name);
  if (position == std::string_view::npos) return 0;
  return leading_number<std::size_t>(first_piece.substr(position + name.size()));
}

std::string_view start_of_body(std::string_view first_piece) noexcept {
  const std::size_t position = find_in_any_case(first_piece, "<?xml");
  return first_piece.substr(std::min(position, first_piece.size()));
}

int message_id(std::string_view body) noexcept {
  constexpr std::string_view opening = "<MESSAGE ID=\"";
  const std::size_t position = body.find(opening);
  if (position == std::string_view::npos) return 1;
  return std::max(leading_number<int>(body.substr(position + opening.size())), 1);
}

}  // namespace zuCIM
