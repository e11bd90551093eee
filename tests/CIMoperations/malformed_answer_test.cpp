#include <gtest/gtest.h>

#include <string>

#include "CIMoperations/operation_test.h"

// Answers that came through but do not hold what the operation asked for: the result is 0, the
// status stays 0 and a trace tells.
namespace {

using namespace zuCIM;

class MalformedAnswer : public OperationTest {
 protected:
  void expect_trace(const std::string& text) {
    EXPECT_EQ(context_->ChkCimStatus(), 0);
    EXPECT_EQ(count_traces(trace_level::error, "[127.0.0.2] " + text), 1) << text;
  }

  void enumerate(const std::string& content) {
    serve({return_value(content)});
    EXPECT_EQ(context_->Imethod_EnumerateInstances(-1, -1, -1, -1, nullptr), 0);
    EXPECT_EQ(entry().instanceNames, nullptr);
    EXPECT_EQ(entry().instances, nullptr);
    expect_trace("ExtractNamedInstances() wrong XML data");
  }
};

const std::string pair =
    "<VALUE.NAMEDINSTANCE>\n"
    "<INSTANCENAME CLASSNAME=\"CIM_A\"/>\n"
    "<INSTANCE CLASSNAME=\"CIM_A\"/>\n"
    "</VALUE.NAMEDINSTANCE>\n";

TEST_F(MalformedAnswer, EnumerateInstancesDropsAllForOneIncompletePair) {
  enumerate(pair +
            "<VALUE.NAMEDINSTANCE>\n<INSTANCENAME CLASSNAME=\"CIM_A\"/>\n"
            "</VALUE.NAMEDINSTANCE>\n");
  expect_trace("ExtractNamedInstances() missing INSTANCE-subelement");
}

TEST_F(MalformedAnswer, EnumerateInstancesNeedsANameInTheFirstPair) {
  enumerate("<VALUE.NAMEDINSTANCE>\n<INSTANCE CLASSNAME=\"CIM_A\"/>\n</VALUE.NAMEDINSTANCE>\n" +
            pair);
  expect_trace("ExtractNamedInstances() missing INSTANCENAME-subelement");
}

TEST_F(MalformedAnswer, EnumerateInstancesAllowsNothingBetweenPairs) {
  enumerate(pair + "<CLASS NAME=\"CIM_A\"/>\n" + pair);
  expect_trace("ExtractNamedInstances() missing next VALUE_NAMEDINSTANCE-element");
}

TEST_F(MalformedAnswer, GetInstanceNeedsAnInstance) {
  serve({empty_answer});
  Tree name(name_tree);
  EXPECT_EQ(context_->Imethod_GetInstance(&name, -1, nullptr), 0);
  EXPECT_EQ(entry().instances, nullptr);
  expect_trace("ExtractInstance() missing INSTANCE-subelement");
}

TEST_F(MalformedAnswer, EnumerateInstanceNamesTracesThatThereAreNone) {
  serve({empty_answer});
  EXPECT_EQ(context_->Imethod_EnumerateInstanceNames(), nullptr);
  EXPECT_EQ(entry().instanceNames, nullptr);
  expect_trace("ExtractInstanceNames() missing INSTANCENAME-subelement");
}

TEST_F(MalformedAnswer, CreateInstanceNeedsAName) {
  serve({empty_answer});
  const _properties_ none[] = {{nullptr, 0, 0, nullptr, nullptr}};
  EXPECT_EQ(context_->Imethod_CreateInstance(none), 0);
  expect_trace("ExtractInstanceNames() missing INSTANCENAME-subelement");
}

TEST_F(MalformedAnswer, GetClassTracesWhatIsMissing) {
  serve({empty_answer});
  EXPECT_EQ(context_->Imethod_GetClass(-1, -1, -1, nullptr), 1001);
  expect_trace("ExtractClassDefinition() Class-ClassName");
  expect_trace("ExtractClassDefinition() CIM_A");
}

}  // namespace
