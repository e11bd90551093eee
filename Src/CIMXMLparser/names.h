#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zuCIM::codec {

// Finds the id of a name in one of the vocabulary's tables, by a hash instead of a walk.
class NameTable {
 public:
  // Indexes the first `count` rows of `names`, which must outlive the table.
  NameTable(const char* const* names, std::size_t count);

  // The id of the row that equals `name` exactly; -1 without one.
  int find(std::string_view name) const;

 private:
  static constexpr std::size_t slot_count = 256;
  static std::size_t slot_of(std::string_view name);

  std::array<std::string_view, slot_count> names_{};
  std::array<int, slot_count> ids_{};
};

// The id of an element name in an exact comparison with rows 0 to 69; -1 for an unknown one.
int find_element(std::string_view name);

// The id of an attribute name: exact, but EmbeddedObject in any case; the id of "unknown" for every
// other name.
int find_attribute(std::string_view name);

}  // namespace zuCIM::codec
