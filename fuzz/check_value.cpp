#include "check_value.h"

#include <array>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "failure.h"
#include "zuCIM.h"

namespace {

using namespace zuCIM;

// An array whose last element is the value; what stands before it is never read.
template <class Value>
std::unique_ptr<Value[]> array_with(Value value, unsigned index) {
  auto values = std::make_unique<Value[]>(index + 1);
  values[index] = value;
  return values;
}

template <class Value>
void check(ByteSource& input, int type, unsigned index, const char* format) {
  Value value{};
  const std::string_view bytes = input.bytes(sizeof value);
  std::memcpy(&value, bytes.data(), bytes.size());
  std::array<char, 64> expected{};
  std::snprintf(expected.data(), expected.size(), format, value);
  std::string text = "old";
  const int length = ValueToString(array_with(value, index).get(), index, type, text);
  require(text == expected.data(), "the text is printf's");
  require(length == static_cast<int>(text.size()), "the length is the text's");
}

void check_boolean(ByteSource& input, unsigned index) {
  const auto value = static_cast<std::uint8_t>(input.byte());
  std::string text = "old";
  ValueToString(array_with(value, index).get(), index, type::boolean, text);
  require(text == (value != 0 ? "true" : "false"), "a byte is true or false");
}

void check_string(ByteSource& input, unsigned index) {
  std::string value(input.rest());
  value.resize(value.find('\0') == value.npos ? value.size() : value.find('\0'));
  const std::unique_ptr<char, decltype(&std::free)> copy(strdup(value.c_str()), &std::free);
  std::string text = "old";
  const int length = ValueToString(copy.get(), index, type::string, text);
  require(text == value && length == static_cast<int>(value.size()), "a text is itself");
}

void check_refusal(int type, unsigned index) {
  std::string text = "old";
  char value = 'x';
  require(ValueToString(&value, index, type, text) == 0 && text.empty(), "the type is refused");
}

}  // namespace

void check_value(ByteSource input) {
  const int type = static_cast<signed char>(input.byte());
  const unsigned index = input.byte();
  switch (type) {
    case type::boolean:
      return check_boolean(input, index);
    case type::string:
      return check_string(input, index);
    case type::uint8:
      return check<std::uint8_t>(input, type, index, "%" PRIu8);
    // A negative one is written as its 32-bit two's complement.
    case type::sint8:
      return check<std::int8_t>(input, type, index, "%u");
    case type::uint16:
      return check<std::uint16_t>(input, type, index, "%" PRIu16);
    case type::sint16:
      return check<std::int16_t>(input, type, index, "%" PRId16);
    case type::uint32:
      return check<std::uint32_t>(input, type, index, "%" PRIu32);
    case type::sint32:
      return check<std::int32_t>(input, type, index, "%" PRId32);
    case type::uint64:
      return check<std::uint64_t>(input, type, index, "%" PRIu64);
    case type::sint64:
      return check<std::int64_t>(input, type, index, "%" PRId64);
    case type::real32:
      return check<float>(input, type, index, "%g");
    case type::real64:
      return check<double>(input, type, index, "%g");
    default:
      return check_refusal(type, index);
  }
}
