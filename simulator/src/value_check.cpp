#include "value_check.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "names.h"

namespace simulator {

namespace {

struct IntegerType {
  std::string_view name;
  bool is_signed;
  unsigned bits;
};

constexpr std::array<IntegerType, 8> integer_types{{{"uint8", false, 8},
                                                    {"uint16", false, 16},
                                                    {"uint32", false, 32},
                                                    {"uint64", false, 64},
                                                    {"sint8", true, 8},
                                                    {"sint16", true, 16},
                                                    {"sint32", true, 32},
                                                    {"sint64", true, 64}}};

const IntegerType* find_integer(std::string_view type) {
  for (const IntegerType& each : integer_types) {
    if (each.name == type) return &each;
  }
  return nullptr;
}

bool is_real(std::string_view type) {
  return type == "real32" || type == "real64";
}

struct Integer {
  bool negative;
  std::uint64_t magnitude;
};

std::optional<Integer> parse_integer(std::string_view text) {
  Integer result{false, 0};
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
    result.negative = text.front() == '-';
    text.remove_prefix(1);
  }
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    base = 16;
    text.remove_prefix(2);
  }
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, result.magnitude, base);
  if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
  return result;
}

bool fits(const Integer& number, const IntegerType& type) {
  if (number.magnitude == 0) return true;
  if (!type.is_signed && number.negative) return false;
  const unsigned bits = type.is_signed ? type.bits - 1 : type.bits;
  const std::uint64_t largest = bits == 64 ? UINT64_MAX : (std::uint64_t{1} << bits) - 1;
  return number.magnitude <= largest || (number.negative && number.magnitude == largest + 1);
}

std::optional<double> parse_real(std::string_view text) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  double result = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, result);
  if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
  return result;
}

// yyyymmddhhmmss.mmmmmmsutc for a point in time, ddddddddhhmmss.mmmmmm:000 for an interval;
// digits may be asterisks where a part is not significant.
bool is_datetime(std::string_view text) {
  if (text.size() != 25 || text[14] != '.') return false;
  if (text[21] != '+' && text[21] != '-' && text[21] != ':') return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool digit = (text[i] >= '0' && text[i] <= '9') || text[i] == '*';
    if (i != 14 && i != 21 && !digit) return false;
  }
  return text[21] != ':' || text.substr(22) == "000";
}

bool is_boolean(std::string_view text) {
  return same_name(text, "true") || same_name(text, "false");
}

bool is_char16(std::string_view text) {
  std::size_t characters = 0;
  for (const char c : text) characters += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
  return characters == 1;
}

}  // namespace

bool is_numeric(std::string_view type) {
  return find_integer(type) != nullptr || is_real(type);
}

bool is_type(std::string_view type) {
  return is_numeric(type) || type == "boolean" || type == "string" || type == "datetime" ||
         type == "char16";
}

bool is_value_of(std::string_view type, std::string_view text) {
  if (const IntegerType* integer = find_integer(type)) {
    const auto number = parse_integer(text);
    return number && fits(*number, *integer);
  }
  if (is_real(type)) return parse_real(text).has_value();
  if (type == "boolean") return is_boolean(text);
  if (type == "datetime") return is_datetime(text);
  if (type == "char16") return is_char16(text);
  return type == "string";
}

std::string normalised(std::string_view type, std::string_view text) {
  if (type == "boolean") return folded(text);
  if (find_integer(type) != nullptr) {
    const auto number = parse_integer(text);
    if (!number) return std::string(text);
    const bool minus = number->negative && number->magnitude != 0;
    return (minus ? "-" : "") + std::to_string(number->magnitude);
  }
  if (is_real(type)) {
    const auto number = parse_real(text);
    return number ? std::to_string(*number) : std::string(text);
  }
  return std::string(text);
}

}  // namespace simulator
