#include "CIMconnection/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/trace_recorder.h"
#include "zuCIM/connection.h"

namespace zuCIM {
namespace {

using testing::ElementsAre;

constexpr unsigned warning = 4;
constexpr const char* source = "Src/CIMconnection";

class StatusRecord : public testing::Test {
 protected:
  StatusRecord() { connection_.host = "far"; }

  CIMconnection connection_;
  TraceRecorder traces_;
};

TEST_F(StatusRecord, KeepsTheFirstCodeAndTracesBoth) {
  EXPECT_EQ(connection_.SetCimStatus_FL(5001, "one", "Src/a.cpp", 10), 5001);
  EXPECT_EQ(connection_.SetCimStatus_FL(5002, "two", "Src/b.cpp", 20), 5001);
  EXPECT_EQ(connection_.ChkCimStatus(), 5001);
  EXPECT_THAT(traces_.texts(),
              ElementsAre("[far] ------ REQUEST:\n------ RESPONSE-HEADER:\n------ RESPONSE:\n",
                          "[far] SetCimStatus: a.cpp@10  ErrCode:5001 one",
                          "[far] SetCimStatus: b.cpp@20  ErrCode:5002 two"));
  EXPECT_EQ(traces_.texts(warning).size(), 3U);
  EXPECT_EQ(traces_.count(warning, source, "[far] SetCimStatus: a.cpp@10  ErrCode:5001 one"), 1);
}

TEST_F(StatusRecord, TracesCodeZeroAndRecordsNothing) {
  EXPECT_EQ(connection_.SetCimStatus_FL(0, nullptr, "x", 1), 0);
  EXPECT_EQ(traces_.count(warning, source, "[far] SetCimStatus: x@1  ErrCode:0 No error"), 1);
  EXPECT_EQ(traces_.lines().size(), 1U);
  connection_.cimStatus = 6;
  EXPECT_EQ(connection_.SetCimStatus_FL(0, "t", "x", 1), 6);
}

TEST_F(StatusRecord, TakesLibcurlsTextWhenThereIsNone) {
  connection_.SetCimStatus_FL(7, nullptr, "x", 1);
  EXPECT_EQ(traces_.count(warning, source,
                          "[far] SetCimStatus: x@1  ErrCode:7 Couldn't connect to server"),
            1);
}

TEST_F(StatusRecord, NamesCodesThatLibcurlDoesNotKnow) {
  for (const int code : {5000, -1, 2147483647}) {
    traces_.clear();
    connection_.SetCimStatus_FL(code, nullptr, "x", 1);
    EXPECT_EQ(traces_.count(
                  warning, source,
                  "[far] SetCimStatus: x@1  ErrCode:" + std::to_string(code) + " Unknown error"),
              1);
  }
}

TEST_F(StatusRecord, LeavesGivenTextsAsTheyAre) {
  connection_.SetCimStatus_FL(6, "a\r\nb\xC3\xA4", "x", 1);
  EXPECT_EQ(traces_.count(warning, source, "[far] SetCimStatus: x@1  ErrCode:6 a\r\nb\xC3\xA4"), 1);
}

TEST_F(StatusRecord, WritesNothingWhenTheLevelIsOff) {
  TraceRecorder others(~warning);
  EXPECT_EQ(connection_.SetCimStatus_FL(6, "t", "x", 1), 6);
  connection_.Debug_Request_Response();
  EXPECT_TRUE(others.lines().empty());
}

TEST_F(StatusRecord, CarriesTheLineOfTheCallWithinTheUnit) {
  const int line = __LINE__ + 1;
  record(connection_, 6, "t");
  EXPECT_EQ(
      traces_.count(warning, source,
                    "[far] SetCimStatus: CIMconnection@" + std::to_string(line) + "  ErrCode:6 t"),
      1);
}

TEST_F(StatusRecord, TakesAMissingFileForAnEmptyName) {
  connection_.SetCimStatus_FL(6, "t", nullptr, 1);
  EXPECT_EQ(traces_.count(warning, source, "[far] SetCimStatus: @1  ErrCode:6 t"), 1);
}

TEST_F(StatusRecord, DumpsTheExchange) {
  connection_.request = "<R/>\n";
  connection_.responseHeader = "HTTP/1.1 200 OK\r\n\r\n";
  connection_.responseBody = "50 % off %s";
  connection_.Debug_Request_Response();
  EXPECT_THAT(traces_.texts(warning),
              ElementsAre("[far] ------ REQUEST:\n<R/>\n------ RESPONSE-HEADER:\nHTTP/1.1 200 "
                          "OK\r\n\r\n------ RESPONSE:\n50 % off %s"));
}

TEST(BaseName, StandsAfterTheLastSlashOfEitherKind) {
  EXPECT_EQ(base_name("Src/CIMconnection"), "CIMconnection");
  EXPECT_EQ(base_name("C:\\a\\b.cpp"), "b.cpp");
  EXPECT_EQ(base_name("a/b\\c.cpp"), "c.cpp");
  EXPECT_EQ(base_name("a\\b/c.cpp"), "c.cpp");
  EXPECT_EQ(base_name("plain"), "plain");
  EXPECT_EQ(base_name("ends/"), "");
  EXPECT_EQ(base_name(""), "");
}

TEST(CurlText, HasBlanksForControlCharactersAndHighBytes) {
  std::string text = "a\nb\x1F\x7F\x80\xFFz";
  blank_control_characters(text);
  EXPECT_EQ(text, "a b \x7F  z");
}

}  // namespace
}  // namespace zuCIM
