#include "zuCIM/array.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "CIMclasses/tree.h"

namespace zuCIM {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int text_size = -1;
constexpr int step = 15;

const char* text_at(const CIMarray& array, unsigned i) {
  return static_cast<const char*>(array.argv[i]);
}

std::vector<std::string> texts_of(const CIMarray& array) {
  std::vector<std::string> texts;
  for (unsigned i = 0; i < array.argc; ++i) texts.emplace_back(text_at(array, i));
  return texts;
}

// A sanitizer knows the exact size of a block.
void expect_block_size(void* block, std::size_t size) {
#ifdef __SANITIZE_ADDRESS__
  EXPECT_EQ(malloc_usable_size(block), size);
#else
  EXPECT_GE(malloc_usable_size(block), size);
#endif
}

void append_numbers(CIMarray& array, int count) {
  for (int i = 0; i < count; ++i)
    ASSERT_NE(array.putargv(std::to_string(i).c_str(), text_size, step), nullptr);
}

void expect_spare_slots_are_null(const CIMarray& array) {
  for (unsigned i = array.argc; i < array.maxargc; ++i) EXPECT_EQ(array.argv[i], nullptr) << i;
}

void expect_empty(const CIMarray& array) {
  EXPECT_EQ(array.argv, nullptr);
  EXPECT_EQ(array.elementSize, 0);
  EXPECT_EQ(array.argc, 0U);
  EXPECT_EQ(array.maxargc, 0U);
}

TEST(CimArray, ANewArrayIsAllZeros) {
  const CIMarray array;
  expect_empty(array);
}

TEST(CimArray, AppendingATextStoresACopyWithItsNul) {
  CIMarray array;
  char text[] = "abc";
  auto* const block = static_cast<char*>(array.putargv(text, text_size, step));
  text[0] = 'x';
  ASSERT_NE(block, nullptr);
  EXPECT_STREQ(block, "abc");
  expect_block_size(block, 4);
  EXPECT_EQ(array.argv[0], block);
  EXPECT_EQ(array.argc, 1U);
  EXPECT_EQ(array.elementSize, text_size);
}

TEST(CimArray, APrefixedTextStandsAfterThePrefixBytes) {
  for (const int size : {-2, -3, -9, -100}) {
    CIMarray array;
    auto* const block = static_cast<char*>(array.putargv("abc", size, step));
    ASSERT_NE(block, nullptr);
    EXPECT_STREQ(block - size - 1, "abc");
    expect_block_size(block, static_cast<std::size_t>(-size - 1) + 4U);
  }
}

TEST(CimArray, AnEmptyTextIsAnElement) {
  CIMarray array;
  EXPECT_STREQ(static_cast<char*>(array.putargv("", text_size, step)), "");
  EXPECT_EQ(array.argc, 1U);
}

TEST(CimArray, APositiveSizeCopiesThatManyBytes) {
  CIMarray array;
  const int record[2] = {7, 11};
  const void* const block = array.putargv(record, sizeof record, step);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(std::memcmp(block, record, sizeof record), 0);
  EXPECT_EQ(array.elementSize, static_cast<int>(sizeof record));
}

TEST(CimArray, ANullRecordIsZeroFilled) {
  CIMarray array;
  for (int i = 0; i < 50; ++i) {
    void* const dirty = std::malloc(64);
    std::memset(dirty, 0x55, 64);
    std::free(dirty);
    const auto* const block = static_cast<const char*>(array.putargv(nullptr, 64, step));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::string(block, 64), std::string(64, '\0'));
  }
}

TEST(CimArray, NullDataNeedsAPositiveSize) {
  for (const int size : {0, -1, -2, INT_MIN}) {
    const TraceRecorder trace;
    CIMarray array;
    EXPECT_EQ(array.putargv(nullptr, size, step), nullptr);
    EXPECT_THAT(testing::errors(trace), ElementsAre("putargv: Exception raised: NULL pointer!!"));
    expect_empty(array);
  }
}

TEST(CimArray, AnElementOfSizeZeroIsAnEmptyBlock) {
  CIMarray array;
  EXPECT_NE(array.putargv("abc", 0, step), nullptr);
  EXPECT_EQ(array.elementSize, 0);
  EXPECT_EQ(array.argc, 1U);
  const CIMarray copy(array);
  EXPECT_EQ(copy.argc, 1U);
}

TEST(CimArray, ElementsOfAnotherSizeAreRefused) {
  const TraceRecorder trace;
  CIMarray array;
  append_numbers(array, 1);
  EXPECT_EQ(array.putargv("record", 6, step), nullptr);
  EXPECT_THAT(testing::errors(trace),
              ElementsAre("putargv: Exception raised: different length of array elements!"));
  EXPECT_EQ(array.argc, 1U);
  EXPECT_EQ(array.elementSize, text_size);
}

TEST(CimArray, AnEmptiedArrayTakesElementsOfAnotherSize) {
  CIMarray array;
  append_numbers(array, 1);
  EXPECT_EQ(array.setmaxargc(0), 0);
  EXPECT_NE(array.putargv("record", 6, step), nullptr);
  EXPECT_EQ(array.elementSize, 6);
}

