#pragma once

#include <cstddef>

// Counts what the program takes from the heap. A program that links heap_count.cpp gets its malloc
// and its kin, for all libraries in it.
namespace bench {

struct HeapUse {
  std::size_t allocations = 0;
  // The most bytes in use at once, the heap's own included.
  std::size_t peak = 0;
};

// Starts to count from zero.
void start_heap_count();
// What was taken since.
HeapUse heap_use();

}  // namespace bench
