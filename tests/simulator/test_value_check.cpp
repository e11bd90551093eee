#include <gtest/gtest.h>

#include <vector>

#include "value_check.h"

namespace {

using simulator::is_value_of;
using simulator::normalised;

struct ValueCase {
  const char* type;
  const char* text;
  bool valid;
};

TEST(ValueCheck, TextsMustBeInTheRangeAndFormOfTheirType) {
  const std::vector<ValueCase> cases{
      {"uint8", "255", true},
      {"uint8", "256", false},
      {"uint8", "-1", false},
      {"uint8", "-0", true},
      {"uint8", "+7", true},
      {"uint8", "0xFF", true},
      {"uint8", "0x100", false},
      {"uint8", "", false},
      {"uint8", "-", false},
      {"uint8", "1 ", false},
      {"uint8", " 1", false},
      {"uint8", "1.0", false},
      {"sint8", "-128", true},
      {"sint8", "-129", false},
      {"sint8", "127", true},
      {"sint8", "128", false},
      {"uint16", "65536", false},
      {"sint32", "-2147483648", true},
      {"sint32", "2147483648", false},
      {"uint64", "18446744073709551615", true},
      {"uint64", "18446744073709551616", false},
      {"sint64", "-9223372036854775808", true},
      {"sint64", "9223372036854775808", false},
      {"real32", "-1.25e-02", true},
      {"real64", "+1", true},
      {"real64", "one", false},
      {"boolean", "TRUE", true},
      {"boolean", "false", true},
      {"boolean", "1", false},
      {"char16", "ß", true},
      {"char16", "ab", false},
      {"char16", "", false},
      {"string", "", true},
      {"datetime", "20261121003000.123456-300", true},
      {"datetime", "00000001020304.000005:000", true},
      {"datetime", "20261121******.******+060", true},
      {"datetime", "00000001020304.000005:001", false},
      {"datetime", "20261121003000,123456-300", false},
      {"datetime", "2026112100300x.123456-300", false},
      {"datetime", "20261121003000.123456Z300", false},
      {"datetime", "20261121", false},
      {"nonesuch", "1", false},
  };
  for (const ValueCase& each : cases) {
    EXPECT_EQ(is_value_of(each.type, each.text), each.valid)
        << each.type << " \"" << each.text << '"';
  }
}

TEST(ValueCheck, EqualValuesHaveTheSameNormalForm) {
  EXPECT_EQ(normalised("uint32", "0x10"), normalised("uint32", "+16"));
  EXPECT_EQ(normalised("sint8", "-0"), "0");
  EXPECT_EQ(normalised("sint8", "-007"), "-7");
  EXPECT_EQ(normalised("boolean", "True"), "true");
  EXPECT_EQ(normalised("real32", "1.50"), normalised("real32", "15e-1"));
  EXPECT_EQ(normalised("string", "True"), "True");
  EXPECT_EQ(normalised("uint8", "rubbish"), "rubbish");
}

}  // namespace
