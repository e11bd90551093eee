// A program of operations on element trees, run on the library's and on a plain model's.
#include <cstddef>
#include <cstdint>

#include "tree_program.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  TreeProgram(ByteSource(data, size)).run();
  return 0;
}
