#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CIMoperations/extrinsic_test.h"
#include "support/loopback.h"

// What becomes of the answers of extrinsic methods.
namespace {

using namespace zuCIM;

class ExtrinsicResult : public ExtrinsicTest {
 protected:
  std::vector<std::string> warnings() {
    std::vector<std::string> found;
    for (const RecordedLine& line : recorder_.lines())
      if (line.level == trace_level::warning && line.source == operations_source)
        found.push_back(line.text);
    return found;
  }

  // The call has just returned `status` because of what `detail` says.
  void expect_failure(int status, const std::string& detail) {
    EXPECT_EQ(context_->ChkCimStatus(), status) << detail;
    EXPECT_EQ(warnings(),
              std::vector<std::string>{"[127.0.0.2] performExtrinsicMethod(\"Start\") " + detail});
    EXPECT_EQ(context_->curl, nullptr);
    EXPECT_EQ(context_->request, "");
    EXPECT_EQ(context_->result.next, nullptr);
  }

  void expect_returned(const std::string& text, int status) {
    serve({returning(text)});
    recorder_.clear();
    EXPECT_EQ(call(), status) << text;
    expect_failure(status, "RETURNVALUE=" + std::to_string(status));
  }

  void expect_missing(const std::string& answer) {
    serve({answer});
    recorder_.clear();
    EXPECT_EQ(call(), 1001) << answer;
    expect_failure(1001, "RETURNVALUE not found!");
  }
};

TEST_F(ExtrinsicResult, ZeroIsSuccess) {
  for (const char* const text : {"0", "-0", "+0", "00", "0x10", "0.9", "none", " 0"}) {
    serve({returning(text)});
    recorder_.clear();
    EXPECT_EQ(call(), 0) << text;
    EXPECT_EQ(context_->ChkCimStatus(), 0);
    EXPECT_TRUE(warnings().empty());
    EXPECT_NE(context_->curl, nullptr);
    EXPECT_EQ(context_->request, body());
  }
}

TEST_F(ExtrinsicResult, AnotherNumberIsTheStatus) {
  expect_returned("4", 4);
  expect_returned("-1", -1);
  expect_returned("+5", 5);
  expect_returned("1001", 1001);
  expect_returned("32768", 32768);
  expect_returned("2147483647", 2147483647);
  expect_returned("-2147483648", -2147483647 - 1);
}

TEST_F(ExtrinsicResult, ANumberEndsAtTheFirstOtherCharacter) {
  expect_returned("12 apples", 12);
  expect_returned("  12", 12);
  expect_returned("\t-12x34", -12);
  expect_returned("7.9", 7);
}

TEST_F(ExtrinsicResult, ANumberBeyondTheRangeBecomesTheNearest) {
  expect_returned("4294967295", 2147483647);
  expect_returned("99999999999999999999999", 2147483647);
  expect_returned("-2147483649", -2147483647 - 1);
  expect_returned("-99999999999999999999999", -2147483647 - 1);
}

TEST_F(ExtrinsicResult, TheNumberThatMarksAMissingOneCountsAsMissing) {
  expect_missing(returning("123456"));
  expect_returned("123457", 123457);
}

TEST_F(ExtrinsicResult, NeedsAReturnValueWithText) {
  expect_missing(extrinsic_answer(""));
  expect_missing(extrinsic_answer("<PARAMVALUE NAME=\"o\">\n<VALUE>0</VALUE>\n</PARAMVALUE>\n"));
  expect_missing(extrinsic_answer("<RETURNVALUE PARAMTYPE=\"uint32\"/>\n"));
  expect_missing(extrinsic_answer("<RETURNVALUE PARAMTYPE=\"uint32\"></RETURNVALUE>\n"));
  expect_missing(extrinsic_answer("<RETURNVALUE>\n<VALUE/>\n</RETURNVALUE>\n"));
  expect_missing(extrinsic_answer("<RETURNVALUE>\n<VALUE></VALUE>\n</RETURNVALUE>\n"));
  expect_missing(extrinsic_answer("<RETURNVALUE>\n<KEYVALUE>0</KEYVALUE>\n</RETURNVALUE>\n"));
  expect_missing(extrinsic_answer("<RETURNVALUE>\n<VALUE><![CDATA[]]></VALUE>\n</RETURNVALUE>\n"));
  expect_missing(
      extrinsic_answer("<RETURNVALUE>\n<VALUE.REFERENCE>\n<INSTANCENAME CLASSNAME=\"CIM_A\"/>\n"
                       "</VALUE.REFERENCE>\n</RETURNVALUE>\n"));
}

TEST_F(ExtrinsicResult, TheFirstReturnValueCounts) {
  serve(
      {extrinsic_answer("<RETURNVALUE>\n<VALUE>0</VALUE>\n</RETURNVALUE>\n"
                        "<RETURNVALUE>\n<VALUE>4</VALUE>\n</RETURNVALUE>\n")});
  EXPECT_EQ(call(), 0);
}

TEST_F(ExtrinsicResult, AFailureWritesTheWholeExchange) {
  serve({returning("4")});
  EXPECT_EQ(call(), 4);
  const std::string start = "[127.0.0.2] ------ REQUEST:\n" + body() + "------ RESPONSE-HEADER:\n";
  const std::string rest = "------ RESPONSE:\n" + returning("4");
  const std::vector<std::string> texts = recorder_.texts(trace_level::warning);
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_EQ(texts[0], "[127.0.0.2] performExtrinsicMethod(\"Start\") RETURNVALUE=4");
  EXPECT_EQ(texts[1].substr(0, start.size()), start);
  ASSERT_GT(texts[1].size(), rest.size());
  EXPECT_EQ(texts[1].substr(texts[1].size() - rest.size()), rest);
}

TEST_F(ExtrinsicResult, TheServersErrorIsTheStatus) {
  serve({extrinsic_answer("<ERROR CODE=\"17\" DESCRIPTION=\"CIM_ERR_METHOD_NOT_FOUND\"/>\n")});
  EXPECT_EQ(call(), 17);
  EXPECT_EQ(context_->ChkCimStatus(), 17);
  EXPECT_EQ(context_->curl, nullptr);
  EXPECT_TRUE(warnings().empty());
}

TEST_F(ExtrinsicResult, AStatusOfTheCallBeforeIsForgotten) {
  serve({returning("4"), returning("0")});
  EXPECT_EQ(call(), 4);
  EXPECT_EQ(call(), 0);
  EXPECT_EQ(context_->ChkCimStatus(), 0);
}

TEST_F(ExtrinsicResult, ARefusingServerIsTriedElevenTimes) {
  server_ = nullptr;
  context_ = std::make_unique<ServerContext>("127.0.0.2", dead_port);
  EXPECT_EQ(call(), 7);
  EXPECT_EQ(context_->ChkCimStatus(), 7);
  EXPECT_EQ(clock_.pauses(), std::vector<unsigned>(10, 2000));
  std::vector<std::string> expected;
  for (int loop = 10; loop > 0; --loop)
    expected.push_back("[127.0.0.2] performExtrinsicMethod: ret=7 info=0x400 loop=" +
                       std::to_string(loop));
  EXPECT_EQ(warnings(), expected);
  EXPECT_EQ(context_->curl, nullptr);
  EXPECT_EQ(context_->request, "");
}

TEST_F(ExtrinsicResult, ANegativeExtraTimeOutRulesRetriesOut) {
  server_ = nullptr;
  context_ = std::make_unique<ServerContext>("127.0.0.2", dead_port);
  without_retries();
  EXPECT_EQ(call(), 7);
  EXPECT_TRUE(clock_.pauses().empty());
  EXPECT_TRUE(warnings().empty());
}

TEST_F(ExtrinsicResult, ARetrySendsTheSameText) {
  const script::Steps silent = {script::ReadRequest{}};
  serve_scripts(Scripts{{silent, answering(returning("0"))}});
  EXPECT_EQ(call(), 0);
  const std::vector<std::string> requests = server_->requests();
  ASSERT_EQ(requests.size(), 2U);
  EXPECT_NE(body_of(requests[0]), "");
  EXPECT_EQ(body_of(requests[1]), body_of(requests[0]));
  EXPECT_EQ(clock_.pauses(), std::vector<unsigned>{2000});
  EXPECT_EQ(warnings(), std::vector<std::string>{"[127.0.0.2] performExtrinsicMethod: ret=52 "
                                                 "info=0x400 loop=10"});
}

// A method's number is no failure of the transfer, even when it looks like one.
TEST_F(ExtrinsicResult, AReturnedSevenIsNotTriedAgain) {
  serve_scripts(Scripts{{answering(returning("7"))}, true});
  EXPECT_EQ(call(), 7);
  EXPECT_EQ(server_->requests().size(), 1U);
}

TEST_F(ExtrinsicResult, NeedsTheBusyFlag) {
  serve({returning("0")});
  context_->ESXi_Occupied(false);
  EXPECT_EQ(call(), 27);
  EXPECT_EQ(context_->ChkCimStatus(), 27);
  EXPECT_EQ(server_->connection_count(), 0U);
}

}  // namespace
