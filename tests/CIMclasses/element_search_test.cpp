#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <vector>

#include "CIMclasses/tree.h"

namespace zuCIM {
namespace {

using testing::build;
using testing::nodes_of;

// A document with the positions of its nodes.
struct Document {
  explicit Document(std::initializer_list<testing::Node> description)
      : root(build(description)), nodes(nodes_of(root.get())) {}
  CIMelement* operator[](std::size_t i) const { return nodes[i]; }
  // The position of a node; -1 for null.
  int position(const CIMelement* node) const {
    for (std::size_t i = 0; i < nodes.size(); ++i)
      if (nodes[i] == node) return static_cast<int>(i);
    return -1;
  }

  std::unique_ptr<CIMelement> root;
  std::vector<CIMelement*> nodes;
};

Document instance_names() {
  return Document({
      {0, elem::IRETURNVALUE},               // 0
      {1, elem::INSTANCENAME, "first"},      // 1
      {2, elem::KEYBINDING, "Name"},         // 2
      {3, elem::KEYVALUE, nullptr, "one"},   // 3
      {2, elem::KEYBINDING, "System"},       // 4
      {3, elem::VALUE, nullptr, "alpha"},    // 5
      {1, elem::INSTANCENAME, "second"},     // 6
      {2, elem::KEYBINDING, "Name"},         // 7
      {3, elem::VALUE_REFERENCE},            // 8
      {4, elem::INSTANCENAME, "inner"},      // 9
      {5, elem::KEYBINDING, "Name"},         // 10
      {6, elem::KEYVALUE, nullptr, "two"},   // 11
      {2, elem::KEYBINDING, "System"},       // 12
      {3, elem::KEYVALUE, nullptr, "beta"},  // 13
      {1, elem::INSTANCENAME, "third"},      // 14
      {2, elem::KEYBINDING, "Name"},         // 15
      {3, elem::KEYVALUE, nullptr, "two"},   // 16
      {2, elem::KEYBINDING, "Empty"},        // 17
      {3, elem::KEYVALUE},                   // 18
  });
}

TEST(CimElementSearch, TheLastElementOfASubtree) {
  const Document document = instance_names();
  const struct {
    std::size_t top;
    int last;
  } cases[] = {
      {0, 18},   // the root's subtree is the whole chain
      {1, 5},    // a sibling of the top ends it
      {2, 3},    // likewise
      {3, 3},    // a leaf that its parent's sibling follows
      {4, 5},    // a sibling of the parent ends it
      {6, 13},   // a subtree of several levels
      {14, 18},  // the chain's end
      {18, 18},  // the last node
  };
  for (const auto& each : cases)
    EXPECT_EQ(document.position(document[each.top]->getLastElement()), each.last) << each.top;
}

TEST(CimElementSearch, ASubtreeFollowedByANodeThreeLevelsUpRunsOn) {
  const Document document = instance_names();
  // The nodes after these are children of neither their parent nor their grandparent.
  EXPECT_EQ(document.position(document[5]->getLastElement()), 18);
  EXPECT_EQ(document.position(document[11]->getLastElement()), 18);
  // This one runs on to the next node that is a child of its grandparent.
  document[14]->parent = document[10]->parent;
  EXPECT_EQ(document.position(document[11]->getLastElement()), 13);
}

TEST(CimElementSearch, ARootIsFollowedByTheNextRoot) {
  CIMelement first;
  first.name = known_cim_elements[elem::INSTANCE];
  first.makeNextElement();
  CIMelement* const child = first.next;
  child->next = new CIMelement;
  EXPECT_EQ(first.getLastElement(), child);
  EXPECT_EQ(child->getLastElement(), child);
}

TEST(CimElementSearch, ElementsOfAKindAreCountedOutsideEarlierMatches) {
  const Document document = instance_names();
  const int expected[] = {1, 6, 14, -1, -1};
  for (int n = 0; n < 5; ++n)
    EXPECT_EQ(document.position(document[0]->findelement(17, n)), expected[n]) << n;
}

TEST(CimElementSearch, FindingStartsWithTheNodeItselfAndGoesToTheChainsEnd) {
  const Document document = instance_names();
  EXPECT_EQ(document[6]->findelement(elem::INSTANCENAME, 0), document[6]);
  EXPECT_EQ(document[6]->findelement(elem::INSTANCENAME, 1), document[14]);
  EXPECT_EQ(document[7]->findelement(elem::INSTANCENAME, 0), document[9]);
  EXPECT_EQ(document[3]->findelement(elem::VALUE_REFERENCE, 0), document[8]);
}

TEST(CimElementSearch, NumbersAndKindsThatDoNotExistAreNotFound) {
  const Document document = instance_names();
  for (const int n : {-1, INT_MIN, INT_MAX})
    EXPECT_EQ(document[0]->findelement(elem::INSTANCENAME, n), nullptr);
  CIMelement empty;
  for (const int kind : {-1, 71, INT_MAX, INT_MIN}) {
    EXPECT_EQ(document[0]->findelement(kind, 0), nullptr);
    EXPECT_EQ(document[0]->search_elem(kind, "Name"), nullptr);
    EXPECT_EQ(document[0]->getValueOf(kind, "Name"), nullptr);
    EXPECT_EQ(empty.findelement(kind, 0), nullptr);
  }
}

TEST(CimElementSearch, KindsAreComparedByIdentityNotByText) {
  const char copied_name[] = "VALUE";
  CIMelement node;
  node.name = copied_name;
  EXPECT_EQ(node.findelement(elem::VALUE, 0), nullptr);
  node.name = known_cim_elements[elem::VALUE];
  EXPECT_EQ(node.findelement(elem::VALUE, 0), &node);
}

TEST(CimElementSearch, SearchingStaysInTheSubtreeAndIgnoresCase) {
  const Document document = instance_names();
  EXPECT_EQ(document[1]->search_elem(elem::KEYBINDING, "system"), document[4]);
  EXPECT_EQ(document[1]->search_elem(elem::KEYBINDING, "Empty"), nullptr);
  EXPECT_EQ(document[0]->search_elem(elem::KEYBINDING, "EMPTY"), document[17]);
  EXPECT_EQ(document[4]->search_elem(elem::KEYBINDING, "System"), document[4]);
  EXPECT_EQ(document[4]->search_elem(elem::KEYBINDING, "Name"), nullptr);
  EXPECT_EQ(document[1]->search_elem(elem::PROPERTY, "Name"), nullptr);
  EXPECT_EQ(document[0]->search_elem(elem::KEYBINDING, ""), nullptr);
  EXPECT_EQ(document[0]->search_elem(elem::KEYBINDING, nullptr), nullptr);
}

TEST(CimElementSearch, SearchingLooksAtTheLastElementOfTheSubtreeToo) {
  const Document document(
      {{0, elem::INSTANCE}, {1, elem::PROPERTY, "a"}, {1, elem::PROPERTY, "b"}});
  EXPECT_EQ(document[0]->search_elem(elem::PROPERTY, "b"), document[2]);
}

TEST(CimElementSearch, AKeyHasTheTextOfItsKeyvalueOrValue) {
  const Document document = instance_names();
  EXPECT_STREQ(document[1]->getValueOf(21, "Name"), "one");
  EXPECT_STREQ(document[1]->getValueOf(21, "SYSTEM"), "alpha");
  EXPECT_EQ(document[6]->getValueOf(21, "Name"), nullptr);
  EXPECT_EQ(document[14]->getValueOf(21, "Empty"), nullptr);
  EXPECT_EQ(document[1]->getValueOf(21, "Missing"), nullptr);
}

Document instance() {
  return Document({
      {0, elem::INSTANCE},                        // 0
      {1, elem::PROPERTY, "Id"},                  // 1
      {2, elem::VALUE, nullptr, "7"},             // 2
      {1, elem::PROPERTY, "Qualified"},           // 3
      {2, elem::QUALIFIER, "Key"},                // 4
      {3, elem::VALUE, nullptr, "true"},          // 5
      {1, elem::PROPERTY, "NoValue"},             // 6
      {1, elem::PROPERTY_ARRAY, "List"},          // 7
      {2, elem::VALUE_ARRAY},                     // 8
      {3, elem::VALUE, nullptr, "1"},             // 9
      {1, elem::PROPERTY_REFERENCE, "Ref"},       // 10
      {2, elem::VALUE_REFERENCE, nullptr, "no"},  // 11
      {1, elem::PROPERTY, "OddKey"},              // 12
      {2, elem::KEYVALUE, nullptr, "no"},         // 13
      {1, elem::PROPERTY, "Last"},                // 14
  });
}

TEST(CimElementSearch, AnElementWhoseFirstChildIsNoValueHasNoValue) {
  const Document document = instance();
  EXPECT_STREQ(document[0]->getValueOf(42, "id"), "7");
  EXPECT_STREQ(document[0]->getValueOf(elem::QUALIFIER, "Key"), "true");
  for (const char* const name : {"Qualified", "NoValue", "OddKey", "Last", "List", "Missing"})
    EXPECT_EQ(document[0]->getValueOf(42, name), nullptr) << name;
  EXPECT_EQ(document[0]->getValueOf(elem::PROPERTY_ARRAY, "List"), nullptr);
}

TEST(CimElementSearch, APropertyOfEachFormIsFoundByItsName) {
  const Document document = instance();
  EXPECT_EQ(document[0]->findProperty("ID"), document[1]);
  EXPECT_EQ(document[0]->findProperty("list"), document[7]);
  EXPECT_EQ(document[0]->findProperty("Ref"), document[10]);
  EXPECT_EQ(document[0]->findProperty("Last"), document[14]);
  EXPECT_EQ(document[0]->findProperty("Key"), nullptr);
  EXPECT_EQ(document[0]->findProperty(""), nullptr);
  EXPECT_EQ(document[0]->findProperty(nullptr), nullptr);
}

TEST(CimElementSearch, APropertyIsFoundAfterTheEndOfTheSubtree) {
  const Document document = instance();
  EXPECT_EQ(document[1]->getLastElement(), document[2]);
  EXPECT_EQ(document[1]->findProperty("Last"), document[14]);
  EXPECT_EQ(document[1]->findProperty("Id"), document[1]);
  EXPECT_EQ(document[2]->findProperty("Id"), nullptr);
}

TEST(CimElementSearch, OnlyAPropertyWithAValueHasAValue) {
  const Document document = instance();
  EXPECT_STREQ(document[0]->getValueOfProperty("id"), "7");
  for (const char* const name :
       {"Qualified", "NoValue", "List", "Ref", "OddKey", "Last", "Missing", ""})
    EXPECT_EQ(document[0]->getValueOfProperty(name), nullptr) << name;
  EXPECT_EQ(document[0]->getValueOfProperty(nullptr), nullptr);
}

TEST(CimElementSearch, AnInstanceNameIsFoundByAKeyAndItsValue) {
  const Document document = instance_names();
  const struct {
    std::size_t start;
    const char* key;
    const char* value;
    int found;
  } cases[] = {
      {0, "Name", "one", 1},    {0, "NAME", "ONE", 1},  {0, "System", "beta", 6},
      {0, "Name", "two", 14},   {6, "Name", "one", -1}, {0, "Empty", "", -1},
      {0, "Name", "three", -1}, {0, "", "one", -1},     {0, nullptr, "one", -1},
      {0, "Name", nullptr, -1}, {7, "Name", "two", 9},  {0, "Missing", "one", -1},
  };
  for (const auto& each : cases)
    EXPECT_EQ(document.position(document[each.start]->findInstanceName(each.key, each.value)),
              each.found)
        << each.start << " " << (each.key != nullptr ? each.key : "null");
}

TEST(CimElementSearch, AnEmptyKeyValueEqualsAnEmptyText) {
  const Document document(
      {{0, elem::INSTANCENAME}, {1, elem::KEYBINDING, "Name"}, {2, elem::KEYVALUE, nullptr, ""}});
  EXPECT_EQ(document[0]->findInstanceName("Name", ""), document[0]);
}

}  // namespace
}  // namespace zuCIM
