// A server's bytes as the answer to an operation.
#include <cstddef>
#include <cstdint>

#include "check_answer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  check_answer(ByteSource(data, size));
  return 0;
}
