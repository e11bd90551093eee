#pragma once

// Marks what libzuBRQ offers to its users; everything else stays inside the library.
#define BRQ_API __attribute__((visibility("default")))
