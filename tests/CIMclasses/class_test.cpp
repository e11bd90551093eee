#include "zuCIM/class.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "CIMclasses/tree.h"

namespace zuCIM {
namespace {

using testing::build;
using ::testing::ElementsAre;
using testing::nobody;
using testing::words_of;

void expect_fresh(const CIMclass& entry) {
  EXPECT_EQ(entry.className, nullptr);
  EXPECT_EQ(entry.nameSpace, nullptr);
  EXPECT_EQ(entry.instanceNames, nullptr);
  EXPECT_EQ(entry.instances, nullptr);
  EXPECT_EQ(entry.methods, nullptr);
  EXPECT_EQ(entry.next, nullptr);
}

// One word per entry, as in "CIM_Fan in root/cimv2".
std::vector<std::string> entries_of(const CIMclass* entry) {
  std::vector<std::string> words;
  const auto text = [](const char* name) { return std::string(name == nullptr ? "-" : name); };
  for (; entry != nullptr; entry = entry->next)
    words.push_back(text(entry->className) + " in " + text(entry->nameSpace));
  return words;
}

CIMelement* tree(const char* name) {
  return build({{0, elem::INSTANCE, name}, {1, elem::PROPERTY, "p"}});
}

TEST(CimClass, AFreshEntryIsEmpty) {
  const CIMclass entry;
  expect_fresh(entry);
}

TEST(CimClass, InitialisingClearsEveryField) {
  alignas(CIMclass) unsigned char storage[sizeof(CIMclass)];
  std::memset(storage, 0x55, sizeof storage);
  auto* const entry = reinterpret_cast<CIMclass*>(storage);
  entry->clsInit();
  expect_fresh(*entry);
}

TEST(CimClass, NamesAreCopied) {
  CIMclass entry;
  char name[] = "CIM_Fan";
  char space[] = "root/interop";
  entry.setClassName(name, space);
  name[0] = space[0] = 'x';
  EXPECT_STREQ(entry.className, "CIM_Fan");
  EXPECT_STREQ(entry.nameSpace, "root/interop");
}

TEST(CimClass, NullAndEmptyNamesAreNotStored) {
  CIMclass entry;
  entry.setClassName("CIM_Fan", "root/interop");
  entry.setClassName("", nullptr);
  EXPECT_EQ(entry.className, nullptr);
  EXPECT_EQ(entry.nameSpace, nullptr);
  entry.setClassName(nullptr, "");
  EXPECT_EQ(entry.className, nullptr);
  EXPECT_EQ(entry.nameSpace, nullptr);
}

TEST(CimClass, NewNamesLeaveTreesAndNextAlone) {
  CIMclass entry;
  entry.setClassName("CIM_Fan", "root/cimv2");
  CIMclass* const second = entry.makeNextClass("CIM_Disk", "root/cimv2");
  entry.instances = tree("i");
  CIMelement* const instances = entry.instances;
  entry.setClassName("CIM_Slot", nullptr);
  EXPECT_EQ(entry.instances, instances);
  EXPECT_EQ(entry.next, second);
}

TEST(CimClass, AnEntrysOwnNamesCanBeSetAgain) {
  CIMclass entry;
  entry.setClassName("CIM_Fan", "root/interop");
  entry.setClassName(entry.className, entry.nameSpace);
  EXPECT_THAT(entries_of(&entry), ElementsAre("CIM_Fan in root/interop"));
}

TEST(CimClass, AFreshEntryIsFilledInPlaceAndASecondOneIsAppended) {
  CIMclass entry;
  EXPECT_EQ(entry.makeNextClass("CIM_Fan", "root/cimv2"), &entry);
  CIMclass* const second = entry.makeNextClass("CIM_Disk", "root/interop");
  EXPECT_EQ(entry.next, second);
  CIMclass* const third = entry.makeNextClass("CIM_Slot", "");
  EXPECT_EQ(second->next, third);
  EXPECT_THAT(entries_of(&entry),
              ElementsAre("CIM_Fan in root/cimv2", "CIM_Disk in root/interop", "CIM_Slot in -"));
}

TEST(CimClass, AnEntryWithJustANamespaceIsFilledAgain) {
  CIMclass entry;
  EXPECT_EQ(entry.makeNextClass("", "root/interop"), &entry);
  EXPECT_EQ(entry.makeNextClass("CIM_Fan", "root/cimv2"), &entry);
  EXPECT_THAT(entries_of(&entry), ElementsAre("CIM_Fan in root/cimv2"));
}

TEST(CimClassLookup, TheFirstEntryWithBothNamesIsFound) {
  CIMclass chain;
  chain.makeNextClass("CIM_Fan", "ROOT/CIMV2");
  CIMclass* const fan_in_interop = chain.makeNextClass("CIM_Fan", "root/interop");
  CIMclass* const unnamed = chain.makeNextClass("CIM_Temporary", "root/interop");
  unnamed->setClassName(nullptr, "root/interop");
  chain.makeNextClass("CIM_Nowhere", "");
  chain.makeNextClass("CIM_Fan", "root/cimv2");
  const struct {
    const char* name;
    const char* space;
    CIMclass* found;
  } cases[] = {
      {"CIM_Fan", "root/cimv2", &chain},
      {"cim_fan", nullptr, &chain},
      {"CIM_FAN", "", &chain},
      {"CIM_Fan", "Root/Interop", fan_in_interop},
      {"", "root/interop", unnamed},
      {"", "", nullptr},
      {"CIM_Fan", "root", nullptr},
      {"CIM_Fans", "root/cimv2", nullptr},
      {"CIM_Nowhere", "", nullptr},
      {"CIM_Nowhere", "root/cimv2", nullptr},
      {nullptr, "root/interop", nullptr},
      {nullptr, nullptr, nullptr},
  };
  for (const auto& each : cases)
    EXPECT_EQ(chain.findClassName(each.name, each.space), each.found)
        << (each.name != nullptr ? each.name : "null") << " in "
        << (each.space != nullptr ? each.space : "null");
}

TEST(CimClassLookup, AFreshEntryIsNotFound) {
  CIMclass entry;
  EXPECT_EQ(entry.findClassName("", ""), nullptr);
  EXPECT_EQ(entry.findClassName("CIM_Fan", nullptr), nullptr);
}

TEST(CimClassTrees, KillingATreeEmptiesItsSlot) {
  CIMclass entry;
  entry.instances = tree("i");
  entry.kill_element(&entry.instances);
  EXPECT_EQ(entry.instances, nullptr);
  entry.kill_element(&entry.instances);
  EXPECT_EQ(entry.instances, nullptr);
  entry.kill_element(nullptr);
}

void fill(CIMclass& chain) {
  for (const char* const name : {"CIM_Fan", "CIM_Disk", "CIM_Slot"}) {
    CIMclass* const entry = chain.makeNextClass(name, "root/cimv2");
    entry->instanceNames = tree("n");
    entry->instances = tree("i");
    entry->methods = tree("m");
  }
}

TEST(CimClassCleaning, TheWholeChainIsEmptied) {
  CIMclass chain;
  fill(chain);
  for (int times = 0; times < 2; ++times) {
    chain.clsClean();
    expect_fresh(chain);
    EXPECT_EQ(chain.findClassName("CIM_Fan", nullptr), nullptr);
  }
  EXPECT_EQ(chain.makeNextClass("CIM_Fan", nullptr), &chain);
}

TEST(CimClassCleaning, AChainOfManyEntriesIsFreedWithoutRecursion) {
  CIMclass chain;
  CIMclass* last = &chain;
  for (int i = 0; i < 200'000; ++i) last = last->next = new CIMclass;
  chain.clsClean();
  expect_fresh(chain);
}

TEST(CimClassCopy, NamesAreCopiedEntryByEntry) {
  CIMclass source;
  source.makeNextClass("CIM_Fan", "root/cimv2");
  source.makeNextClass("CIM_Disk", "");
  CIMclass copy;
  fill(copy);
  copy = source;
  EXPECT_THAT(entries_of(&copy), ElementsAre("CIM_Fan in root/cimv2", "CIM_Disk in -"));
  EXPECT_NE(copy.className, source.className);
  EXPECT_EQ(copy.instances, nullptr);
}

TEST(CimClassCopy, AllTreesGoIntoTheFirstEntryAndLaterOnesReplaceEarlierOnes) {
  CIMclass source;
  source.makeNextClass("CIM_Fan", "root/cimv2");
  source.makeNextClass("CIM_Disk", "root/cimv2");
  source.instanceNames = tree("first");
  source.next->instanceNames = tree("second");
  source.instances = tree("instances");
  source.next->methods = tree("methods");
  CIMclass copy(source);
  EXPECT_THAT(words_of(copy.instanceNames), ElementsAre("INSTANCE(second)", "PROPERTY(p)"));
  EXPECT_THAT(words_of(copy.instances), ElementsAre("INSTANCE(instances)", "PROPERTY(p)"));
  EXPECT_THAT(words_of(copy.methods), ElementsAre("INSTANCE(methods)", "PROPERTY(p)"));
  EXPECT_NE(copy.instances, source.instances);
  ASSERT_NE(copy.next, nullptr);
  EXPECT_EQ(copy.next->instanceNames, nullptr);
  EXPECT_EQ(copy.next->instances, nullptr);
  EXPECT_EQ(copy.next->methods, nullptr);
}

TEST(CimClassCopy, AnEntryWithoutClassNameIsFilledAgainByTheNext) {
  CIMclass source;
  source.setClassName(nullptr, "root/interop");
  source.next = new CIMclass;
  source.next->setClassName("CIM_Disk", "root/cimv2");
  source.instances = tree("kept");
  const CIMclass copy(source);
  EXPECT_THAT(entries_of(&copy), ElementsAre("CIM_Disk in root/cimv2"));
  EXPECT_EQ(words_of(copy.instances).front(), "INSTANCE(kept)");
}

TEST(CimClassCopy, AssigningAChainToItselfChangesNothing) {
  CIMclass chain;
  fill(chain);
  CIMelement* const instances = chain.next->instances;
  const CIMclass& same = chain;
  chain = same;
  EXPECT_EQ(entries_of(&chain).size(), 3U);
  EXPECT_EQ(chain.next->instances, instances);
}

TEST(CimClassCopy, APartOfAChainCanReplaceTheWholeAndTheOtherWayRound) {
  CIMclass chain;
  fill(chain);
  chain = *chain.next;
  EXPECT_THAT(entries_of(&chain), ElementsAre("CIM_Disk in root/cimv2", "CIM_Slot in root/cimv2"));
  *chain.next = chain;
  EXPECT_THAT(entries_of(&chain), ElementsAre("CIM_Disk in root/cimv2", "CIM_Disk in root/cimv2",
                                              "CIM_Slot in root/cimv2"));
}

TEST(CimClass, TheMembersOfANullEntryDoNothing) {
  auto* const none = nobody<CIMclass>();
  EXPECT_EQ(none->makeNextClass("CIM_Fan", ""), nullptr);
  EXPECT_EQ(none->findClassName("CIM_Fan", ""), nullptr);
  none->clsClean();
  none->clsInit();
  none->setClassName("CIM_Fan", "");
  CIMelement* slot = tree("t");
  none->kill_element(&slot);
  EXPECT_EQ(slot, nullptr);
  CIMclass entry;
  fill(entry);
  *none = entry;
  entry = *nobody<const CIMclass>();
  expect_fresh(entry);
}

TEST(CimClass, ACopyReusesTheFirstEntryWhileItNamesNoClass) {
  CIMclass source;
  source.setClassName("", "root/interop");
  source.next = new CIMclass;
  source.next->setClassName("CIM_Fan", "root/cimv2");
  const CIMclass copy(source);
  EXPECT_STREQ(copy.className, "CIM_Fan");
  EXPECT_STREQ(copy.nameSpace, "root/cimv2");
  EXPECT_EQ(copy.next, nullptr);
}

TEST(CimClass, ALongChainIsCopiedInOneWalk) {
  CIMclass source;
  source.setClassName("first", "root/cimv2");
  CIMclass* last = &source;
  for (int i = 0; i < 200000; ++i) {
    last->next = new CIMclass;
    last = last->next;
    last->setClassName("CIM_Fan", "root/cimv2");
  }
  const CIMclass copy(source);
  int count = 0;
  for (const CIMclass* entry = &copy; entry != nullptr; entry = entry->next) ++count;
  EXPECT_EQ(count, 200001);
}

}  // namespace
}  // namespace zuCIM
