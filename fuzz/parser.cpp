// Any text: the parser gives the status, the tree and the messages of the plain parser.
#include <cstddef>
#include <cstdint>

#include "compare_parsers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  compare_parsers("<?xml version=\"1.0\"?><CIM " + text);
  compare_parsers(text);
  return 0;
}
