// The listener's scanners on any bytes, in memory that ends with them.
#include <cstddef>
#include <cstdint>

#include "check_export_request.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The fuzzer's own copy has a size that ASan knows.
  check_export_request({reinterpret_cast<const char*>(data), size});
  return 0;
}
