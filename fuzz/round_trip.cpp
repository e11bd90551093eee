// A document that was parsed, written and parsed again is the same document.
#include <cstddef>
#include <cstdint>
#include <string>

#include "check_round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  check_round_trip(text);
  check_round_trip("<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\">" + text + "</CIM>");
  return 0;
}
