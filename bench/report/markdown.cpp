#include "markdown.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace {

std::string line(const Row& row) {
  std::string text = "|";
  for (const std::string& cell : row) text += ' ' + cell + " |";
  return text + '\n';
}

std::string fixed(double value, int digits) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.*f", digits, value);
  return text.data();
}

}  // namespace

std::string table(const Row& head, const std::vector<Row>& rows) {
  std::string text = line(head) + "|---|";
  for (std::size_t i = 1; i < head.size(); ++i) text += "--:|";
  text += '\n';
  for (const Row& row : rows) text += line(row);
  return text;
}

std::string number(std::optional<double> value) {
  if (!value) return "-";
  if (std::fabs(*value) >= 100) return whole(value);
  return fixed(*value, std::fabs(*value) >= 10 ? 1 : 2);
}

std::string whole(std::optional<double> value) {
  if (!value) return "-";
  std::string digits = fixed(*value, 0);
  for (std::size_t from_end = 3; from_end < digits.size(); from_end += 4)
    digits.insert(digits.size() - from_end, ",");
  return digits;
}

std::string duration(std::optional<double> seconds) {
  if (!seconds) return "-";
  if (*seconds < 1e-3) return number(*seconds * 1e6) + " us";
  if (*seconds < 1) return number(*seconds * 1e3) + " ms";
  return number(*seconds) + " s";
}
