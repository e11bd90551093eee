#include "BRQ/ModuleInfo.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

namespace {

using BRQ::Misc::CModuleInfo;
using BRQ::Misc::trace_mask_from;

// The variable for the time of a test; null takes it away.
class TraceVariable {
 public:
  explicit TraceVariable(const char* value) {
    if (const char* const before = std::getenv(name)) before_ = before, was_set_ = true;
    set(value);
  }
  ~TraceVariable() { set(was_set_ ? before_.c_str() : nullptr); }
  TraceVariable(const TraceVariable&) = delete;
  TraceVariable& operator=(const TraceVariable&) = delete;

 private:
  static void set(const char* value) {
    if (value != nullptr)
      ::setenv(name, value, 1);
    else
      ::unsetenv(name);
  }

  static constexpr const char* name = "ZUBRQ_TRACE";
  std::string before_;
  bool was_set_ = false;
};

struct MaskCase {
  const char* settings;
  unsigned mask;
};

class TraceSettings : public testing::TestWithParam<MaskCase> {};

TEST_P(TraceSettings, GiveTheModuleItsMask) {
  EXPECT_EQ(trace_mask_from(GetParam().settings, "zuCIM"), GetParam().mask) << GetParam().settings;
}

INSTANTIATE_TEST_SUITE_P(
    WellFormed, TraceSettings,
    testing::Values(MaskCase{"zuCIM=0x14", 0x14}, MaskCase{"zuCIM=20", 20},
                    MaskCase{"zuCIM=024", 20}, MaskCase{"zuCIM=0", 0}, MaskCase{"zuCIM=0X1f", 0x1F},
                    MaskCase{"zuCIM=0xFFFFFFFF", 0xFFFFFFFF},
                    MaskCase{"zuCIM=4294967295", 0xFFFFFFFF}, MaskCase{"other=2,zuCIM=6", 6},
                    MaskCase{"other=2;zuCIM=6;third=1", 6}, MaskCase{"zuCIM=1,zuCIM=2", 1},
                    MaskCase{"other=bad,,;zuCIM=4,", 4}));

INSTANTIATE_TEST_SUITE_P(
    MalformedOrAboutOthers, TraceSettings,
    testing::Values(MaskCase{nullptr, 0}, MaskCase{"", 0}, MaskCase{"zuCIM", 0},
                    MaskCase{"zuCIM=", 0}, MaskCase{"zuCIM=,other=4", 0}, MaskCase{"zuCIM=x", 0},
                    MaskCase{"zuCIM=0x", 0}, MaskCase{"zuCIM=08", 0}, MaskCase{"zuCIM=4 ", 0},
                    MaskCase{"zuCIM= 4", 0}, MaskCase{"zuCIM=\t4", 0}, MaskCase{"zuCIM=-1", 0},
                    MaskCase{"zuCIM=+1", 0}, MaskCase{"zuCIM=4x,zuCIM=2", 0},
                    MaskCase{"zuCIM=0x100000000", 0}, MaskCase{"zuCIM=99999999999999999999999", 0},
                    MaskCase{"zuCIM:4", 0}, MaskCase{"zucim=4", 0}, MaskCase{"zuCIM2=4", 0},
                    MaskCase{"xzuCIM=4", 0}, MaskCase{" zuCIM=4", 0}, MaskCase{",;,", 0}));

TEST(TraceSettings, WithoutAModuleNameGiveNothing) {
  EXPECT_EQ(trace_mask_from("zuCIM=4", nullptr), 0U);
}

TEST(ModuleInfo, KnowsItsNumberNameAndVersion) {
  const CModuleInfo module(300, "zuCIM", "P:1 F:2");
  EXPECT_EQ(module.number(), 300U);
  EXPECT_STREQ(module.name(), "zuCIM");
  EXPECT_STREQ(module.version(), "P:1 F:2");
}

TEST(ModuleInfo, IsSilentWithoutTheVariable) {
  const TraceVariable variable(nullptr);
  EXPECT_EQ(CModuleInfo(1, "zuCIM", "").trace_mask(), 0U);
}

TEST(ModuleInfo, StartsWithTheMaskOfTheVariable) {
  const TraceVariable variable("other=1,zuCIM=0x14");
  EXPECT_EQ(CModuleInfo(1, "zuCIM", "").trace_mask(), 0x14U);
}

TEST(ModuleInfo, ALevelIsOnWhenAnyOfItsBitsIs) {
  CModuleInfo module(1, "test", "");
  module.set_trace_mask(0x14);
  EXPECT_TRUE(module.is_enabled(4));
  EXPECT_TRUE(module.is_enabled(16));
  EXPECT_TRUE(module.is_enabled(2 | 4));
  EXPECT_FALSE(module.is_enabled(2));
  EXPECT_FALSE(module.is_enabled(0));
  module.set_trace_mask(2);
  EXPECT_TRUE(module.is_enabled(2));
  EXPECT_FALSE(module.is_enabled(4));
}

}  // namespace
