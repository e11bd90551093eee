#include "engines.h"

#include <array>
#include <cstring>

namespace bench {
namespace {

constexpr std::array<Engine, 6> all{{{"zuCIM", parse_with_zucim},
                                     {"pugixml", parse_with_pugixml},
                                     {"rapidxml", parse_with_rapidxml, 10000},
                                     {"libxml2", parse_with_libxml2},
                                     {"tinyxml2", parse_with_tinyxml2},
                                     {"memchr", scan_with_memchr}}};

}  // namespace

std::span<const Engine> engines() {
  return all;
}

bool scan_with_memchr(const std::string& text) {
  const char* const end = text.data() + text.size();
  std::size_t count = 0;
  for (const char* at = text.data(); at != nullptr && at != end; ++count) {
    at = static_cast<const char*>(std::memchr(at, '<', static_cast<std::size_t>(end - at)));
    if (at != nullptr) ++at;
  }
  return count > 0;
}

}  // namespace bench
