// Header lines and ERROR elements of any bytes, in memory that ends with them.
#include <cstddef>
#include <cstdint>

#include "check_response_scan.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  check_header_scan(text);
  check_error_scan(text);
  return 0;
}
