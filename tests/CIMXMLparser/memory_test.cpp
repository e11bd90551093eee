#include <gtest/gtest.h>

#include <string>

#include "support/failing_allocator.h"
#include "support/plain_parser.h"
#include "support/trace_recorder.h"
#include "zuCIM.h"

namespace {

using zuCIM::CIMelement;

const std::string plain_message =
    "<?xml version=\"1.0\" ?><CIM CIMVERSION=\"2.0\"><INSTANCE CLASSNAME=\"CIM_NumericSensor\">"
    "<PROPERTY NAME=\"ElementName\" TYPE=\"string\"><VALUE>Inlet temperature of the left fan"
    "</VALUE></PROPERTY><PROPERTY NAME=\"a\" TYPE=\"uint8\"/></INSTANCE></CIM>";

// A comment sends the message through the exact parser, too.
const std::string commented_message =
    plain_message.substr(0, plain_message.size() - 6) + "<!-- comment --><VALUE>b</VALUE></CIM>";

std::string text_of(CIMelement& root) {
  std::string text;
  EXPECT_EQ(root.GenerateCIMXML(text), 0U);
  return text;
}

class ParseWithoutMemory : public ::testing::TestWithParam<std::string> {};

// A shrinking array may keep its slack, so a run that met a failure may still succeed; then the
// document must be complete.
TEST_P(ParseWithoutMemory, FailsCleanlyWhicheverAllocationFails) {
  CIMelement expected;
  ASSERT_EQ(expected.ParseCIMXML(GetParam()), 0U);
  int failures = 0;
  for_each_failing_allocation([&](AllocationFailure& failure) {
    CIMelement root;
    failure.arm();
    const unsigned status = root.ParseCIMXML(GetParam());
    failure.disarm();
    if (status != 0) {
      EXPECT_TRUE(failure.happened());
      EXPECT_EQ(status, 1001U);
      ++failures;
    }
    EXPECT_EQ(root.ParseCIMXML(GetParam()), 0U);
    EXPECT_EQ(tree_difference(root, expected), "");
  });
  EXPECT_GE(failures, 4);
}

INSTANTIATE_TEST_SUITE_P(Codec, ParseWithoutMemory,
                         ::testing::Values(plain_message, commented_message));

// A node is a block of the heap of its own when there is no memory for many.
TEST(CodecMemory, AFailedNodeIsTraced) {
  if (!malloc_can_fail) {
    SUCCEED() << "the sanitizer brings its own malloc";
    return;
  }
  const TraceRecorder traces(zuCIM::trace_level::error);
  for_each_failing_allocation(
      [&](AllocationFailure& failure) {
        CIMelement root;
        failure.arm();
        root.ParseCIMXML(plain_message);
        failure.disarm();
      },
      AllocationKind::any, FailureSpan::twice);
  EXPECT_GE(
      traces.count(0x40000000, "Src/CIMXMLparser", "parseXMLbuffer: MakeNextElement = NULL!!"), 1);
}

TEST(CodecMemory, NodesOfTheirOwnServeWhereChunksCannotBeHad) {
  CIMelement expected;
  ASSERT_EQ(expected.ParseCIMXML(plain_message), 0U);
  int nodes_of_their_own = 0;
  for_each_failing_allocation(
      [&](AllocationFailure& failure) {
        CIMelement root;
        failure.arm();
        const unsigned status = root.ParseCIMXML(plain_message);
        failure.disarm();
        if (status != 0 || !failure.happened()) return;
        EXPECT_EQ(text_of(root), text_of(expected));
        ++nodes_of_their_own;
      },
      AllocationKind::c);
  EXPECT_EQ(nodes_of_their_own > 0, malloc_can_fail);
}

TEST(CodecMemory, AFailedAttributeEndsTheParse) {
  if (!malloc_can_fail) {
    SUCCEED() << "the sanitizer brings its own malloc";
    return;
  }
  // The second failure meets the text of the only value, the first one the chunk for it.
  const std::string value_alone = "<?xml version=\"1.0\" ?><CIM ><VALUE>a</VALUE></CIM>";
  const TraceRecorder traces(zuCIM::trace_level::error);
  for (const std::string& message : {plain_message, value_alone})
    for_each_failing_allocation(
        [&](AllocationFailure& failure) {
          CIMelement root;
          failure.arm();
          root.ParseCIMXML(message);
          failure.disarm();
        },
        AllocationKind::c, FailureSpan::twice);
  EXPECT_GE(traces.count(0x40000000, "Src/CIMXMLparser", "parseXMLbuffer: bad Attribute!"), 1);
  EXPECT_GE(
      traces.count(0x40000000, "Src/CIMXMLparser", "ParseCIMXML: Exception raised: std::bad_alloc"),
      1);
}

TEST(CodecMemory, TheGeneratorReportsThatTheTextCannotGrow) {
  TraceRecorder traces(zuCIM::trace_level::error);
  CIMelement root;
  ASSERT_EQ(root.ParseCIMXML(plain_message), 0U);
  std::string expected;
  ASSERT_EQ(root.GenerateCIMXML(expected), 0U);
  for_each_failing_allocation(
      [&](AllocationFailure& failure) {
        std::string text;
        failure.arm();
        const unsigned status = root.GenerateCIMXML(text);
        failure.disarm();
        EXPECT_EQ(status, failure.happened() ? 1001U : 0U);
        if (status == 0) {
          EXPECT_EQ(text, expected);
        }
      },
      AllocationKind::cpp);
  EXPECT_GE(traces.count(0x40000000, "Src/CIMXMLparser",
                         "GenerateCIMXML: Exception raised: std::bad_alloc"),
            1);
}

}  // namespace
