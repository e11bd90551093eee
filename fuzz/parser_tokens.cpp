// Sequences of markup pieces: reaches odd nestings that random bytes seldom form.
#include <cstddef>
#include <cstdint>
#include <string>

#include "compare_parsers.h"
#include "support/markup_pieces.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string text = "<?xml version=\"1.0\" ?><CIM >";
  for (std::size_t i = 0; i < size; ++i) text += markup_pieces[data[i] % std::size(markup_pieces)];
  compare_parsers(text);
  return 0;
}