TEST(CimArray, ErasingTheLastElementKeepsTheElementSize) {
  CIMarray array;
  append_numbers(array, 1);
  array.erase(0);
  EXPECT_EQ(array.argc, 0U);
  EXPECT_EQ(array.elementSize, text_size);
  EXPECT_EQ(array.putargv("record", 6, step), nullptr);
}

TEST(CimArray, TheFirstAppendGivesACapacityOf16) {
  CIMarray array;
  append_numbers(array, 1);
  EXPECT_EQ(array.maxargc, 16U);
  expect_spare_slots_are_null(array);
}

TEST(CimArray, TheSeventeenthAppendGrowsTheCapacityTo32) {
  CIMarray array;
  append_numbers(array, 16);
  EXPECT_EQ(array.maxargc, 16U);
  array.putargv("16", text_size, step);
  EXPECT_EQ(array.maxargc, 32U);
  EXPECT_EQ(array.argc, 17U);
  for (unsigned i = 0; i < 17; ++i) EXPECT_EQ(text_at(array, i), std::to_string(i));
  expect_spare_slots_are_null(array);
}

TEST(CimArray, ANegativeGrowthStepAddsJustTheSlotThatIsNeeded) {
  for (const int grow : {0, -1, -15, INT_MIN}) {
    CIMarray array;
    array.putargv("a", text_size, grow);
    array.putargv("b", text_size, grow);
    EXPECT_EQ(array.maxargc, 2U);
    EXPECT_THAT(texts_of(array), ElementsAre("a", "b"));
  }
}

TEST(CimArray, LoweringTheCapacityFreesTheElementsBeyond) {
  CIMarray array;
  append_numbers(array, 5);
  EXPECT_EQ(array.setmaxargc(2), 0);
  EXPECT_EQ(array.argc, 2U);
  EXPECT_EQ(array.maxargc, 2U);
  EXPECT_EQ(array.elementSize, text_size);
  EXPECT_THAT(texts_of(array), ElementsAre("0", "1"));
}

TEST(CimArray, RaisingTheCapacityAddsNullSlots) {
  CIMarray array;
  append_numbers(array, 3);
  EXPECT_EQ(array.setmaxargc(100), 0);
  EXPECT_EQ(array.argc, 3U);
  EXPECT_EQ(array.maxargc, 100U);
  expect_spare_slots_are_null(array);
}

TEST(CimArray, AnEmptyArrayCanReserveItsCapacity) {
  CIMarray array;
  EXPECT_EQ(array.setmaxargc(8), 0);
  EXPECT_EQ(array.maxargc, 8U);
  EXPECT_EQ(array.elementSize, 0);
  expect_spare_slots_are_null(array);
  append_numbers(array, 8);
  EXPECT_EQ(array.maxargc, 8U);
}

TEST(CimArray, TheSameCapacityChangesNothing) {
  CIMarray array;
  append_numbers(array, 3);
  void** const slots = array.argv;
  EXPECT_EQ(array.setmaxargc(16), 0);
  EXPECT_EQ(array.argv, slots);
  EXPECT_EQ(array.argc, 3U);
}

TEST(CimArray, CapacityZeroResetsEverything) {
  CIMarray array;
  append_numbers(array, 3);
  EXPECT_EQ(array.setmaxargc(0), 0);
  expect_empty(array);
  EXPECT_EQ(array.setmaxargc(0), 0);
  expect_empty(array);
}

TEST(CimArray, ErasingClosesTheGap) {
  CIMarray array;
  append_numbers(array, 5);
  array.erase(1);
  EXPECT_THAT(texts_of(array), ElementsAre("0", "2", "3", "4"));
  EXPECT_EQ(array.maxargc, 16U);
  expect_spare_slots_are_null(array);
  array.erase(3);
  array.erase(0);
  EXPECT_THAT(texts_of(array), ElementsAre("2", "3"));
  expect_spare_slots_are_null(array);
}

TEST(CimArray, ErasingMovesTheSlotsUpToTheCapacity) {
  CIMarray array;
  append_numbers(array, 2);
  void* const planted = std::malloc(1);
  array.argv[15] = planted;
  array.erase(0);
  EXPECT_EQ(array.argv[14], planted);
  EXPECT_EQ(array.argv[15], nullptr);
  std::free(planted);
  array.argv[14] = nullptr;
}

TEST(CimArray, ErasingFromAFullArrayClearsTheLastSlot) {
  CIMarray array;
  append_numbers(array, 16);
  array.erase(0);
  EXPECT_EQ(array.argc, 15U);
  EXPECT_EQ(array.argv[15], nullptr);
  EXPECT_STREQ(text_at(array, 14), "15");
}

TEST(CimArray, ErasingPastTheEndDoesNothing) {
  CIMarray array;
  append_numbers(array, 3);
  for (const unsigned i : {3U, 4U, 16U, UINT_MAX}) array.erase(i);
  EXPECT_THAT(texts_of(array), ElementsAre("0", "1", "2"));
  CIMarray empty;
  empty.erase(0);
  expect_empty(empty);
}

