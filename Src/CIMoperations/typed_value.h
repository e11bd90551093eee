#pragma once

#include <cstdint>

#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

// Pieces of a request that several operations need, and the typed values of the caller's records.
namespace zuCIM {

// The type word of a record, taken apart.
struct ValueType {
  explicit ValueType(std::uint32_t word)
      : id(word & ~type::array_bit), is_array((word & type::array_bit) != 0) {}

  bool is_known() const { return id < type::count; }
  bool is_reference() const { return id == type::reference; }

  std::uint32_t id;
  bool is_array;
};

// Appends an element's start tag with its name, its type or class, and a line feed.
void begin_typed_element(CIMcontainer& container, int element, const char* name, int attribute,
                         const char* text) noexcept;

// Appends a text as it stands.
void append_text(CIMcontainer& container, const char* text) noexcept;

// Appends a start tag without attributes and a line feed.
void begin_line(CIMcontainer& container, int element) noexcept;

// Appends `count` VALUE elements with the values of an array of `type_id`; a value without text
// becomes an empty element.
void add_typed_values(CIMcontainer& container, const void* values, std::uint32_t count,
                      std::uint32_t type_id) noexcept;

// Appends a VALUE.REFERENCE element around `tree`, an empty one for a null tree; false when the
// tree cannot be written.
[[nodiscard]] bool add_reference(CIMcontainer& container, CIMelement* tree) noexcept;

}  // namespace zuCIM
