#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "CIMoperations/extraction_test.h"

namespace {

using namespace zuCIM;

class Extraction : public ExtractionTest {};

constexpr const char* three_names =
    "CIM CIMVERSION=2.0\n"
    " MESSAGE ID=1001\n"
    "  SIMPLERSP\n"
    "   IMETHODRESPONSE NAME=EnumerateInstanceNames\n"
    "    IRETURNVALUE\n"
    "     INSTANCENAME CLASSNAME=A\n"
    "      KEYBINDING NAME=Id\n"
    "       KEYVALUE [1]\n"
    "     INSTANCENAME CLASSNAME=A\n"
    "     INSTANCENAME CLASSNAME=A\n"
    "      KEYBINDING NAME=Id\n"
    "       KEYVALUE [3]\n";

TEST_F(Extraction, MovesThreeInstanceNames) {
  answer(three_names);
  CIMelement* const first = container_.result.findelement(elem::INSTANCENAME, 0);
  EXPECT_EQ(container_.ExtractInstanceNames(&container_.result), address(first));
  EXPECT_EQ(names(),
            "CIM\n"
            " INSTANCENAME CLASSNAME=A\n"
            "  KEYBINDING NAME=Id\n"
            "   KEYVALUE [1]\n"
            " INSTANCENAME CLASSNAME=A\n"
            " INSTANCENAME CLASSNAME=A\n"
            "  KEYBINDING NAME=Id\n"
            "   KEYVALUE [3]\n");
  EXPECT_EQ(tree_text(&container_.result),
            "CIM CIMVERSION=2.0\n"
            " MESSAGE ID=1001\n"
            "  SIMPLERSP\n"
            "   IMETHODRESPONSE NAME=EnumerateInstanceNames\n"
            "    IRETURNVALUE\n");
  EXPECT_EQ(entry().instanceNames->name, known_cim_elements[elem::CIM]);
  expect_traces({});
}

TEST_F(Extraction, AppendsToAListThatIsFilled) {
  answer(three_names);
  CIMelement* const first =
      reinterpret_cast<CIMelement*>(container_.ExtractInstanceNames(&container_.result));
  answer(
      "CIM\n"
      " IRETURNVALUE\n"
      "  INSTANCENAME CLASSNAME=B\n");
  CIMelement* const second = container_.result.next->next;
  EXPECT_EQ(container_.ExtractInstanceNames(&container_.result), address(second));
  EXPECT_EQ(entry().instanceNames->findelement(elem::INSTANCENAME, 0), first);
  EXPECT_EQ(entry().instanceNames->findelement(elem::INSTANCENAME, 3), second);
  EXPECT_EQ(second->parent, entry().instanceNames);
}

TEST_F(Extraction, MovesInstances) {
  answer(
      "CIM\n"
      " IRETURNVALUE\n"
      "  INSTANCE CLASSNAME=A\n"
      "   PROPERTY NAME=p\n"
      "    VALUE [1]\n"
      "  INSTANCE CLASSNAME=A\n");
  CIMelement* const first = container_.result.findelement(elem::INSTANCE, 0);
  EXPECT_EQ(container_.ExtractInstance(&container_.result), address(first));
  EXPECT_EQ(instances(),
            "CIM\n"
            " INSTANCE CLASSNAME=A\n"
            "  PROPERTY NAME=p\n"
            "   VALUE [1]\n"
            " INSTANCE CLASSNAME=A\n");
  EXPECT_EQ(entry().instanceNames, nullptr);
  expect_traces({});
}

TEST_F(Extraction, StopsBeforeAnElementOfAnotherKind) {
  answer(
      "CIM\n"
      " IRETURNVALUE\n"
      "  INSTANCENAME CLASSNAME=A\n"
      "  INSTANCE\n"
      "  INSTANCENAME CLASSNAME=B\n");
  container_.ExtractInstanceNames(&container_.result);
  EXPECT_EQ(names(), "CIM\n INSTANCENAME CLASSNAME=A\n");
  EXPECT_EQ(tree_text(&container_.result),
            "CIM\n"
            " IRETURNVALUE\n"
            "  INSTANCE\n"
            "  INSTANCENAME CLASSNAME=B\n");
}

TEST_F(Extraction, TakesTheFirstOfItsKindWhereverItStands) {
  answer(
      "CIM\n"
      " VALUE.NAMEDINSTANCE\n"
      "  INSTANCENAME CLASSNAME=A\n"
      "  INSTANCE CLASSNAME=A\n");
  EXPECT_NE(container_.ExtractInstance(&container_.result), 0);
  EXPECT_EQ(instances(), "CIM\n INSTANCE CLASSNAME=A\n");
}

TEST_F(Extraction, StartsAtTheElementThatTheCallerGives) {
  answer(three_names);
  CIMelement* const second = container_.result.findelement(elem::INSTANCENAME, 1);
  EXPECT_EQ(container_.ExtractInstanceNames(second), address(second));
  EXPECT_EQ(names(),
            "CIM\n"
            " INSTANCENAME CLASSNAME=A\n"
            " INSTANCENAME CLASSNAME=A\n"
            "  KEYBINDING NAME=Id\n"
            "   KEYVALUE [3]\n");
  EXPECT_NE(container_.result.findelement(elem::INSTANCENAME, 0), nullptr);
  EXPECT_EQ(container_.result.findelement(elem::INSTANCENAME, 1), nullptr);
}

TEST_F(Extraction, TakesATreeWithoutParent) {
  auto* const name = new CIMelement;
  build_tree(*name,
             "INSTANCENAME CLASSNAME=A\n"
             " KEYBINDING NAME=Id\n");
  EXPECT_EQ(container_.ExtractInstanceNames(name), address(name));
  EXPECT_EQ(names(), "CIM\n INSTANCENAME CLASSNAME=A\n  KEYBINDING NAME=Id\n");
}

TEST_F(Extraction, KeepsTheOrderOfElementsThatAreInTheListAlready) {
  answer(three_names);
  container_.ExtractInstanceNames(&container_.result);
  const std::string before = names();
  CIMelement* const second = entry().instanceNames->findelement(elem::INSTANCENAME, 1);
  EXPECT_EQ(container_.ExtractInstanceNames(second), address(second));
  EXPECT_EQ(names(), before);
  EXPECT_EQ(container_.ExtractInstanceNames(entry().instanceNames),
            address(entry().instanceNames->next));
  EXPECT_EQ(names(), before);
}

TEST_F(Extraction, AnElementInTheListGoesBehindThoseOfOtherKinds) {
  entry().instanceNames = new CIMelement;
  build_tree(*entry().instanceNames,
             "CIM\n INSTANCENAME CLASSNAME=A\n INSTANCENAME CLASSNAME=B\n VALUE [1]\n");
  CIMelement* const first = entry().instanceNames->next;
  EXPECT_EQ(container_.ExtractInstanceNames(first), address(first));
  EXPECT_EQ(names(), "CIM\n VALUE [1]\n INSTANCENAME CLASSNAME=A\n INSTANCENAME CLASSNAME=B\n");
}

TEST_F(Extraction, AClassTemplateStaysWhatItIs) {
  answer("CIM\n CLASS NAME=A\n  PROPERTY NAME=p\n");
  ASSERT_EQ(container_.ExtractClassDefinition(), 0);
  EXPECT_EQ(container_.ExtractInstance(entry().instances), address(entry().instances));
  EXPECT_EQ(entry().instances->parent, nullptr);
  EXPECT_EQ(instances(), "INSTANCE CLASSNAME=A\n PROPERTY NAME=p\n");
  expect_traces({});
}

TEST_F(Extraction, MovesTheLastElementOfTheListToItsEnd) {
  answer("CIM\n INSTANCENAME CLASSNAME=A\n");
  container_.ExtractInstanceNames(&container_.result);
  CIMelement* const only = entry().instanceNames->next;
  EXPECT_EQ(container_.ExtractInstanceNames(only), address(only));
  EXPECT_EQ(names(), "CIM\n INSTANCENAME CLASSNAME=A\n");
}

TEST_F(Extraction, TellsWhenThereIsNoInstanceName) {
  answer("CIM\n IRETURNVALUE\n");
  EXPECT_EQ(container_.ExtractInstanceNames(&container_.result), 0);
  EXPECT_EQ(container_.ExtractInstanceNames(container_.result.next), 0);
  EXPECT_EQ(container_.ExtractInstanceNames(nullptr), 0);
  EXPECT_EQ(entry().instanceNames, nullptr);
  const std::string line = "[myhost] ExtractInstanceNames() missing INSTANCENAME-subelement";
  expect_traces({line, line, line});
  EXPECT_EQ(container_.cimStatus, 0);
}

TEST_F(Extraction, TellsWhenThereIsNoInstance) {
  answer("CIM\n INSTANCENAME\n");
  EXPECT_EQ(container_.ExtractInstance(&container_.result), 0);
  EXPECT_EQ(container_.ExtractInstance(container_.result.next), 0);
  EXPECT_EQ(container_.ExtractInstance(nullptr), 0);
  const std::string line = "[myhost] ExtractInstance() missing INSTANCE-subelement";
  expect_traces({line, line, line});
}

TEST_F(Extraction, LeavesTheListAsItWasOnFailure) {
  answer(three_names);
  container_.ExtractInstanceNames(&container_.result);
  const std::string before = names();
  EXPECT_EQ(container_.ExtractInstanceNames(&container_.result), 0);
  EXPECT_EQ(names(), before);
}

TEST_F(Extraction, NeedsACurrentClass) {
  container_.currentClass = nullptr;
  EXPECT_EQ(container_.ExtractInstanceNames(&container_.result), 0);
  EXPECT_EQ(container_.ExtractInstance(&container_.result), 0);
  EXPECT_EQ(container_.ExtractNamedInstances(), 0);
  EXPECT_EQ(container_.ExtractClassDefinition(), 1001);
  expect_traces({"[myhost] ExtractInstanceNames() this or pcls = NULL",
                 "[myhost] ExtractInstance() this or pcls = NULL",
                 "[myhost] ExtractNamedInstances() this or pcls = NULL",
                 "[myhost] ExtractClassDefinition() this or pcls = NULL"});
}

TEST_F(Extraction, NeedsAContext) {
  CIMcontainer* volatile nobody = nullptr;
  CIMcontainer* const context = nobody;
  EXPECT_EQ(context->ExtractInstanceNames(nullptr), 0);
  EXPECT_EQ(context->ExtractInstance(nullptr), 0);
  EXPECT_EQ(context->ExtractNamedInstances(), 0);
  EXPECT_EQ(context->ExtractClassDefinition(), 1001);
  expect_traces({"[] ExtractInstanceNames() this or pcls = NULL",
                 "[] ExtractInstance() this or pcls = NULL",
                 "[] ExtractNamedInstances() this or pcls = NULL",
                 "[] ExtractClassDefinition() this or pcls = NULL"});
}

// The end of a subtree is looked for two levels up only, so the last name of an answer takes along
// what follows further up.
TEST_F(Extraction, TheLastElementTakesAlongWhatFollowsThreeLevelsUp) {
  answer(
      "CIM\n"
      " SIMPLERSP\n"
      "  IMETHODRESPONSE\n"
      "   IRETURNVALUE\n"
      "    INSTANCENAME CLASSNAME=A\n"
      "  ERROR\n");
  EXPECT_NE(container_.ExtractInstanceNames(&container_.result), 0);
  EXPECT_EQ(names(), "CIM\n INSTANCENAME CLASSNAME=A\n  ERROR\n");
}

TEST_F(Extraction, ResultsDoNotReferToTheAnswer) {
  answer(
      "CIM\n"
      " SIMPLERSP\n"
      "  IMETHODRESPONSE\n"
      "   IRETURNVALUE\n"
      "    INSTANCENAME CLASSNAME=A\n"
      "     KEYBINDING\n"
      "      KEYVALUE\n"
      "  ERROR\n"
      "   VALUE\n"
      "  ERROR\n"
      " MESSAGE\n");
  const std::string expected =
      "CIM\n"
      " INSTANCENAME CLASSNAME=A\n"
      "  KEYBINDING\n"
      "   KEYVALUE\n"
      "  ERROR\n"
      "   VALUE\n"
      "  ERROR\n"
      "  MESSAGE\n";
  container_.ExtractInstanceNames(&container_.result);
  EXPECT_EQ(names(), expected);
  container_.cleanXMLbuffer();
  const CIMclass copy = container_.classes;
  EXPECT_EQ(tree_text(copy.instanceNames), expected);
}

TEST_F(Extraction, MovesManyElements) {
  constexpr int count = 100000;
  std::string text = "CIM\n IRETURNVALUE\n";
  for (int i = 0; i < count; ++i)
    text +=
        "  VALUE.NAMEDINSTANCE\n"
        "   INSTANCENAME\n"
        "    KEYBINDING\n"
        "   INSTANCE\n";
  answer(text);
  EXPECT_NE(container_.ExtractNamedInstances(), 0);
  int moved = 0;
  for (const CIMelement* node = entry().instances->next; node != nullptr; node = node->next) {
    EXPECT_EQ(node->parent, entry().instances);
    ++moved;
  }
  EXPECT_EQ(moved, count);
  EXPECT_EQ(entry().instanceNames->findelement(elem::INSTANCENAME, count), nullptr);
  EXPECT_NE(entry().instanceNames->findelement(elem::INSTANCENAME, count - 1), nullptr);
}

TEST_F(Extraction, MovesManyInstanceNames) {
  constexpr int count = 100000;
  std::string text = "CIM\n IRETURNVALUE\n";
  for (int i = 0; i < count; ++i) text += "  INSTANCENAME\n";
  answer(text);
  EXPECT_NE(container_.ExtractInstanceNames(&container_.result), 0);
  EXPECT_NE(entry().instanceNames->findelement(elem::INSTANCENAME, count - 1), nullptr);
}

// With n * n steps this would take minutes.
TEST_F(Extraction, MovesManyInstanceNamesWithinTheirList) {
  constexpr int count = 200000;
  std::string text = "CIM\n";
  for (int i = 0; i < count; ++i) text += " INSTANCENAME\n";
  entry().instanceNames = new CIMelement;
  build_tree(*entry().instanceNames, text);
  CIMelement* const first = entry().instanceNames->next;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(container_.ExtractInstanceNames(entry().instanceNames), address(first));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
  EXPECT_EQ(names(), text);
}

}  // namespace