TEST(CimArray, FreeUnusedTrimsTheCapacityToTheCount) {
  CIMarray array;
  append_numbers(array, 17);
  array.FreeUnused();
  EXPECT_EQ(array.argc, 17U);
  EXPECT_EQ(array.maxargc, 17U);
  EXPECT_STREQ(text_at(array, 16), "16");
}

TEST(CimArray, FreeUnusedOfAnArrayWithoutElementsEmptiesIt) {
  CIMarray array;
  append_numbers(array, 1);
  array.erase(0);
  array.FreeUnused();
  expect_empty(array);
}

TEST(CimArray, ACopyHasBlocksOfItsOwn) {
  CIMarray source;
  append_numbers(source, 20);
  CIMarray copy;
  copy.putargv("record", 6, step);
  copy = source;
  EXPECT_EQ(texts_of(copy), texts_of(source));
  EXPECT_EQ(copy.elementSize, text_size);
  EXPECT_EQ(copy.maxargc, source.maxargc);
  for (unsigned i = 0; i < 20; ++i) EXPECT_NE(copy.argv[i], source.argv[i]);
  expect_spare_slots_are_null(copy);
}

TEST(CimArray, ACopyHasTheCapacityOfItsSource) {
  CIMarray source;
  append_numbers(source, 3);
  source.setmaxargc(5);
  const CIMarray copy(source);
  EXPECT_EQ(copy.maxargc, 5U);
  EXPECT_EQ(copy.argc, 3U);
}

TEST(CimArray, ACopyOfAnArrayWithoutElementsHasNoElementSize) {
  CIMarray source;
  append_numbers(source, 1);
  source.erase(0);
  CIMarray copy;
  copy.putargv("record", 6, step);
  copy = source;
  EXPECT_EQ(copy.argc, 0U);
  EXPECT_EQ(copy.elementSize, 0);
  EXPECT_EQ(copy.maxargc, 16U);
}

TEST(CimArray, ACopyReproducesPrefixesAndTexts) {
  for (const int size : {-2, -4}) {
    CIMarray source;
    const auto prefix = static_cast<std::size_t>(-size - 1);
    for (int i = 0; i < 20; ++i) {
      void* const block = source.putargv(std::to_string(i * i).c_str(), size, step);
      std::memset(block, i, prefix);
    }
    CIMarray copy;
    copy = source;
    ASSERT_EQ(copy.argc, 20U);
    EXPECT_EQ(copy.elementSize, size);
    for (unsigned i = 0; i < 20; ++i) {
      EXPECT_EQ(std::string(text_at(copy, i), prefix), std::string(prefix, static_cast<char>(i)));
      EXPECT_EQ(text_at(copy, i) + prefix, std::to_string(i * i));
    }
  }
}

TEST(CimArray, ACopyOfRecordsCopiesTheirBytes) {
  CIMarray source;
  for (const char* const record : {"ab\0c", "defg"}) source.putargv(record, 4, step);
  const CIMarray copy(source);
  ASSERT_EQ(copy.argc, 2U);
  EXPECT_EQ(std::string(text_at(copy, 0), 4), std::string("ab\0c", 4));
  EXPECT_EQ(std::string(text_at(copy, 1), 4), "defg");
}

TEST(CimArray, AssigningAnArrayToItselfChangesNothing) {
  CIMarray array;
  append_numbers(array, 3);
  const CIMarray& same = array;
  array = same;
  EXPECT_THAT(texts_of(array), ElementsAre("0", "1", "2"));
}

TEST(CimArray, AnElementOfTheArrayItselfCanBeAppended) {
  CIMarray array;
  append_numbers(array, 16);
  array.putargv(array.argv[3], text_size, step);
  EXPECT_STREQ(text_at(array, 16), "3");
}

TEST(CimArray, TheMembersOfANullArrayFailWithATrace) {
  const TraceRecorder trace;
  auto* const none = testing::nobody<CIMarray>();
  EXPECT_EQ(none->putargv("a", text_size, step), nullptr);
  EXPECT_EQ(none->setmaxargc(1), 1001);
  none->FreeUnused();
  none->erase(0);
  EXPECT_THAT(testing::errors(trace),
              ElementsAre("putargv: Exception raised: NULL pointer!!", "setmaxargc: this??",
                          "setmaxargc: this??", "FreeUnused: cannot alloc memory!"));
}

TEST(CimArray, CopyingFromOrToNoArrayChangesNothing) {
  CIMarray array;
  append_numbers(array, 1);
  array = *testing::nobody<const CIMarray>();
  EXPECT_THAT(texts_of(array), ElementsAre("0"));
  *testing::nobody<CIMarray>() = array;
}

TEST(CimArray, SuccessIsSilent) {
  const TraceRecorder trace;
  CIMarray array;
  append_numbers(array, 40);
  array.erase(7);
  array.FreeUnused();
  const CIMarray copy(array);
  array.setmaxargc(3);
  EXPECT_THAT(trace.texts(), IsEmpty());
}

}  // namespace
}  // namespace zuCIM
