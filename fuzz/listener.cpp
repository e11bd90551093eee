// A sender's bytes, in pieces, through a reader of the listener.
#include <cstddef>
#include <cstdint>

#include "check_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  check_reader(ByteSource(data, size));
  return 0;
}
