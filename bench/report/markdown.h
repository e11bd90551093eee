#pragma once

#include <optional>
#include <string>
#include <vector>

using Row = std::vector<std::string>;

// A table whose first column is text and whose others are numbers.
std::string table(const Row& head, const std::vector<Row>& rows);

// A number with three significant digits, thousands separated by commas; "-" for none.
std::string number(std::optional<double> value);
// A whole number.
std::string whole(std::optional<double> value);
// Seconds, in the unit that suits them.
std::string duration(std::optional<double> seconds);
