#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <span>
#include <string>

// The parsers that are compared. Each has a file of its own, engine_*.cpp.
namespace bench {

struct Engine {
  const char* name;
  // Parses a document to its finished tree and frees the tree. False when the parser refuses it.
  bool (*parse)(const std::string& text);
  // Elements nested deeper than this exhaust the parser's stack.
  std::size_t deepest = std::numeric_limits<std::size_t>::max();
};

// Ours first.
std::span<const Engine> engines();

bool parse_with_zucim(const std::string& text);
bool parse_with_pugixml(const std::string& text);
bool parse_with_rapidxml(const std::string& text);
bool parse_with_libxml2(const std::string& text);
bool parse_with_tinyxml2(const std::string& text);
// No parser, but the least that each must do: finds every "<".
bool scan_with_memchr(const std::string& text);

// The way back. Parses `text` and returns a function that writes the tree to a new string, one tag
// on a line, and returns its length.
using Generate = std::function<std::size_t()>;
Generate generate_with_zucim(const std::string& text);
Generate generate_with_pugixml(const std::string& text);

}  // namespace bench
