#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "zuCIM/vocabulary.h"

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

// A name of the vocabulary, laid out for comparison eight bytes at a time.
class NameRow {
 public:
  NameRow() = default;
  explicit NameRow(const char* name);

  std::size_t size() const { return size_; }
  // Whether the name stands at `position`, before `end`; a character follows it there.
  bool stands_at(const char* position, const char* end) const {
    const auto room = static_cast<std::size_t>(end - position);
    if (room < sizeof words_)
      return room > size_ && std::memcmp(position, words_.data(), size_) == 0;
    return word_at(position, 0) == words_[0] &&
           (size_ <= 8 || (word_at(position, 1) == words_[1] &&
                           (size_ <= 16 || (word_at(position, 2) == words_[2] &&
                                            (size_ <= 24 || word_at(position, 3) == words_[3])))));
  }

 private:
  std::uint64_t word_at(const char* position, std::size_t index) const {
    std::uint64_t word = 0;
    std::memcpy(&word, position + index * sizeof word, sizeof word);
    return word & masks_[index];
  }

  std::size_t size_ = 0;
  std::array<std::uint64_t, 4> words_{};
  std::array<std::uint64_t, 4> masks_{};
};

// The names of the elements, by id.
const std::array<NameRow, elem::UNKNOWN>& element_names();
// The names of the attributes, by id.
const std::array<NameRow, attr::UNKNOWN>& attribute_names();

// The id of an element name in an exact comparison; -1 for an unknown one.
int find_element(std::string_view name);

// The id of an attribute name: exact, but EmbeddedObject in any case; the id of "unknown" for every
// other name.
int find_attribute(std::string_view name);

}  // namespace zuCIM::codec
