#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "CIMclasses/tree.h"

namespace zuCIM {
namespace {

using testing::build;
using ::testing::ElementsAre;
using testing::errors;
using ::testing::IsEmpty;
using testing::nodes_of;
using testing::parents_of;
using testing::words_of;

class CimElementMoves : public ::testing::Test {
 protected:
  void SetUp() override {
    root_.reset(build({
        {0, elem::IRETURNVALUE},         // 0
        {1, elem::INSTANCE, "a"},        // 1
        {2, elem::PROPERTY, "p"},        // 2
        {3, elem::VALUE, nullptr, "1"},  // 3
        {2, elem::PROPERTY, "q"},        // 4
        {1, elem::INSTANCE, "b"},        // 5
        {2, elem::PROPERTY, "r"},        // 6
        {1, elem::INSTANCE, "c"},        // 7
    }));
    nodes_ = nodes_of(root_.get());
  }

  std::vector<std::string> words() const { return words_of(root_.get()); }

  std::unique_ptr<CIMelement> root_;
  std::vector<CIMelement*> nodes_;
};

TEST_F(CimElementMoves, DeletingAFirstChildReturnsItsParent) {
  EXPECT_EQ(nodes_[1]->deleteElement(true), nodes_[0]);
  EXPECT_THAT(words(), ElementsAre("IRETURNVALUE", "INSTANCE(b)", "PROPERTY(r)", "INSTANCE(c)"));
  EXPECT_THAT(parents_of(root_.get()), ElementsAre(-1, 0, 1, 0));
}

TEST_F(CimElementMoves, DeletingALaterChildReturnsTheNodeBeforeIt) {
  EXPECT_EQ(nodes_[5]->deleteElement(true), nodes_[4]);
  EXPECT_THAT(words(), ElementsAre("IRETURNVALUE", "INSTANCE(a)", "PROPERTY(p)", "VALUE=1",
                                   "PROPERTY(q)", "INSTANCE(c)"));
  EXPECT_EQ(nodes_[7]->deleteElement(true), nodes_[4]);
  EXPECT_EQ(nodes_[4]->next, nullptr);
}

TEST_F(CimElementMoves, DeletingALeafAloneKeepsTheRest) {
  EXPECT_EQ(nodes_[3]->deleteElement(false), nodes_[2]);
  EXPECT_EQ(nodes_[4]->deleteElement(false), nodes_[2]);
  EXPECT_THAT(words(), ElementsAre("IRETURNVALUE", "INSTANCE(a)", "PROPERTY(p)", "INSTANCE(b)",
                                   "PROPERTY(r)", "INSTANCE(c)"));
}

TEST_F(CimElementMoves, DeletingAnInnerNodeAloneLeavesItsDescendantsInTheChain) {
  CIMelement* const gone = nodes_[1];
  EXPECT_EQ(gone->deleteElement(false), nodes_[0]);
  EXPECT_THAT(words(), ElementsAre("IRETURNVALUE", "PROPERTY(p)", "VALUE=1", "PROPERTY(q)",
                                   "INSTANCE(b)", "PROPERTY(r)", "INSTANCE(c)"));
  // Their links are not repaired.
  EXPECT_EQ(nodes_[2]->parent, gone);
  EXPECT_EQ(nodes_[4]->parent, gone);
}

TEST_F(CimElementMoves, DeletingARootFreesItsSubtreeAndReturnsNull) {
  EXPECT_EQ(root_.release()->deleteElement(true), nullptr);
}

TEST_F(CimElementMoves, DeletingARootLeavesTheRootAfterItToTheCaller) {
  const std::unique_ptr<CIMelement> other(build({{0, elem::INSTANCE, "other"}}));
  nodes_.back()->next = other.get();
  EXPECT_EQ(root_.release()->deleteElement(true), nullptr);
  EXPECT_THAT(words_of(other.get()), ElementsAre("INSTANCE(other)"));
}

TEST_F(CimElementMoves, DeletingARootAloneLeavesItsDescendantsToTheCaller) {
  EXPECT_EQ(root_.release()->deleteElement(false), nullptr);
  const std::unique_ptr<CIMelement> rest(nodes_[1]);
  EXPECT_EQ(words_of(rest.get()).size(), 7U);
}

TEST_F(CimElementMoves, DeletingANodeThatItsParentDoesNotLeadToRelinksNothing) {
  auto* const stray = new CIMelement;
  stray->parent = nodes_[5];
  EXPECT_EQ(stray->deleteElement(true), nullptr);
  EXPECT_EQ(words().size(), 8U);
}

TEST_F(CimElementMoves, ARunMovesToAnEmptyChain) {
  CIMelement* chain = nullptr;
  EXPECT_EQ(nodes_[1]->redirect_chain(&chain, true), nodes_[5]);
  const std::unique_ptr<CIMelement> moved(chain);
  EXPECT_EQ(chain, nodes_[1]);
  EXPECT_THAT(words_of(chain), ElementsAre("INSTANCE(a)", "PROPERTY(p)", "VALUE=1", "PROPERTY(q)"));
  EXPECT_THAT(parents_of(chain), ElementsAre(-1, 0, 1, 0));
  EXPECT_THAT(words(), ElementsAre("IRETURNVALUE", "INSTANCE(b)", "PROPERTY(r)", "INSTANCE(c)"));
}

TEST_F(CimElementMoves, ARunMovesToTheEndOfAChain) {
  CIMelement* chain = build({{0, elem::INSTANCE, "x"}, {1, elem::PROPERTY, "y"}});
  const std::unique_ptr<CIMelement> head(chain);
  EXPECT_EQ(nodes_[5]->redirect_chain(&chain, true), nodes_[7]);
  EXPECT_EQ(nodes_[7]->redirect_chain(&chain, true), nullptr);
  EXPECT_EQ(chain, head.get());
  EXPECT_THAT(words_of(chain), ElementsAre("INSTANCE(x)", "PROPERTY(y)", "INSTANCE(b)",
                                           "PROPERTY(r)", "INSTANCE(c)"));
  EXPECT_THAT(parents_of(chain), ElementsAre(-1, 0, -1, 2, -1));
  EXPECT_THAT(words(),
              ElementsAre("IRETURNVALUE", "INSTANCE(a)", "PROPERTY(p)", "VALUE=1", "PROPERTY(q)"));
}

TEST_F(CimElementMoves, ANodeMovesAloneAndItsDescendantsAreFreed) {
  CIMelement* chain = nullptr;
  EXPECT_EQ(nodes_[1]->redirect_chain(&chain, false), nodes_[5]);
  const std::unique_ptr<CIMelement> moved(chain);
  EXPECT_THAT(words_of(chain), ElementsAre("INSTANCE(a)"));
  EXPECT_EQ(chain->parent, nullptr);
  EXPECT_THAT(words(), ElementsAre("IRETURNVALUE", "INSTANCE(b)", "PROPERTY(r)", "INSTANCE(c)"));
}

TEST_F(CimElementMoves, ALeafMovesAlone) {
  CIMelement* chain = nullptr;
  EXPECT_EQ(nodes_[7]->redirect_chain(&chain, false), nullptr);
  const std::unique_ptr<CIMelement> moved(chain);
  EXPECT_EQ(chain, nodes_[7]);
  EXPECT_EQ(nodes_[6]->next, nullptr);
}

TEST_F(CimElementMoves, ARootMovesWithoutRelinking) {
  CIMelement* chain = nullptr;
  EXPECT_EQ(nodes_[0]->redirect_chain(&chain, true), nullptr);
  EXPECT_EQ(chain, nodes_[0]);
  EXPECT_EQ(words_of(chain).size(), 8U);
}

TEST_F(CimElementMoves, TheFirstOfTwoRootsMovesAndTheSecondIsReturned) {
  const std::unique_ptr<CIMelement> other(build({{0, elem::INSTANCE, "other"}}));
  nodes_.back()->next = other.get();
  CIMelement* chain = nullptr;
  EXPECT_EQ(nodes_[0]->redirect_chain(&chain, true), other.get());
  EXPECT_EQ(words_of(chain).size(), 8U);
}

TEST_F(CimElementMoves, AHeadThatHoldsTheNodeAlreadyIsRefused) {
  const TraceRecorder trace;
  CIMelement* chain = nodes_[1];
  EXPECT_EQ(nodes_[1]->redirect_chain(&chain, true), nullptr);
  EXPECT_EQ(nodes_[1]->redirect_chain(&chain, false), nullptr);
  EXPECT_EQ(chain, nodes_[1]);
  EXPECT_EQ(nodes_of(root_.get()), nodes_);
  EXPECT_EQ(nodes_[1]->parent, nodes_[0]);
  EXPECT_THAT(errors(trace),
              ElementsAre("redirect_chain: redirection doesn't make sense if *adr == this",
                          "redirect_chain: redirection doesn't make sense if *adr == this"));
}

TEST_F(CimElementMoves, AHeadInsideTheMovedRunIsRefused) {
  const TraceRecorder trace;
  for (const std::size_t i : {2U, 4U}) {
    CIMelement* chain = nodes_[i];
    EXPECT_EQ(nodes_[1]->redirect_chain(&chain, true), nullptr);
    EXPECT_EQ(nodes_[1]->redirect_chain(&chain, false), nullptr);
  }
  EXPECT_EQ(nodes_of(root_.get()), nodes_);
  EXPECT_EQ(errors(trace).size(), 4U);
}

TEST_F(CimElementMoves, ANodeCanMoveToTheEndOfItsOwnDocument) {
  CIMelement* chain = root_.get();
  EXPECT_EQ(nodes_[1]->redirect_chain(&chain, true), nodes_[5]);
  EXPECT_THAT(words(), ElementsAre("IRETURNVALUE", "INSTANCE(b)", "PROPERTY(r)", "INSTANCE(c)",
                                   "INSTANCE(a)", "PROPERTY(p)", "VALUE=1", "PROPERTY(q)"));
  EXPECT_EQ(nodes_[1]->parent, nullptr);
}

TEST_F(CimElementMoves, NoChainIsRefused) {
  const TraceRecorder trace;
  EXPECT_EQ(nodes_[1]->redirect_chain(nullptr, true), nullptr);
  EXPECT_EQ(nodes_of(root_.get()), nodes_);
  EXPECT_THAT(trace.texts(), IsEmpty());
}

TEST_F(CimElementMoves, AllChildrenCanBeMovedOneByOne) {
  CIMelement* chain = nullptr;
  CIMelement* node = nodes_[1];
  while (node != nullptr) node = node->redirect_chain(&chain, true);
  const std::unique_ptr<CIMelement> moved(chain);
  EXPECT_THAT(words(), ElementsAre("IRETURNVALUE"));
  EXPECT_EQ(words_of(chain).size(), 7U);
}

}  // namespace
}  // namespace zuCIM
