#include <gtest/gtest.h>

#include <cstdlib>

#include "CIMconnection/sample_server.h"

// The registry is used before and after the library's own statics live.

namespace zuCIM {
namespace {

constexpr const char* early_variable = "ZUCIM_TEST_EARLY_CONTEXT";

// Makes a context before the library's sources are initialised, if the environment asks for it.
struct EarlyContext {
  EarlyContext() {
    if (std::getenv(early_variable) == nullptr) return;
    const _THR_SERVER_ server = sample_server("a host name of some length.example");
    index = makeContainer(&server, 7);
  }
  std::uint32_t index = 0;
};

[[gnu::init_priority(101)]] EarlyContext early_context;

// The leak checker judges whether the context was destroyed.
TEST(StaticOrderDeathTest, KeepsAContextThatAnotherStaticObjectMade) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto look_it_up = [] {
    const int position = getCIM(early_context.index);
    const CIMcontainer* const context = getContainer(static_cast<unsigned>(position));
    std::exit(position == 0 && getContainerSize() == 1 && context->callerValue == 7 ? 0 : 1);
  };
  setenv(early_variable, "1", 1);
  EXPECT_EXIT(look_it_up(), testing::ExitedWithCode(0), "");
  unsetenv(early_variable);
}

}  // namespace
}  // namespace zuCIM
