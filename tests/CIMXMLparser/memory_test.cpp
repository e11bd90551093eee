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

TEST_P(ParseWithoutMemory, LeaksNothingWhicheverAllocationFails) {
  const TraceRecorder silent(0);
  EXPECT_TRUE(leaves_nothing(100, [] {
    for_each_failing_allocation([] {
      CIMelement root;
      root.ParseCIMXML(GetParam());
    });
  }));
}

// What changes the attributes of a node, and whether the array may lose its slots by that: it does
// so when it cannot grow.
struct Change {
  const char* name;
  bool (*make)(CIMelement& node);
  bool may_lose_slots;
};

const Change changes[] = {
    {"attr_put", [](CIMelement& node) { return node.attr_put(zuCIM::attr::CLASSORIGIN, "c") == 0; },
     true},
    {"more capacity", [](CIMelement& node) { return node.attributes->setmaxargc(40) == 0; }, false},
    // The trace alone tells whether it failed.
    {"FreeUnused",
     [](CIMelement& node) {
       node.attributes->FreeUnused();
       return node.attributes->maxargc == node.attributes->argc;
     },
     false},
};

// A node of a parsed document whose attributes lie in memory that they share with others, so that a
// change copies them first.
struct ParsedProperty {
  ParsedProperty() {
    EXPECT_EQ(
        root.ParseCIMXML("<?xml version=\"1.0\" ?><CIM CIMVERSION=\"2.0\"><PROPERTY NAME=\"Speed\" "
                         "TYPE=\"uint32\" CLASSORIGIN=\"CIM_Fan\"/></CIM>"),
        0U);
    node = root.next;
    node->attributes->erase(2);
  }
  bool is_readable() const {
    const char* const name = node->attr_find(zuCIM::attr::NAME);
    const char* const type = node->attr_find(zuCIM::attr::TYPE);
    return name != nullptr && type != nullptr && std::string(name) == "Speed" &&
           std::string(type) == "uint32";
  }

  CIMelement root;
  CIMelement* node;
};

TEST(CodecMemory, AttributesThatCannotBeChangedStayReadable) {
  for (const Change& change : changes) {
    SCOPED_TRACE(change.name);
    int lost = 0;
    const unsigned allocations = for_each_failing_allocation(
        [&](AllocationFailure& failure) {
          ParsedProperty property;
          failure.arm();
          const bool success = change.make(*property.node);
          failure.disarm();
          EXPECT_TRUE(success || failure.happened());
          if (property.node->attributes->argv == nullptr) {
            ++lost;
            return;
          }
          EXPECT_TRUE(property.is_readable());
          EXPECT_TRUE(change.make(*property.node));
          EXPECT_TRUE(property.is_readable());
        },
        AllocationKind::c);
    EXPECT_EQ(lost, change.may_lose_slots && malloc_can_fail ? 1 : 0);
    if (malloc_can_fail) {
      // The slots, two copies, and what the change itself needs.
      EXPECT_GE(allocations, 4U);
    }
  }
}

TEST(CodecMemory, AttributesAreReplacedByWholeOnes) {
  zuCIM::CIMarray names;
  for (const char* const name : {"a", "b", "c"}) ASSERT_NE(names.putargv(name, -2, 15), nullptr);
  for_each_failing_allocation(
      [&](AllocationFailure& failure) {
        ParsedProperty property;
        zuCIM::CIMarray& attributes = *property.node->attributes;
        failure.arm();
        attributes = names;
        failure.disarm();
        EXPECT_EQ(attributes.argc < 3, failure.happened());
        for (unsigned i = 0; i < attributes.argc; ++i)
          EXPECT_STREQ(static_cast<char*>(attributes.argv[i]) + 1,
                       static_cast<char*>(names.argv[i]) + 1);
        attributes = names;
        EXPECT_EQ(attributes.argc, 3U);
      },
      AllocationKind::c);
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
