#pragma once

#include <optional>
#include <string>

#include "measurements.h"

// What bench_growth measured.
std::string growth_table(const Measurements& all);

// The largest exponent of all.
std::optional<double> steepest_growth(const Measurements& all);
