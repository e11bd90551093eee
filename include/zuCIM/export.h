#pragma once

// Marks what libzuCIM offers to its users; everything else stays inside the library.
#define ZUCIM_API __attribute__((visibility("default")))
