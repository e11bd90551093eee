#pragma once

#include <string>

// What the benchmark programs tell the report: lines of four columns, separated by tabs, on
// standard output.
namespace bench {

// What was measured ("parse/typical"), on whom ("zuCIM"), which figure ("best", in seconds) and its
// value.
void add_result(const std::string& subject, const std::string& engine, const std::string& figure,
                double value);

}  // namespace bench
