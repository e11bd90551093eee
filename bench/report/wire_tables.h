#pragma once

#include <string>

#include "measurements.h"

// What bench_wire and bench_listener measured.
std::string enumeration_table(const Measurements& all);
std::string request_table(const Measurements& all);
