#include "CIMconnection/response_scan.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr std::string_view white_space = " \t\n\v\f\r";
constexpr std::string_view status_line_start = "HTTP/1.";
constexpr std::string_view cim_status_code_header = "CIMStatusCode:";
constexpr std::int64_t largest_int = std::numeric_limits<int>::max();
constexpr std::int64_t smallest_int = std::numeric_limits<int>::min();

int to_int(std::int64_t number) noexcept {
  return static_cast<int>(std::clamp(number, smallest_int, largest_int));
}

bool is_digit(char character) noexcept {
  return character >= '0' && character <= '9';
}

bool is_above_blank(char character) noexcept {
  return static_cast<unsigned char>(character) > ' ';
}

bool is_blank_or_control(char character) noexcept {
  return character != '\0' && !is_above_blank(character);
}

bool is_control(char character) noexcept {
  return static_cast<unsigned char>(character) <= 31;
}

// `text` from its first character on that `unwanted` does not hold for.
template <class Predicate>
std::string_view skip(std::string_view text, Predicate unwanted) noexcept {
  return {std::find_if_not(text.begin(), text.end(), unwanted), text.end()};
}

// The digits that `text` starts with, as a number just large enough to be seen to exceed an int.
std::int64_t leading_digits(std::string_view text) noexcept {
  std::int64_t number = 0;
  for (const char character : text) {
    if (!is_digit(character) || number > largest_int) break;
    number = number * 10 + (character - '0');
  }
  return number;
}

}  // namespace

int decimal_number(std::string_view text) noexcept {
  text.remove_prefix(std::min(text.find_first_not_of(white_space), text.size()));
  const bool has_sign = !text.empty() && (text.front() == '-' || text.front() == '+');
  const std::int64_t number = leading_digits(text.substr(has_sign ? 1 : 0));
  return to_int(has_sign && text.front() == '-' ? -number : number);
}

int http_status(int number) noexcept {
  return to_int(std::int64_t{status::http_status_base} + number);
}

std::optional<HeaderVerdict> find_status_line(std::string_view header) noexcept {
  const std::size_t start = header.find(status_line_start);
  if (start == header.npos) return std::nullopt;
  header.remove_prefix(start);
  const std::string_view after_version =
      skip(header.substr(status_line_start.size()), is_above_blank);
  const int number = decimal_number(skip(after_version, is_blank_or_control));
  const auto end = std::find_if(header.begin(), header.end(), is_control);
  return HeaderVerdict{number, {header.begin(), end}};
}

std::optional<HeaderVerdict> find_cim_status_code(std::string_view header) noexcept {
  const std::size_t start = header.find(cim_status_code_header);
  if (start == header.npos) return std::nullopt;
  header.remove_prefix(start);
  return HeaderVerdict{decimal_number(header.substr(cim_status_code_header.size())), header};
}

CIMelement* find_error_element(CIMelement& root) noexcept {
  CIMelement* element = &root;
  while (element != nullptr && element->name != known_cim_elements[elem::ERROR])
    element = element->next;
  return element;
}

ErrorVerdict read_error_element(CIMelement& error) noexcept {
  ErrorVerdict verdict{status::failure, "No Description found in response"};
  char* text = nullptr;
  if (error.attr_get(0, &text) == attr::CODE) {
    const int code = decimal_number(text);
    if (code > 0) verdict.code = code;
  }
  if (error.attr_get(1, &text) == attr::DESCRIPTION) verdict.text = text;
  return verdict;
}

}  // namespace zuCIM
