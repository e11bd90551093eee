#pragma once

#include <string>

#include "measurements.h"

// What bench_codec and bench_memory measured.
std::string parse_table(const Measurements& all);
std::string memory_table(const Measurements& all);
std::string generate_table(const Measurements& all);
std::string extraction_table(const Measurements& all);
