#include "CIMconnection/data_callback.h"

#include <gtest/gtest.h>

#include <string>

namespace zuCIM {
namespace {

// Hands `data` over as libcurl does, in a buffer of its own.
std::size_t append(std::string data, std::size_t size, std::size_t count, void* text) {
  return append_data(data.data(), size, count, text);
}

TEST(DataCallback, AppendsWhatItGets) {
  std::string text = "ab";
  EXPECT_EQ(append("cdef", 2, 2, &text), 4U);
  EXPECT_EQ(append(std::string("g\0h", 3), 1, 3, &text), 3U);
  EXPECT_EQ(text, std::string("abcdefg\0h", 9));
}

TEST(DataCallback, TakesNothingOfNothing) {
  std::string text = "ab";
  EXPECT_EQ(append("x", 1, 0, &text), 0U);
  EXPECT_EQ(append("x", 0, 1, &text), 0U);
  EXPECT_EQ(append("x", 1, 1, nullptr), 0U);
  EXPECT_EQ(text, "ab");
}

TEST(DataCallback, TakesNothingThatDoesNotFitIntoMemory) {
  std::string text = "ab";
  EXPECT_EQ(append("x", 1, text.max_size(), &text), 0U);
  EXPECT_EQ(text, "ab");
}

std::size_t append_limited(const std::string& bytes, LimitedText* text) {
  std::string copy = bytes;
  return append_limited_data(copy.data(), 1, copy.size(), text);
}

TEST(DataCallback, TakesAsMuchAsTheLimitSays) {
  std::string text = "ab";
  LimitedText limited{text, 5};
  EXPECT_EQ(append_limited("cde", &limited), 3U);
  EXPECT_FALSE(limited.is_exceeded);
  EXPECT_EQ(append_limited("f", &limited), 0U);
  EXPECT_TRUE(limited.is_exceeded);
  EXPECT_EQ(text, "abcde");
}

TEST(DataCallback, TakesNothingWhereTheLimitIsBehind) {
  std::string text = "abc";
  LimitedText limited{text, 2};
  EXPECT_EQ(append_limited("d", &limited), 0U);
  EXPECT_TRUE(limited.is_exceeded);
  EXPECT_EQ(append_limited("d", nullptr), 0U);
}

}  // namespace
}  // namespace zuCIM
