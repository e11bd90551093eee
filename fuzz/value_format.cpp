// Any value of any type is formatted as printf would, from memory that ends with the value.
#include <cstddef>
#include <cstdint>

#include "check_value.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  check_value(ByteSource(data, size));
  return 0;
}
