#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "CIMclasses/tree.h"

namespace zuCIM {
namespace {

using testing::build;
using ::testing::ElementsAre;
using testing::errors;
using ::testing::IsEmpty;
using testing::nobody;
using testing::nodes_of;
using testing::parents_of;
using testing::words_of;

constexpr const char* parent_not_found =
    "CIMelement::operator=: ERROR: Parent in COPY-Constuctor not found!";

std::unique_ptr<CIMelement> sample() {
  return std::unique_ptr<CIMelement>(build({
      {0, elem::IRETURNVALUE},
      {1, elem::INSTANCE, "a"},
      {2, elem::PROPERTY, "p"},
      {3, elem::VALUE, nullptr, "1"},
      {2, elem::PROPERTY, "q"},
      {1, elem::INSTANCE, "b"},
      {2, elem::PROPERTY, "r"},
      {3, elem::VALUE, nullptr, ""},
      {1, elem::INSTANCE, "c"},
  }));
}

TEST(CimElementCopy, ACopyHasTheSameKindsTextsAndParents) {
  const TraceRecorder trace;
  const auto source = sample();
  CIMelement copy;
  copy = *source;
  EXPECT_EQ(words_of(&copy), words_of(source.get()));
  EXPECT_EQ(parents_of(&copy), parents_of(source.get()));
  EXPECT_THAT(trace.texts(), IsEmpty());
}

TEST(CimElementCopy, ACopySharesTheTableRowsAndNothingElse) {
  const auto source = sample();
  CIMelement copy(*source);
  const auto originals = nodes_of(source.get());
  const auto copies = nodes_of(&copy);
  ASSERT_EQ(copies.size(), originals.size());
  for (std::size_t i = 0; i < copies.size(); ++i) {
    EXPECT_EQ(copies[i]->name, originals[i]->name);
    EXPECT_EQ(copies[i]->value == nullptr, originals[i]->value == nullptr);
    EXPECT_EQ(copies[i]->attributes == nullptr, originals[i]->attributes == nullptr);
    if (copies[i]->value != nullptr) {
      EXPECT_NE(copies[i]->value, originals[i]->value);
    }
    if (copies[i]->attributes != nullptr) {
      EXPECT_NE(copies[i]->attributes, originals[i]->attributes);
    }
  }
}

TEST(CimElementCopy, AllAttributesAreCopiedInOrder) {
  CIMelement source;
  source.name = known_cim_elements[elem::PROPERTY];
  const int ids[] = {attr::TYPE, attr::NAME, attr::EMBEDDEDOBJECT, attr::TYPE, attr::UNKNOWN};
  for (const int id : ids) source.attr_put(id, known_cim_attributes[id]);
  CIMelement copy(source);
  ASSERT_EQ(copy.attributes->argc, 5U);
  for (unsigned i = 0; i < 5; ++i) {
    char* text = nullptr;
    EXPECT_EQ(copy.attr_get(i, &text), ids[i]);
    EXPECT_STREQ(text, known_cim_attributes[ids[i]]);
  }
}

TEST(CimElementCopy, TheTargetsOldChainIsReplaced) {
  const auto source = sample();
  const std::unique_ptr<CIMelement> target(
      build({{0, elem::CIM, "old", "text"}, {1, elem::MESSAGE, "old", "text"}}));
  *target = *source;
  EXPECT_EQ(words_of(target.get()), words_of(source.get()));
  EXPECT_EQ(target->attributes, nullptr);
}

TEST(CimElementCopy, AnAssignedInnerNodeLosesItsParent) {
  const auto source = sample();
  const std::unique_ptr<CIMelement> document(build({{0, elem::CIM}, {1, elem::MESSAGE}}));
  CIMelement* const inner = document->next;
  *inner = *source;
  EXPECT_EQ(inner->parent, nullptr);
  EXPECT_EQ(inner->next->parent, inner);
  EXPECT_EQ(words_of(document.get()).size(), 10U);
}

TEST(CimElementCopy, AnEmptyNodeCopiesAsAnEmptyNode) {
  const CIMelement source;
  CIMelement copy;
  copy.name = known_cim_elements[elem::CIM];
  copy = source;
  EXPECT_THAT(words_of(&copy), ElementsAre("-"));
}

TEST(CimElementCopy, AParentIsTheNearestOneUpwardsOfItsKindAndFirstAttributeId) {
  // The last node belongs to the outer INSTANCE, but the walk up from the copy before it meets the
  // inner one first.
  const std::unique_ptr<CIMelement> source(build({{0, elem::CIM},
                                                  {1, elem::INSTANCE, "outer"},
                                                  {2, elem::INSTANCE, "inner"},
                                                  {3, elem::PROPERTY, "p"},
                                                  {2, elem::PROPERTY, "q"}}));
  EXPECT_THAT(parents_of(source.get()), ElementsAre(-1, 0, 1, 2, 1));
  CIMelement copy(*source);
  EXPECT_THAT(parents_of(&copy), ElementsAre(-1, 0, 1, 2, 2));
}

TEST(CimElementCopy, AnotherFirstAttributeIdTellsParentsOfOneKindApart) {
  const std::unique_ptr<CIMelement> source(build({{0, elem::CIM},
                                                  {1, elem::INSTANCE},
                                                  {2, elem::INSTANCE, "inner"},
                                                  {3, elem::PROPERTY, "p"},
                                                  {2, elem::PROPERTY, "q"}}));
  CIMelement copy(*source);
  EXPECT_THAT(parents_of(&copy), ElementsAre(-1, 0, 1, 2, 1));
}

TEST(CimElementCopy, ANewestCopyOfTheRightKindIsItselfAParent) {
  const std::unique_ptr<CIMelement> source(
      build({{0, elem::CIM}, {1, elem::INSTANCE, "a"}, {1, elem::INSTANCE, "b"}}));
  source->next->next->parent = source->next;
  CIMelement copy(*source);
  EXPECT_THAT(parents_of(&copy), ElementsAre(-1, 0, 1));
}

TEST(CimElementCopy, ANodeWhoseParentIsNotCopiedStandsAloneWithATrace) {
  const TraceRecorder trace;
  const auto source = sample();
  CIMelement copy(*source->next);
  EXPECT_THAT(words_of(&copy), ElementsAre("INSTANCE(a)", "PROPERTY(p)", "VALUE=1", "PROPERTY(q)",
                                           "INSTANCE(b)", "PROPERTY(r)", "VALUE=", "INSTANCE(c)"));
  EXPECT_THAT(parents_of(&copy), ElementsAre(-1, 0, 1, 0, -1, 4, 5, -1));
  EXPECT_THAT(errors(trace), ElementsAre(parent_not_found, parent_not_found));
}

TEST(CimElementCopy, ANodeWithoutParentIsCopiedWithoutOne) {
  const TraceRecorder trace;
  const std::unique_ptr<CIMelement> source(
      build({{0, elem::INSTANCE, "a"}, {1, elem::PROPERTY, "p"}}));
  source->next->next = build({{0, elem::INSTANCE, "b"}, {1, elem::PROPERTY, "q"}});
  CIMelement copy(*source);
  EXPECT_THAT(parents_of(&copy), ElementsAre(-1, 0, -1, 2));
  EXPECT_THAT(trace.texts(), IsEmpty());
}

TEST(CimElementCopy, ANamelessNodeIsFilledAgainByTheNextOne) {
  const TraceRecorder trace;
  CIMelement source;
  source.value = strdup("lost");
  source.next = build({{0, elem::INSTANCE, "a"}, {1, elem::PROPERTY, "p"}});
  source.next->parent = &source;
  CIMelement copy(source);
  EXPECT_THAT(words_of(&copy), ElementsAre("INSTANCE(a)", "PROPERTY(p)"));
  EXPECT_THAT(parents_of(&copy), ElementsAre(-1, 0));
  EXPECT_THAT(errors(trace), ElementsAre(parent_not_found));
}

TEST(CimElementCopy, AssigningAChainToItselfChangesNothing) {
  const auto source = sample();
  const auto nodes = nodes_of(source.get());
  const CIMelement& same = *source;
  *source = same;
  EXPECT_EQ(nodes_of(source.get()), nodes);
}

TEST(CimElementCopy, APartOfAChainCanReplaceTheWhole) {
  const auto document = sample();
  *document = *document->next->next;
  EXPECT_EQ(words_of(document.get()).front(), "PROPERTY(p)");
  EXPECT_EQ(words_of(document.get()).size(), 7U);
}

TEST(CimElementCopy, AWholeChainCanReplaceAPartOfItself) {
  const auto document = sample();
  const auto words = words_of(document.get());
  *document->next = *document;
  EXPECT_EQ(words_of(document->next), words);
}

TEST(CimElementCopy, NoSourceEmptiesTheTarget) {
  const auto target = sample();
  *target = *nobody<const CIMelement>();
  EXPECT_THAT(words_of(target.get()), ElementsAre("-"));
  const auto source = sample();
  *nobody<CIMelement>() = *source;
  EXPECT_EQ(words_of(source.get()).size(), 9U);
}

// A chain of a million nodes below a root: all nested, or all children of the root.
std::unique_ptr<CIMelement> long_chain(bool nested) {
  auto root = std::make_unique<CIMelement>();
  root->name = known_cim_elements[elem::CIM];
  CIMelement* last = root.get();
  for (int i = 0; i < 1'000'000; ++i) {
    auto* const node = new CIMelement;
    node->name = known_cim_elements[elem::VALUE];
    node->parent = nested ? last : root.get();
    last->next = node;
    last = node;
  }
  return root;
}

class LongChain : public ::testing::TestWithParam<bool> {};

TEST_P(LongChain, IsCopiedSearchedMovedAndFreedWithoutRecursion) {
  const auto source = long_chain(GetParam());
  CIMelement copy(*source);
  std::size_t count = 0;
  const CIMelement* original = source.get();
  for (const CIMelement* node = &copy; node != nullptr;
       node = node->next, original = original->next)
    ++count;
  EXPECT_EQ(count, 1'000'001U);
  EXPECT_EQ(original, nullptr);
  EXPECT_EQ(copy.next->parent, &copy);
  EXPECT_EQ(copy.next->next->parent, GetParam() ? copy.next : &copy);
  EXPECT_EQ(copy.findelement(elem::VALUE, GetParam() ? 1 : 1'000'000), nullptr);
  CIMelement* chain = nullptr;
  EXPECT_EQ(copy.next->redirect_chain(&chain, true) == nullptr, GetParam());
  EXPECT_EQ(chain->deleteElement(true), nullptr);
}

INSTANTIATE_TEST_SUITE_P(CimElementCopy, LongChain, ::testing::Bool(),
                         [](const auto& nested) { return nested.param ? "Nested" : "Flat"; });

}  // namespace
}  // namespace zuCIM
