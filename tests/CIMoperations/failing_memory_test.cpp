#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

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

TEST(FailingMemory, LeavesTheInstanceWhereItIs) {
  const std::string answer = "CIM\n IRETURNVALUE\n  INSTANCE CLASSNAME=A\n   PROPERTY [v]\n";
  const unsigned count = for_each_failing_allocation([&](AllocationFailure& failure) {
    CIMcontainer container;
    container.setCurrentClass("A", "");
    build_tree(container.result, answer);
    failure.arm();
    const std::intptr_t first = container.ExtractInstance(&container.result);
    failure.disarm();
    EXPECT_EQ(first == 0, failure.happened());
    EXPECT_EQ(tree_text(&container.result), first == 0 ? answer : "CIM\n IRETURNVALUE\n");
    EXPECT_EQ(container.classes.instances == nullptr, first == 0);
    EXPECT_TRUE(first != 0 || container.ExtractInstance(&container.result) != 0);
  });
  EXPECT_GE(count, 1U);
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

// Extracts from an answer while the n-th allocation fails, and returns the traces.
std::vector<std::string> traces_of(const std::string& answer, unsigned nth, AllocationKind kind,
                                   const std::function<void(CIMcontainer&)>& extract) {
  CIMcontainer container;
  container.host = "h";
  container.setCurrentClass("A", "");
  build_tree(container.result, answer);
  const TraceRecorder recorder(trace_level::error);
  {
    const AllocationFailure failure(nth, kind);
    extract(container);
  }
  return recorder.texts();
}

std::string short_of_memory(const std::string& function) {
  return function + ": Exception raised: cannot alloc memory!";
}

TEST(FailingMemory, IsTracedByTheExtractions) {
  const auto names_only = [](CIMcontainer& c) { c.ExtractInstanceNames(&c.result); };
  const auto instances_only = [](CIMcontainer& c) { c.ExtractInstance(&c.result); };
  using Lines = std::vector<std::string>;
  EXPECT_EQ(traces_of(names, 1, AllocationKind::cpp, names_only),
            Lines{short_of_memory("ExtractInstanceNames")});
  EXPECT_EQ(traces_of("CIM\n INSTANCE\n", 1, AllocationKind::cpp, instances_only),
            Lines{short_of_memory("ExtractInstance")});
}

// The answer is not to blame.
TEST(FailingMemory, IsNotTakenForWrongData) {
  for (const unsigned nth : {1U, 2U})
    EXPECT_EQ(traces_of("CIM\n VALUE.NAMEDINSTANCE\n  INSTANCENAME\n  INSTANCE\n", nth,
                        AllocationKind::cpp, [](CIMcontainer& c) { c.ExtractNamedInstances(); }),
              std::vector<std::string>{short_of_memory("ExtractNamedInstances")});
}

const std::string key_class =
    "CIM\n"
    " CLASS NAME=A\n"
    "  PROPERTY\n"
    "   QUALIFIER NAME=Key\n"
    "  METHOD\n";

void extract_class(CIMcontainer& container) {
  EXPECT_EQ(container.ExtractClassDefinition(), 1001);
}

// The first allocation makes the template, the last one the list of methods.
TEST(FailingMemory, IsTracedWithTheStepOfAClassDefinition) {
  const std::string memory = short_of_memory("ExtractClassDefinition");
  const std::string step = "[h] ExtractClassDefinition() ";
  using Lines = std::vector<std::string>;
  EXPECT_EQ(traces_of(key_class, 1, AllocationKind::cpp, extract_class),
            (Lines{memory, step + "Class-ClassName", step + "A"}));
  EXPECT_EQ(traces_of(key_class, 2, AllocationKind::cpp, extract_class),
            (Lines{"attr_put: Exception raised: cannot alloc memory!", memory,
                   step + "Class-ClassName", step + "A"}));
  EXPECT_EQ(traces_of(key_class, 3, AllocationKind::cpp, extract_class),
            (Lines{memory, step + "Class-Methods", step + "A"}));
}

// The text "Key" is copied with malloc, which a sanitizer does not let fail.
#if !ZUCIM_SANITIZER_ALLOCATES
TEST(FailingMemory, IsTracedForTheValueOfAKeyProperty) {
  const std::string step = "[h] ExtractClassDefinition() ";
  const std::vector<std::string> expected = {short_of_memory("ExtractClassDefinition"),
                                             step + "Class-Properties", step + "A"};
  int count = 0;
  for (unsigned nth = 1; nth <= 6; ++nth)
    count += traces_of(key_class, nth, AllocationKind::c,
                       [](CIMcontainer& c) { c.ExtractClassDefinition(); }) == expected;
  EXPECT_EQ(count, 1);
}
#endif

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

TEST(FailingMemory, ChoosesTheWholeNewClassOrNone) {
  const unsigned count = for_each_failing_allocation([](AllocationFailure& failure) {
    CIMcontainer container;
    container.setCurrentClass("A", "");
    failure.arm();
    const CIMclass* const entry = container.setCurrentClass("B", "root/b");
    failure.disarm();
    EXPECT_EQ(entry == nullptr, failure.happened());
    EXPECT_EQ(container.currentClass, entry);
    EXPECT_NE(container.classes.findClassName("A", ""), nullptr);
    EXPECT_EQ(container.classes.findClassName("B", "root/b"), entry);
    EXPECT_NE(container.setCurrentClass("B", "root/b"), nullptr);
  });
  EXPECT_GE(count, 1U);
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
