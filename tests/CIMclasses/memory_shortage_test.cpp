#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "CIMclasses/tree.h"
#include "support/failing_allocator.h"
#include "zuCIM/class.h"

namespace zuCIM {
namespace {

using testing::build;
using ::testing::Contains;
using ::testing::ElementsAre;
using testing::errors;
using ::testing::IsEmpty;
using testing::words_of;

constexpr const char* realloc_failed = "putargv: Exception raised: cannot realloc array!";
constexpr const char* alloc_failed = "putargv: Exception raised: cannot alloc array!";
constexpr const char* next_element_failed =
    "makeNextElement: Exception raised: cannot alloc memory!";
constexpr const char* attr_put_failed = "attr_put: Exception raised: cannot alloc memory!";

// Runs `work` while the n-th allocation of one kind fails.
template <class Work>
auto with_failure(unsigned nth, AllocationKind kind, const Work& work) {
  AllocationFailure failure(nth, kind);
  const auto result = work();
  failure.disarm();
  EXPECT_TRUE(failure.happened());
  return result;
}

TEST(MemoryShortage, ANodeThatCannotBeMadeLeavesTheChainAsItWas) {
  const TraceRecorder trace;
  CIMelement root;
  root.name = known_cim_elements[elem::CIM];
  EXPECT_EQ(with_failure(1, AllocationKind::cpp, [&] { return root.makeNextElement(); }), nullptr);
  EXPECT_EQ(root.next, nullptr);
  EXPECT_THAT(errors(trace), ElementsAre(next_element_failed));
}

TEST(MemoryShortage, AnAttributeArrayThatCannotBeMadeFailsTheAttribute) {
  const TraceRecorder trace;
  CIMelement node;
  EXPECT_EQ(with_failure(1, AllocationKind::cpp, [&] { return node.attr_put(attr::NAME, "x"); }),
            1001);
  EXPECT_EQ(node.attributes, nullptr);
  EXPECT_THAT(errors(trace), ElementsAre(attr_put_failed));
}

TEST(MemoryShortage, AClassEntryThatCannotBeMadeIsNull) {
  CIMclass chain;
  chain.makeNextClass("CIM_Fan", "");
  EXPECT_EQ(with_failure(1, AllocationKind::cpp, [&] { return chain.makeNextClass("a", "b"); }),
            nullptr);
  EXPECT_EQ(chain.next, nullptr);
}

// Each of these runs with every allocation failing in turn; leaks and bad accesses are for the
// sanitizers to find.

std::unique_ptr<CIMelement> sample() {
  return std::unique_ptr<CIMelement>(build({{0, elem::IRETURNVALUE},
                                            {1, elem::INSTANCE, "a", "1"},
                                            {2, elem::PROPERTY, "p", "2"},
                                            {1, elem::INSTANCE, "b", "3"}}));
}

TEST(MemoryShortage, ACopiedChainEndsEarlyButIsSound) {
  const TraceRecorder silent(0);
  const auto source = sample();
  const auto words = words_of(source.get());
  const unsigned allocations = for_each_failing_allocation([&](AllocationFailure& failure) {
    CIMelement copy;
    failure.arm();
    copy = *source;
    failure.disarm();
    const auto copied = words_of(&copy);
    EXPECT_LE(copied.size(), words.size());
    // All but the last node, where memory was short, are whole.
    EXPECT_TRUE(std::equal(copied.begin(), copied.end() - 1, words.begin()));
    EXPECT_EQ(copied == words, !failure.happened());
  });
  EXPECT_GE(allocations, 6U);
}

TEST(MemoryShortage, ACopiedClassChainIsSound) {
  const TraceRecorder silent(0);
  CIMclass source;
  source.makeNextClass("CIM_Fan", "root/cimv2");
  source.makeNextClass("CIM_Disk", "root/cimv2");
  source.instances = sample().release();
  source.next->instances = sample().release();
  for_each_failing_allocation([&](AllocationFailure& failure) {
    CIMclass copy;
    failure.arm();
    copy = source;
    failure.disarm();
    if (failure.happened()) return;
    EXPECT_STREQ(copy.next->className, "CIM_Disk");
    EXPECT_EQ(words_of(copy.instances), words_of(source.instances));
  });
}

// The rest is about malloc, which a sanitizer does not let fail.
#if !ZUCIM_SANITIZER_ALLOCATES

void append(CIMarray& array, int count) {
  for (int i = 0; i < count; ++i) array.putargv(std::to_string(i).c_str(), -1, 15);
}

// An array of 16 texts that failed to grow.
struct LostArray : CIMarray {
  LostArray() {
    append(*this, 16);
    EXPECT_EQ(with_failure(1, AllocationKind::c, [&] { return putargv("x", -1, 15); }), nullptr);
  }
};

TEST(MemoryShortage, AnArrayThatCannotGrowLosesItsSlotsAndKeepsItsCounts) {
  const TraceRecorder trace;
  const LostArray array;
  EXPECT_EQ(array.argv, nullptr);
  EXPECT_EQ(array.argc, 16U);
  EXPECT_EQ(array.maxargc, 16U);
  EXPECT_EQ(array.elementSize, -1);
  EXPECT_THAT(errors(trace), ElementsAre(realloc_failed));
}

TEST(MemoryShortage, AFirstElementWithoutSlotsLeavesJustTheElementSize) {
  CIMarray array;
  const TraceRecorder trace;
  EXPECT_EQ(with_failure(1, AllocationKind::c, [&] { return array.putargv("x", -1, 15); }),
            nullptr);
  EXPECT_EQ(array.argv, nullptr);
  EXPECT_EQ(array.argc, 0U);
  EXPECT_EQ(array.maxargc, 0U);
  EXPECT_EQ(array.elementSize, -1);
  EXPECT_EQ(array.putargv("record", 6, 15), nullptr);
}

TEST(MemoryShortage, ABlockThatCannotBeMadeLeavesTheElementsAsTheyWere) {
  CIMarray array;
  append(array, 16);
  const TraceRecorder trace;
  EXPECT_EQ(with_failure(2, AllocationKind::c, [&] { return array.putargv("x", -1, 15); }),
            nullptr);
  EXPECT_EQ(array.argc, 16U);
  EXPECT_EQ(array.maxargc, 32U);
  EXPECT_STREQ(static_cast<char*>(array.argv[15]), "15");
  EXPECT_EQ(array.argv[16], nullptr);
  EXPECT_THAT(errors(trace), ElementsAre(alloc_failed));
}

TEST(MemoryShortage, ALostArrayGrowsAgainBehindNullSlots) {
  LostArray array;
  EXPECT_STREQ(static_cast<char*>(array.putargv("new", -1, 15)), "new");
  EXPECT_EQ(array.argc, 17U);
  EXPECT_EQ(array.maxargc, 32U);
  for (unsigned i = 0; i < 32; ++i) EXPECT_EQ(array.argv[i] != nullptr, i == 16) << i;
}

TEST(MemoryShortage, ALostArrayWithSpareSlotsGetsThemBackWithTheNextElement) {
  LostArray array;
  array.erase(3);
  EXPECT_EQ(array.argc, 15U);
  EXPECT_NE(array.putargv("new", -1, 15), nullptr);
  EXPECT_EQ(array.argc, 16U);
  EXPECT_EQ(array.maxargc, 16U);
  for (unsigned i = 0; i < 16; ++i) EXPECT_EQ(array.argv[i] != nullptr, i == 15) << i;
}

TEST(MemoryShortage, ALostArrayCanBeResized) {
  for (const unsigned capacity : {0U, 1U, 15U, 16U, 17U, 100U}) {
    LostArray array;
    EXPECT_EQ(array.setmaxargc(capacity), 0);
    EXPECT_EQ(array.argc, std::min(capacity, 16U));
    EXPECT_EQ(array.maxargc, capacity);
    EXPECT_EQ(array.elementSize, capacity == 0 ? 0 : -1);
    for (unsigned i = 0; array.argv != nullptr && i < capacity; ++i)
      EXPECT_EQ(array.argv[i], nullptr);
    EXPECT_NE(array.putargv("new", -1, 15), nullptr);
  }
}

TEST(MemoryShortage, ALostArrayCanBeEmptiedElementByElement) {
  LostArray array;
  for (unsigned left = 16; left > 0; --left) {
    array.erase(0);
    EXPECT_EQ(array.argc, left - 1);
  }
  array.FreeUnused();
  EXPECT_EQ(array.maxargc, 0U);
}

TEST(MemoryShortage, ALostArrayCopiesAsAnEmptyOne) {
  const LostArray array;
  const CIMarray copy(array);
  EXPECT_EQ(copy.argc, 0U);
  EXPECT_EQ(copy.maxargc, 16U);
}

TEST(MemoryShortage, LostElementsAreReportedAndPassedOverByACopy) {
  LostArray array;
  array.putargv("kept", -1, 15);
  const TraceRecorder trace;
  const CIMarray copy(array);
  ASSERT_EQ(copy.argc, 1U);
  EXPECT_STREQ(static_cast<char*>(copy.argv[0]), "kept");
  EXPECT_EQ(errors(trace).size(), 16U);
  EXPECT_THAT(errors(trace), Contains("putargv: Exception raised: NULL pointer!!"));
}

TEST(MemoryShortage, LostRecordsAreCopiedAsZeroes) {
  CIMarray array;
  for (int i = 0; i < 16; ++i) array.putargv("record", 6, 15);
  EXPECT_EQ(with_failure(1, AllocationKind::c, [&] { return array.putargv("record", 6, 15); }),
            nullptr);
  array.putargv("latest", 6, 15);
  const CIMarray copy(array);
  ASSERT_EQ(copy.argc, 17U);
  EXPECT_EQ(std::string(static_cast<char*>(copy.argv[0]), 6), std::string(6, '\0'));
  EXPECT_EQ(std::string(static_cast<char*>(copy.argv[16]), 6), "latest");
}

TEST(MemoryShortage, TheAttributesOfALostArrayAreGone) {
  CIMelement node;
  for (int i = 0; i < 16; ++i) node.attr_put(attr::NAME, "x");
  EXPECT_EQ(with_failure(1, AllocationKind::c, [&] { return node.attr_put(attr::NAME, "x"); }),
            1001);
  EXPECT_EQ(node.attr_get(0, nullptr), 33);
  EXPECT_EQ(node.attr_find(attr::NAME), nullptr);
  node.attr_put(attr::TYPE, "string");
  EXPECT_EQ(node.attr_get(0, nullptr), 33);
  EXPECT_EQ(node.attr_get(16, nullptr), attr::TYPE);
  EXPECT_STREQ(node.attr_find(attr::TYPE), "string");
}

TEST(MemoryShortage, ACapacityThatCannotBeHadChangesNothingElse) {
  CIMarray array;
  append(array, 5);
  const TraceRecorder trace;
  EXPECT_EQ(with_failure(1, AllocationKind::c, [&] { return array.setmaxargc(100); }), 1001);
  EXPECT_EQ(array.argc, 5U);
  EXPECT_EQ(array.maxargc, 16U);
  EXPECT_EQ(with_failure(1, AllocationKind::c, [&] { return array.setmaxargc(2); }), 1001);
  EXPECT_EQ(array.argc, 2U);
  EXPECT_EQ(array.maxargc, 16U);
  EXPECT_STREQ(static_cast<char*>(array.argv[1]), "1");
  EXPECT_EQ(array.argv[2], nullptr);
  EXPECT_THAT(errors(trace), ElementsAre("cannot alloc memory!", "cannot alloc memory!"));
}

TEST(MemoryShortage, AFailedTrimIsTracedTwice) {
  CIMarray array;
  append(array, 5);
  const TraceRecorder trace;
  with_failure(1, AllocationKind::c, [&] {
    array.FreeUnused();
    return 0;
  });
  EXPECT_EQ(array.maxargc, 16U);
  EXPECT_THAT(errors(trace),
              ElementsAre("cannot alloc memory!", "FreeUnused: cannot alloc memory!"));
}

TEST(MemoryShortage, ACopyThatCannotHaveTheCapacityStaysEmpty) {
  CIMarray source;
  append(source, 5);
  CIMarray copy;
  append(copy, 2);
  with_failure(1, AllocationKind::c, [&] {
    copy = source;
    return 0;
  });
  EXPECT_EQ(copy.argc, 0U);
  EXPECT_EQ(copy.maxargc, 0U);
}

TEST(MemoryShortage, ACopyStopsAtTheFirstElementThatFails) {
  CIMarray source;
  append(source, 5);
  CIMarray copy;
  with_failure(4, AllocationKind::c, [&] {
    copy = source;
    return 0;
  });
  EXPECT_EQ(copy.argc, 2U);
}

TEST(MemoryShortage, ALengthThatDoesNotFitFailsInsteadOfWrapping) {
  const TraceRecorder trace;
  CIMarray array;
  AllocationFailure failure(2, AllocationKind::c);
  EXPECT_EQ(array.putargv("x", INT_MIN, 0), nullptr);
  failure.disarm();
  EXPECT_EQ(array.elementSize, INT_MIN);
  EXPECT_EQ(array.argc, 0U);
  EXPECT_THAT(errors(trace), ElementsAre(alloc_failed));
}

TEST(MemoryShortage, AGrowthStepBeyondAllMemoryFailsCleanly) {
  const TraceRecorder trace;
  CIMarray array;
  append(array, 1);
  array.setmaxargc(1);
  AllocationFailure failure(1, AllocationKind::c);
  EXPECT_EQ(array.putargv("x", -1, INT_MAX), nullptr);
  failure.disarm();
  EXPECT_EQ(array.argv, nullptr);
  EXPECT_EQ(array.argc, 1U);
  EXPECT_THAT(errors(trace), ElementsAre(realloc_failed));
}

TEST(MemoryShortage, AClassNameThatCannotBeCopiedIsNull) {
  CIMclass entry;
  entry.setClassName("CIM_Fan", "root/cimv2");
  with_failure(1, AllocationKind::c, [&] {
    entry.setClassName("CIM_Disk", "root/interop");
    return 0;
  });
  EXPECT_EQ(entry.className, nullptr);
  EXPECT_STREQ(entry.nameSpace, "root/interop");
}

TEST(MemoryShortage, AnEntryThatCannotBeNamedIsNotMade) {
  for (const unsigned name : {1U, 2U}) {
    CIMclass chain;
    EXPECT_EQ(with_failure(name, AllocationKind::c,
                           [&] { return chain.makeNextClass("CIM_Fan", "root/cimv2"); }),
              nullptr);
    EXPECT_EQ(chain.className, nullptr);
    EXPECT_EQ(chain.nameSpace, nullptr);
    ASSERT_EQ(chain.makeNextClass("CIM_Fan", "root/cimv2"), &chain);
    EXPECT_EQ(with_failure(name, AllocationKind::c,
                           [&] { return chain.makeNextClass("CIM_Disk", "root/cimv2"); }),
              nullptr);
    EXPECT_EQ(chain.next, nullptr);
  }
}

TEST(MemoryShortage, LostAttributesDoNotEndTheCopyOfATree) {
  CIMelement root;
  root.name = known_cim_elements[elem::CLASS];
  for (int i = 0; i < 16; ++i) root.attr_put(attr::NAME, "x");
  EXPECT_EQ(with_failure(1, AllocationKind::c, [&] { return root.attr_put(attr::NAME, "x"); }),
            1001);
  root.makeNextElement()->name = known_cim_elements[elem::VALUE];
  CIMelement copy(root);
  ASSERT_NE(copy.next, nullptr);
  EXPECT_EQ(copy.next->name, known_cim_elements[elem::VALUE]);
  root.attr_put(attr::TYPE, "string");
  copy = root;
  ASSERT_NE(copy.next, nullptr);
  EXPECT_STREQ(copy.attr_find(attr::TYPE), "string");
}

TEST(MemoryShortage, ATextThatCannotBeCopiedEndsTheCopyWithATrace) {
  const TraceRecorder trace;
  CIMelement root;
  root.name = known_cim_elements[elem::VALUE];
  root.value = strdup("text");
  CIMelement copy;
  with_failure(1, AllocationKind::c, [&] {
    copy = root;
    return 0;
  });
  EXPECT_EQ(copy.value, nullptr);
  EXPECT_THAT(errors(trace),
              ElementsAre("CIMelement::operator=: Exception raised: cannot alloc memory!"));
}

TEST(MemoryShortage, AnAttributeRecordThatCannotBeMadeIsTracedWithItsCause) {
  const TraceRecorder trace;
  CIMelement node;
  EXPECT_EQ(with_failure(2, AllocationKind::c, [&] { return node.attr_put(attr::NAME, "x"); }),
            1001);
  ASSERT_NE(node.attributes, nullptr);
  EXPECT_EQ(node.attributes->argc, 0U);
  EXPECT_THAT(errors(trace), ElementsAre(alloc_failed, attr_put_failed));
}

TEST(MemoryShortage, NothingIsLeaked) {
  const TraceRecorder silent(0);
  const auto source = sample();
  const auto everything_fails_once = [&] {
    LostArray lost;
    lost.putargv("new", -1, 15);
    for_each_failing_allocation([&] { CIMelement copy(*source); });
    for_each_failing_allocation([&] {
      CIMarray array;
      append(array, 40);
      const CIMarray copy(array);
    });
  };
  EXPECT_TRUE(leaves_nothing(200, everything_fails_once));
}

#endif

}  // namespace
}  // namespace zuCIM
