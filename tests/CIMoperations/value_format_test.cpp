#include <gtest/gtest.h>

#include <array>
#include <boost/format.hpp>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <vector>

#include "support/trace_recorder.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

namespace {

using namespace zuCIM;

template <class Value>
std::string formatted(int type_id, Value value) {
  std::string text = "old text";
  const int length = ValueToString(&value, 0, type_id, text);
  EXPECT_EQ(length, static_cast<int>(text.size()));
  return text;
}

template <class Value>
std::string by_boost(const char* format, Value value) {
  return (boost::format(format, std::locale::classic()) % value).str();
}

// Values at the ends of the range, and many between.
template <class Integer>
std::vector<Integer> samples() {
  std::vector<Integer> values = {0,
                                 1,
                                 9,
                                 10,
                                 99,
                                 100,
                                 std::numeric_limits<Integer>::min(),
                                 std::numeric_limits<Integer>::max()};
  std::mt19937_64 random(1);
  for (int i = 0; i < 1000; ++i)
    values.push_back(static_cast<Integer>(random() >> (random() % 64)));
  return values;
}

template <class Integer, class Shown = Integer>
void expect_same_as_boost(int type_id, const char* format) {
  for (const Integer value : samples<Integer>())
    EXPECT_EQ(formatted(type_id, value), by_boost(format, static_cast<Shown>(value)));
}

TEST(ValueToString, FormatsIntegersAsBoostDoes) {
  expect_same_as_boost<std::uint8_t, int>(type::uint8, "%d");
  expect_same_as_boost<std::int8_t, std::uint32_t>(type::sint8, "%d");
  expect_same_as_boost<std::uint16_t>(type::uint16, "%d");
  expect_same_as_boost<std::int16_t>(type::sint16, "%d");
  expect_same_as_boost<std::uint32_t>(type::uint32, "%d");
  expect_same_as_boost<std::int32_t>(type::sint32, "%d");
  expect_same_as_boost<std::uint64_t>(type::uint64, "%llu");
  expect_same_as_boost<std::int64_t>(type::sint64, "%lld");
}

template <class Real, class Bits>
void expect_same_reals_as_boost(int type_id) {
  std::mt19937_64 random(2);
  for (int i = 0; i < 20000; ++i) {
    const auto bits = static_cast<Bits>(random());
    Real value;
    std::memcpy(&value, &bits, sizeof(value));
    EXPECT_EQ(formatted(type_id, value), by_boost("%g", value));
  }
  for (const Real value : {Real(0), Real(-0.0), Real(1), Real(100000), Real(1000000), Real(0.0001),
                           Real(0.00001), Real(123456.5), std::numeric_limits<Real>::infinity(),
                           -std::numeric_limits<Real>::infinity(), std::numeric_limits<Real>::max(),
                           std::numeric_limits<Real>::denorm_min()})
    EXPECT_EQ(formatted(type_id, value), by_boost("%g", value));
}

TEST(ValueToString, FormatsRealsAsBoostDoes) {
  expect_same_reals_as_boost<float, std::uint32_t>(type::real32);
  expect_same_reals_as_boost<double, std::uint64_t>(type::real64);
}

TEST(ValueToString, FormatsKnownReals) {
  EXPECT_EQ(formatted(type::real32, 0.1F), "0.1");
  EXPECT_EQ(formatted(type::real64, 1e10), "1e+10");
  EXPECT_EQ(formatted(type::real64, 123456789.0), "1.23457e+08");
}

TEST(ValueToString, PrintsANegativeSignedByteUnsigned) {
  EXPECT_EQ(formatted(type::sint8, std::int8_t{-1}), "4294967295");
  EXPECT_EQ(formatted(type::sint8, std::int8_t{-128}), "4294967168");
  EXPECT_EQ(formatted(type::sint8, std::int8_t{127}), "127");
}

TEST(ValueToString, PrintsOtherSignedNumbersSigned) {
  EXPECT_EQ(formatted(type::sint16, std::int16_t{-1}), "-1");
  EXPECT_EQ(formatted(type::sint32, std::int32_t{-1}), "-1");
  EXPECT_EQ(formatted(type::sint64, std::int64_t{-1}), "-1");
}

TEST(ValueToString, PrintsAnUnsignedByteAsANumber) {
  EXPECT_EQ(formatted(type::uint8, std::uint8_t{65}), "65");
  EXPECT_EQ(formatted(type::uint8, std::uint8_t{0}), "0");
  EXPECT_EQ(formatted(type::uint8, std::uint8_t{255}), "255");
}

TEST(ValueToString, AnyByteButZeroIsTrue) {
  const std::uint8_t bytes[] = {2, 0, 1, 255};
  const char* const texts[] = {"true", "false", "true", "true"};
  for (unsigned i = 0; i < 4; ++i) {
    std::string text;
    EXPECT_EQ(ValueToString(bytes, i, type::boolean, text), i == 1 ? 5 : 4);
    EXPECT_EQ(text, texts[i]);
  }
}

TEST(ValueToString, IgnoresTheIndexOfAString) {
  for (const unsigned index : {0U, 3U, ~0U}) {
    std::string text = "old";
    EXPECT_EQ(ValueToString("a & b", index, type::string, text), 5);
    EXPECT_EQ(text, "a & b");
  }
  std::string text = "old";
  EXPECT_EQ(ValueToString("", 0, type::string, text), 0);
  EXPECT_EQ(text, "");
}

TEST(ValueToString, TakesTheElementWidthFromTheType) {
  std::string text;
  const std::uint16_t words[] = {1, 2, 65535};
  EXPECT_EQ(ValueToString(words, 2, type::uint16, text), 5);
  EXPECT_EQ(text, "65535");
  const std::uint64_t longs[] = {1, 18446744073709551615U};
  EXPECT_EQ(ValueToString(longs, 1, type::uint64, text), 20);
  EXPECT_EQ(text, "18446744073709551615");
  const float floats[] = {1.5F, -2.5F};
  EXPECT_EQ(ValueToString(floats, 1, type::real32, text), 4);
  EXPECT_EQ(text, "-2.5");
}

TEST(ValueToString, ReadsUnalignedArrays) {
  std::array<unsigned char, 17> bytes{};
  const double value = 0.25;
  std::memcpy(bytes.data() + 9, &value, sizeof(value));
  std::string text;
  EXPECT_EQ(ValueToString(bytes.data() + 1, 1, type::real64, text), 4);
  EXPECT_EQ(text, "0.25");
}

TEST(ValueToString, LeavesTheTextAloneWithoutValues) {
  TraceRecorder recorder;
  for (int id = -1; id <= type::count; ++id) {
    std::string text = "kept";
    EXPECT_EQ(ValueToString(nullptr, 0, id, text), 0);
    EXPECT_EQ(text, "kept");
  }
  EXPECT_TRUE(recorder.lines().empty());
}

TEST(ValueToString, RefusesTypesWithoutTextForm) {
  for (const int id : {2, 11, 14, 15, 16, 1000, -1}) {
    TraceRecorder recorder;
    const std::uint64_t value = 1;
    std::string text = "old";
    EXPECT_EQ(ValueToString(&value, 0, id, text), 0) << id;
    EXPECT_EQ(text, "");
    EXPECT_EQ(recorder.count(trace_level::error, "Src/CIMoperations",
                             "ValueToString: Unknown type of value specified"),
              1);
    EXPECT_EQ(recorder.lines().size(), 1U);
  }
}

// Groups digits and has a decimal comma, as many countries have.
struct CommaPunctuation : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(ValueToString, DisregardsTheLocale) {
  const std::locale previous =
      std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation));
  EXPECT_EQ(formatted(type::real64, 1234.5), "1234.5");
  EXPECT_EQ(formatted(type::uint32, std::uint32_t{1234567}), "1234567");
  std::locale::global(previous);
}

}  // namespace
