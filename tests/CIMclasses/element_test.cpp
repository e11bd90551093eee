#include "zuCIM/element.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <string>

#include "CIMclasses/tree.h"

namespace zuCIM {
namespace {

using testing::build;
using ::testing::ElementsAre;
using testing::errors;
using ::testing::IsEmpty;
using testing::nobody;
using testing::nodes_of;
using testing::words_of;

TEST(CimElement, ANewNodeIsEmpty) {
  const CIMelement node;
  EXPECT_EQ(node.name, nullptr);
  EXPECT_EQ(node.parent, nullptr);
  EXPECT_EQ(node.value, nullptr);
  EXPECT_EQ(node.attributes, nullptr);
  EXPECT_EQ(node.next, nullptr);
}

TEST(CimElementBuilding, AFreshRootIsFilledInPlace) {
  CIMelement root;
  EXPECT_EQ(root.makeNextElement(), &root);
  EXPECT_EQ(root.parent, nullptr);
  EXPECT_EQ(root.next, nullptr);
}

TEST(CimElementBuilding, AFilledRootGetsAChild) {
  CIMelement root;
  root.name = known_cim_elements[elem::CIM];
  CIMelement* const child = root.makeNextElement();
  ASSERT_NE(child, nullptr);
  EXPECT_NE(child, &root);
  EXPECT_EQ(root.next, child);
  EXPECT_EQ(child->parent, &root);
  EXPECT_EQ(child->name, nullptr);
  EXPECT_EQ(child->value, nullptr);
  EXPECT_EQ(child->attributes, nullptr);
  EXPECT_EQ(child->next, nullptr);
}

TEST(CimElementBuilding, AChildIsAppendedAtTheEndOfTheChain) {
  const std::unique_ptr<CIMelement> root(
      build({{0, elem::CIM}, {1, elem::CLASS}, {2, elem::VALUE}}));
  const auto nodes = nodes_of(root.get());
  CIMelement* const child = nodes[1]->makeNextElement();
  EXPECT_EQ(nodes[2]->next, child);
  EXPECT_EQ(child->parent, nodes[1]);
}

TEST(CimElementBuilding, AnEmptyNodeThatHasANextOneCannotBeFilled) {
  const TraceRecorder trace;
  CIMelement root;
  root.next = new CIMelement;
  EXPECT_EQ(root.makeNextElement(), nullptr);
  EXPECT_THAT(errors(trace),
              ElementsAre("makeNextElement: Exception raised: this->next is already set!"));
  EXPECT_EQ(nodes_of(&root).size(), 2U);
}

TEST(CimElementAttributes, ARecordIsTheIdPlusOneAndTheText) {
  CIMelement node;
  char text[] = "CIM_Fan";
  EXPECT_EQ(node.attr_put(attr::CLASSNAME, text), 0);
  text[0] = 'x';
  ASSERT_NE(node.attributes, nullptr);
  EXPECT_EQ(node.attributes->elementSize, -2);
  EXPECT_EQ(node.attributes->argc, 1U);
  EXPECT_EQ(node.attributes->maxargc, 16U);
  EXPECT_STREQ(static_cast<char*>(node.attributes->argv[0]),
               "\x08"
               "CIM_Fan");
}

TEST(CimElementAttributes, EveryAttributeIdCanBeStored) {
  CIMelement node;
  for (int id = 0; id < attr::COUNT; ++id) ASSERT_EQ(node.attr_put(id, "v"), 0);
  for (int id = 0; id < attr::COUNT; ++id)
    EXPECT_EQ(node.attr_get(static_cast<unsigned>(id), nullptr), id);
  EXPECT_EQ(*static_cast<unsigned char*>(node.attributes->argv[33]), 34);
}

TEST(CimElementAttributes, IdsOutsideTheTableAreRefused) {
  for (const int id : {-1, 34, 255, 256, INT_MAX, INT_MIN}) {
    const TraceRecorder trace;
    CIMelement node;
    EXPECT_EQ(node.attr_put(id, "v"), 1001);
    EXPECT_EQ(node.attributes, nullptr);
    EXPECT_THAT(errors(trace), ElementsAre("attr_put: Exception raised: unknown attribute id!"));
  }
}

TEST(CimElementAttributes, ANullTextIsRefusedAndLeavesAnEmptyArray) {
  const TraceRecorder trace;
  CIMelement node;
  EXPECT_EQ(node.attr_put(attr::NAME, nullptr), 1001);
  EXPECT_THAT(errors(trace), ElementsAre("putargv: Exception raised: NULL pointer!!",
                                         "attr_put: Exception raised: cannot alloc memory!"));
  ASSERT_NE(node.attributes, nullptr);
  EXPECT_EQ(node.attributes->argc, 0U);
  EXPECT_EQ(node.attr_put(attr::NAME, ""), 0);
}

TEST(CimElementAttributes, AttributesAreReadInTheOrderOfInsertion) {
  CIMelement node;
  node.attr_put(attr::TYPE, "string");
  node.attr_put(attr::NAME, "Id");
  node.attr_put(attr::TYPE, "uint8");
  char* text = nullptr;
  EXPECT_EQ(node.attr_get(0, &text), attr::TYPE);
  EXPECT_STREQ(text, "string");
  EXPECT_EQ(node.attr_get(1, &text), attr::NAME);
  EXPECT_STREQ(text, "Id");
  EXPECT_EQ(node.attr_get(2, &text), attr::TYPE);
  EXPECT_STREQ(text, "uint8");
}

TEST(CimElementAttributes, TheTextThatIsReadLiesInsideTheRecord) {
  CIMelement node;
  node.attr_put(attr::NAME, "Id");
  char* text = nullptr;
  node.attr_get(0, &text);
  EXPECT_EQ(text, static_cast<char*>(node.attributes->argv[0]) + 1);
  EXPECT_EQ(node.attr_find(attr::NAME), text);
}

TEST(CimElementAttributes, AMissingAttributeReadsAsUnknownAndAQuestionMark) {
  CIMelement with_attribute;
  with_attribute.attr_put(attr::NAME, "Id");
  CIMelement without;
  CIMelement with_empty_array;
  const TraceRecorder silent(0);
  with_empty_array.attr_put(attr::NAME, nullptr);
  const struct {
    CIMelement* node;
    unsigned index;
  } cases[] = {{&with_attribute, 1},   {&with_attribute, 15}, {&with_attribute, UINT_MAX},
               {&with_empty_array, 0}, {&without, 0},         {nobody<CIMelement>(), 0}};
  for (const auto& each : cases) {
    char* text = nullptr;
    EXPECT_EQ(each.node->attr_get(each.index, &text), 33);
    EXPECT_STREQ(text, "?");
    EXPECT_EQ(each.node->attr_get(each.index, nullptr), 33);
  }
}

TEST(CimElementAttributes, FindingGivesTheFirstAttributeWithTheId) {
  CIMelement node;
  EXPECT_EQ(node.attr_find(attr::TYPE), nullptr);
  node.attr_put(attr::NAME, "Id");
  node.attr_put(attr::TYPE, "string");
  node.attr_put(attr::TYPE, "uint8");
  EXPECT_STREQ(node.attr_find(attr::TYPE), "string");
  EXPECT_EQ(node.attr_find(attr::CODE), nullptr);
  EXPECT_EQ(node.attr_find(-1), nullptr);
  EXPECT_EQ(node.attr_find(1000), nullptr);
}

TEST(CimElementAttributes, AnExactFindComparesTheFirstAttributeIgnoringCase) {
  CIMelement node;
  node.attr_put(attr::NAME, "DeviceID");
  node.attr_put(attr::NAME, "Second");
  node.attr_put(attr::TYPE, "");
  const struct {
    int id;
    const char* text;
    int result;
  } cases[] = {
      {attr::NAME, "DeviceID", 0},   {attr::NAME, "deviceid", 0},     {attr::NAME, "DEVICEID", 0},
      {attr::NAME, "DeviceI", 1001}, {attr::NAME, "DeviceIDs", 1001}, {attr::NAME, "Second", 1001},
      {attr::NAME, "", 1001},        {attr::NAME, nullptr, 1001},     {attr::TYPE, "", 1001},
      {attr::TYPE, "string", 1001},  {attr::CODE, "DeviceID", 1001},
  };
  for (const auto& each : cases) EXPECT_EQ(node.attr_find_exact(each.id, each.text), each.result);
}

TEST(CimElementAttributes, OnlyLettersHaveACase) {
  CIMelement node;
  node.attr_put(attr::NAME, "a[Z\xC4");
  EXPECT_EQ(node.attr_find_exact(attr::NAME, "A[z\xC4"), 0);
  EXPECT_EQ(node.attr_find_exact(attr::NAME, "a{z\xC4"), 1001);
  EXPECT_EQ(node.attr_find_exact(attr::NAME, "a[z\xE4"), 1001);
}

TEST(CimElementEmptying, AnEmptiedNodeIsAFreshRoot) {
  const std::unique_ptr<CIMelement> root(
      build({{0, elem::CIM, "n", "v"}, {1, elem::CLASS, "n", "v"}, {2, elem::VALUE}}));
  for (int times = 0; times < 2; ++times) {
    root->eclean();
    EXPECT_EQ(root->name, nullptr);
    EXPECT_EQ(root->parent, nullptr);
    EXPECT_EQ(root->value, nullptr);
    EXPECT_EQ(root->attributes, nullptr);
    EXPECT_EQ(root->next, nullptr);
  }
  EXPECT_EQ(root->makeNextElement(), root.get());
}

TEST(CimElementEmptying, EverythingAfterTheNodeIsFreedNotOnlyItsSubtree) {
  auto* const root = build({{0, elem::CIM}, {1, elem::CLASS}, {2, elem::VALUE}, {1, elem::HOST}});
  CIMelement* const middle = root->next;
  root->next = nullptr;
  middle->eclean();
  EXPECT_EQ(middle->parent, nullptr);
  EXPECT_EQ(middle->next, nullptr);
  delete middle;
  EXPECT_THAT(words_of(root), ElementsAre("CIM"));
  delete root;
}

TEST(CimElement, TheMembersOfANullNodeAnswerNothing) {
  const TraceRecorder trace;
  auto* const none = nobody<CIMelement>();
  char* text = nullptr;
  CIMelement* chain = nullptr;
  EXPECT_EQ(none->makeNextElement(), nullptr);
  EXPECT_EQ(none->attr_put(attr::NAME, "x"), 1001);
  EXPECT_EQ(none->attr_get(0, &text), 33);
  EXPECT_EQ(none->attr_find(attr::NAME), nullptr);
  EXPECT_EQ(none->attr_find_exact(attr::NAME, "x"), 1001);
  EXPECT_EQ(none->getLastElement(), nullptr);
  EXPECT_EQ(none->findelement(elem::VALUE, 0), nullptr);
  EXPECT_EQ(none->search_elem(elem::VALUE, "x"), nullptr);
  EXPECT_EQ(none->getValueOf(elem::VALUE, "x"), nullptr);
  EXPECT_EQ(none->findInstanceName("x", "y"), nullptr);
  EXPECT_EQ(none->findProperty("x"), nullptr);
  EXPECT_EQ(none->getValueOfProperty("x"), nullptr);
  EXPECT_EQ(none->deleteElement(true), nullptr);
  EXPECT_EQ(none->redirect_chain(&chain, true), nullptr);
  none->eclean();
  EXPECT_EQ(chain, nullptr);
  EXPECT_THAT(trace.texts(), IsEmpty());
}

}  // namespace
}  // namespace zuCIM
