#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "CIMoperations/tree_text.h"
#include "support/failing_allocator.h"
#include "support/trace_recorder.h"
#include "zuCIM.h"

namespace {

using namespace zuCIM;

constexpr const char* source = "Src/CIMoperations";

// Long enough for any text to need memory.
const std::string long_text(100, 'x');

struct Piece {
  const char* function;
  std::function<void(CIMcontainer&)> append;
};

const Piece pieces[] = {
    {"beginElement", [](CIMcontainer& c) { c.beginElement(elem::CIM, long_text.c_str()); }},
    {"addAttribute",
     [](CIMcontainer& c) { c.addAttribute(attr::NAME, long_text.c_str(), nullptr); }},
    {"addValue", [](CIMcontainer& c) { c.addValue(long_text.c_str()); }},
    {"endElement", [](CIMcontainer& c) { c.endElement(elem::VALUE_OBJECTWITHLOCALPATH); }},
    {"addCIMXMLheader", [](CIMcontainer& c) { c.addCIMXMLheader(); }},
    {"addLocalNameSpacePath", [](CIMcontainer& c) { c.addLocalNameSpacePath(); }},
    {"addClassNameParam", [](CIMcontainer& c) { c.addClassNameParam(1); }},
    {"addOptionalParameter", [](CIMcontainer& c) { c.addOptionalParameter(0, 1); }},
    {"addOptionalPropertyList",
     [](CIMcontainer& c) {
       const CIMarray none;
       c.addOptionalPropertyList(&none);
     }},
};

TEST(FailingMemory, MakesARequestAFailedOne) {
  for (const Piece& piece : pieces) {
    const unsigned count = for_each_failing_allocation(
        [&](AllocationFailure& failure) {
          CIMcontainer container;
          container.setCurrentClass("CIM_A", "");
          const TraceRecorder recorder(0);
          failure.arm();
          piece.append(container);
          failure.disarm();
          EXPECT_EQ(container.cimStatus, failure.happened() ? 1001 : 0) << piece.function;
          EXPECT_EQ(container.request.empty(), failure.happened()) << piece.function;
        },
        AllocationKind::cpp);
    EXPECT_GT(count, 0U) << piece.function;
  }
}

TEST(FailingMemory, IsTracedWithTheNameOfTheFunction) {
  for (const Piece& piece : pieces) {
    CIMcontainer container;
    container.setCurrentClass("CIM_A", "");
    const TraceRecorder recorder;
    {
      const AllocationFailure failure(1, AllocationKind::cpp);
      piece.append(container);
    }
    EXPECT_EQ(recorder.count(trace_level::error, source,
                             std::string(piece.function) + ": Exception raised: std::bad_alloc"),
              1);
  }
}

TEST(FailingMemory, LeavesAValueEmpty) {
  const TraceRecorder recorder;
  std::string text;
  {
    const AllocationFailure failure(1, AllocationKind::cpp);
    EXPECT_EQ(ValueToString(long_text.c_str(), 0, type::string, text), 0);
  }
  EXPECT_EQ(text, "");
  EXPECT_EQ(
      recorder.count(trace_level::error, source, "ValueToString: Exception raised: std::bad_alloc"),
      1);
}

const std::string names = "CIM\n IRETURNVALUE\n  INSTANCENAME\n  INSTANCENAME\n";

TEST(FailingMemory, LeavesTheAnswerWhereItIs) {
  for_each_failing_allocation([](AllocationFailure& failure) {
    CIMcontainer container;
    container.setCurrentClass("A", "");
    build_tree(container.result, names);
    failure.arm();
    const std::intptr_t first = container.ExtractInstanceNames(&container.result);
    failure.disarm();
    EXPECT_EQ(first == 0, failure.happened());
    EXPECT_EQ(tree_text(&container.result), first == 0 ? names : "CIM\n IRETURNVALUE\n");
  });
}

TEST(FailingMemory, LeavesBothInstanceListsEmpty) {
  for_each_failing_allocation([](AllocationFailure& failure) {
    CIMcontainer container;
    container.setCurrentClass("A", "");
    build_tree(container.result, "CIM\n VALUE.NAMEDINSTANCE\n  INSTANCENAME\n  INSTANCE\n");
    failure.arm();
    const std::intptr_t first = container.ExtractNamedInstances();
    failure.disarm();
    EXPECT_EQ(first == 0, failure.happened());
    EXPECT_EQ(container.classes.instanceNames == nullptr, failure.happened());
    EXPECT_EQ(container.classes.instances == nullptr, failure.happened());
  });
}

TEST(FailingMemory, LeavesNoPartOfAClassDefinition) {
  const unsigned count = for_each_failing_allocation([](AllocationFailure& failure) {
    CIMcontainer container;
    container.setCurrentClass("A", "");
    build_tree(container.result,
               "CIM\n"
               " CLASS NAME=A\n"
               "  PROPERTY\n"
               "   QUALIFIER NAME=Key\n"
               "  METHOD\n"
               "   PARAMETER\n");
    failure.arm();
    const int code = container.ExtractClassDefinition();
    failure.disarm();
    // Memory that cannot be given back does no harm.
    if (code == 0) {
      EXPECT_EQ(tree_text(container.classes.instances), "INSTANCE CLASSNAME=A\n PROPERTY [Key]\n");
      EXPECT_EQ(tree_text(container.classes.methods), "CIM\n METHOD\n  PARAMETER\n");
      return;
    }
    EXPECT_EQ(code, 1001);
    EXPECT_TRUE(failure.happened());
    EXPECT_EQ(container.classes.instances, nullptr);
    EXPECT_EQ(container.classes.methods, nullptr);
  });
  EXPECT_GE(count, 3U);
}

TEST(FailingMemory, LeavesNoCurrentClassWhenTheNewOneCannotBeMade) {
  CIMcontainer container;
  container.setCurrentClass("A", "");
  {
    const AllocationFailure failure(1, AllocationKind::cpp, FailureSpan::from_then_on);
    EXPECT_EQ(container.setCurrentClass("B", ""), nullptr);
  }
  EXPECT_EQ(container.currentClass, nullptr);
}

}  // namespace
