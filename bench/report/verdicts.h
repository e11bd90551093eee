#pragma once

#include <string>

#include "measurements.h"

// The table of targets: what was measured, and whether it is enough.
std::string verdicts(const Measurements& measured);
