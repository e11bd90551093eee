#include <charconv>
#include <cstdint>
#include <cstring>
#include <exception>
#include <limits>
#include <string>

#include "BRQ/Trace.h"
#include "CIMoperations/failure.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMoperations";

// Reads an element of the caller's array, which need not be aligned for its type.
template <class Value>
Value value_at(const void* values, unsigned index) {
  Value value;
  const auto* const bytes = static_cast<const unsigned char*>(values);
  std::memcpy(&value, bytes + std::size_t{index} * sizeof(Value), sizeof(Value));
  return value;
}

// Numbers are written without regard to any locale.
template <class Integer>
void write_integer(std::string& text, Integer number) {
  char digits[std::numeric_limits<Integer>::digits10 + 3];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), number);
  text.assign(digits, end.ptr);
}

// The shorter of the fixed and the exponent form, with six significant digits.
template <class Real>
void write_real(std::string& text, Real number) {
  char digits[32];
  const auto end =
      std::to_chars(std::begin(digits), std::end(digits), number, std::chars_format::general, 6);
  text.assign(digits, end.ptr);
}

template <class Integer>
void write_integer_at(std::string& text, const void* values, unsigned index) {
  write_integer(text, value_at<Integer>(values, index));
}

// A signed byte is widened with its sign and then written unsigned, so -1 becomes 4294967295.
void write_signed_byte_at(std::string& text, const void* values, unsigned index) {
  const std::int32_t widened = value_at<std::int8_t>(values, index);
  write_integer(text, static_cast<std::uint32_t>(widened));
}

// False for the types that have no text form.
bool write_value(std::string& text, const void* values, unsigned index, int type_id) {
  switch (type_id) {
    case type::boolean:
      text = value_at<std::uint8_t>(values, index) != 0 ? "true" : "false";
      return true;
    case type::string:
      text = static_cast<const char*>(values);
      return true;
    case type::uint8:
      write_integer_at<std::uint8_t>(text, values, index);
      return true;
    case type::sint8:
      write_signed_byte_at(text, values, index);
      return true;
    case type::uint16:
      write_integer_at<std::uint16_t>(text, values, index);
      return true;
    case type::sint16:
      write_integer_at<std::int16_t>(text, values, index);
      return true;
    case type::uint32:
      write_integer_at<std::uint32_t>(text, values, index);
      return true;
    case type::sint32:
      write_integer_at<std::int32_t>(text, values, index);
      return true;
    case type::uint64:
      write_integer_at<std::uint64_t>(text, values, index);
      return true;
    case type::sint64:
      write_integer_at<std::int64_t>(text, values, index);
      return true;
    case type::real32:
      write_real(text, value_at<float>(values, index));
      return true;
    case type::real64:
      write_real(text, value_at<double>(values, index));
      return true;
    default:
      return false;
  }
}

}  // namespace

int ValueToString(const void* values, unsigned index, int type, std::string& text) noexcept {
  if (values == nullptr) return 0;
  try {
    if (write_value(text, values, index, type)) return static_cast<int>(text.size());
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
              "ValueToString: Unknown type of value specified");
  } catch (const std::exception& error) {
    trace_exception("ValueToString", error.what());
  }
  text.clear();
  return 0;
}

}  // namespace zuCIM
