#include <gtest/gtest.h>

#include <string>

#include "CIMoperations/extraction_test.h"

namespace {

using namespace zuCIM;

class NamedExtraction : public ExtractionTest {};

constexpr const char* two_pairs =
    "CIM\n"
    " MESSAGE\n"
    "  SIMPLERSP\n"
    "   IMETHODRESPONSE\n"
    "    IRETURNVALUE\n"
    "     VALUE.NAMEDINSTANCE\n"
    "      INSTANCENAME CLASSNAME=A\n"
    "       KEYBINDING NAME=Id\n"
    "        KEYVALUE [1]\n"
    "      INSTANCE CLASSNAME=A\n"
    "       PROPERTY NAME=Id\n"
    "        VALUE [1]\n"
    "     VALUE.NAMEDINSTANCE\n"
    "      INSTANCENAME CLASSNAME=B\n"
    "      INSTANCE CLASSNAME=B\n";

TEST_F(NamedExtraction, MovesNamedInstancesIntoListsThatRunInStep) {
  answer(two_pairs);
  CIMelement* const first = container_.result.findelement(elem::INSTANCENAME, 0);
  EXPECT_EQ(container_.ExtractNamedInstances(), address(first));
  EXPECT_EQ(names(),
            "CIM\n"
            " INSTANCENAME CLASSNAME=A\n"
            "  KEYBINDING NAME=Id\n"
            "   KEYVALUE [1]\n"
            " INSTANCENAME CLASSNAME=B\n");
  EXPECT_EQ(instances(),
            "CIM\n"
            " INSTANCE CLASSNAME=A\n"
            "  PROPERTY NAME=Id\n"
            "   VALUE [1]\n"
            " INSTANCE CLASSNAME=B\n");
  EXPECT_EQ(tree_text(&container_.result),
            "CIM\n"
            " MESSAGE\n"
            "  SIMPLERSP\n"
            "   IMETHODRESPONSE\n"
            "    IRETURNVALUE\n"
            "     VALUE.NAMEDINSTANCE\n"
            "     VALUE.NAMEDINSTANCE\n");
  expect_traces({});
}

TEST_F(NamedExtraction, NamedInstancesReplaceThoseBefore) {
  answer(two_pairs);
  container_.ExtractNamedInstances();
  answer(
      "CIM\n"
      " VALUE.NAMEDINSTANCE\n"
      "  INSTANCENAME CLASSNAME=C\n"
      "  INSTANCE CLASSNAME=C\n");
  CIMelement* const name = container_.result.findelement(elem::INSTANCENAME, 0);
  EXPECT_EQ(container_.ExtractNamedInstances(), address(name));
  EXPECT_EQ(names(), "CIM\n INSTANCENAME CLASSNAME=C\n");
  EXPECT_EQ(instances(), "CIM\n INSTANCE CLASSNAME=C\n");
}

TEST_F(NamedExtraction, NoNamedInstancesLeaveBothListsEmpty) {
  answer(two_pairs);
  container_.ExtractNamedInstances();
  answer("CIM\n IRETURNVALUE\n");
  EXPECT_EQ(container_.ExtractNamedInstances(), 0);
  EXPECT_EQ(entry().instanceNames, nullptr);
  EXPECT_EQ(entry().instances, nullptr);
  EXPECT_EQ(container_.cimStatus, 0);
  expect_traces({});
}

struct FaultCase {
  const char* second_pair;
  const char* fault;
};

TEST_F(NamedExtraction, AMalformedNamedInstanceEmptiesBothLists) {
  const FaultCase cases[] = {
      {"  VALUE.NAMEDINSTANCE\n", "missing INSTANCENAME-subelement"},
      {"  VALUE.NAMEDINSTANCE\n   INSTANCE\n", "missing INSTANCENAME-subelement"},
      {"  VALUE.NAMEDINSTANCE\n   INSTANCENAME\n", "missing INSTANCE-subelement"},
      {"  VALUE.NAMEDINSTANCE\n   INSTANCENAME\n    KEYBINDING\n   VALUE\n",
       "missing INSTANCE-subelement"},
      {"  VALUE.NAMEDINSTANCE\n   INSTANCENAME\n   INSTANCE\n   VALUE\n",
       "missing next VALUE_NAMEDINSTANCE-element"},
      {"  VALUE.NAMEDINSTANCE\n   INSTANCENAME\n   INSTANCE\n  INSTANCE\n",
       "missing next VALUE_NAMEDINSTANCE-element"},
  };
  for (const FaultCase& each : cases) {
    answer(std::string("CIM\n"
                       " IRETURNVALUE\n"
                       "  VALUE.NAMEDINSTANCE\n"
                       "   INSTANCENAME\n"
                       "   INSTANCE\n") +
           each.second_pair);
    EXPECT_EQ(container_.ExtractNamedInstances(), 0);
    EXPECT_EQ(entry().instanceNames, nullptr);
    EXPECT_EQ(entry().instances, nullptr);
    expect_traces({std::string("[myhost] ExtractNamedInstances() ") + each.fault,
                   "[myhost] ExtractNamedInstances() wrong XML data"});
    EXPECT_EQ(container_.cimStatus, 0);
    recorder_.clear();
  }
}

}  // namespace
