#include "growth.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "markdown.h"

namespace {

constexpr std::array<int, 4> sizes{100, 1000, 10000, 100000};

std::optional<double> time_of(const Measurements& all, const std::string& what, int size) {
  return all.find("growth/" + what, std::to_string(size), "best");
}

// The slope of the straight line that fits best through the logarithms of sizes and times.
std::optional<double> exponent(const Measurements& all, const std::string& what) {
  double x_sum = 0;
  double y_sum = 0;
  double xx_sum = 0;
  double xy_sum = 0;
  for (const int size : sizes) {
    const auto time = time_of(all, what, size);
    if (!time) return std::nullopt;
    const double x = std::log(size);
    const double y = std::log(*time);
    x_sum += x;
    y_sum += y;
    xx_sum += x * x;
    xy_sum += x * y;
  }
  constexpr double n = sizes.size();
  return (n * xy_sum - x_sum * y_sum) / (n * xx_sum - x_sum * x_sum);
}

Row row(const Measurements& all, const std::string& what) {
  Row made{what};
  for (const int size : sizes) made.push_back(duration(time_of(all, what, size)));
  made.push_back(number(exponent(all, what)));
  return made;
}

}  // namespace

std::string growth_table(const Measurements& all) {
  std::vector<Row> rows;
  for (const std::string& what : all.subjects("growth/")) rows.push_back(row(all, what));
  Row head{"", "exponent"};
  for (const int size : sizes) head.insert(head.end() - 1, whole(size));
  return table(head, rows);
}

std::optional<double> steepest_growth(const Measurements& all) {
  std::optional<double> steepest;
  for (const std::string& what : all.subjects("growth/"))
    steepest = std::max(steepest, exponent(all, what));
  return steepest;
}
