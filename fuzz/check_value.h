#pragma once

#include "byte_source.h"

// Formats a value as the input says and compares it with what printf makes of it. Aborts when they
// differ. The input: type (a signed byte), index, then the bytes of the value.
void check_value(ByteSource input);
