#include "CIMlistener/export_response.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "CIMlistener/export_samples.h"

namespace {

std::string answer_to(int message_id) {
  return std::string(zuCIM::ExportResponse(message_id).text());
}

TEST(ExportResponse, EchoesTheIdAndSaysHowLongItsBodyIs) {
  EXPECT_EQ(answer_to(1), export_answer("1", "000000233"));
  EXPECT_EQ(answer_to(12), export_answer("12", "000000234"));
  EXPECT_EQ(answer_to(1042), export_answer("1042", "000000236"));
  EXPECT_EQ(answer_to(2147483647), export_answer("2147483647", "000000242"));
}

TEST(ExportResponse, TheHeaderHas116CharactersAndNoCarriageReturn) {
  const std::string answer = answer_to(1042);
  EXPECT_EQ(answer.find("<?xml"), 116U);
  EXPECT_EQ(answer.size(), 116U + 236U);
  EXPECT_EQ(answer.find('\r'), std::string::npos);
}

// The buffer of an answer takes 8190 bytes; no id makes it that long.
TEST(ExportResponse, TheLargestIdFits) {
  EXPECT_EQ(answer_to(std::numeric_limits<int>::max()).size(), 116U + 242U);
}

}  // namespace
