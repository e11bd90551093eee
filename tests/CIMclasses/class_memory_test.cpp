#include <gtest/gtest.h>

#include "CIMclasses/tree.h"
#include "support/failing_allocator.h"
#include "zuCIM/class.h"

// Class entries while memory is short.
namespace zuCIM {
namespace {

using testing::build;
using testing::words_of;

TEST(MemoryShortage, AClassChainThatIsCopiedByConstructionIsSound) {
  const TraceRecorder silent(0);
  CIMclass source;
  source.makeNextClass("CIM_Fan", "root/cimv2");
  source.makeNextClass("CIM_Disk", "root/cimv2");
  source.instances = build({{0, elem::INSTANCE, "a", "1"}, {1, elem::PROPERTY, "p", "2"}});
  const unsigned allocations = for_each_failing_allocation([&](AllocationFailure& failure) {
    failure.arm();
    CIMclass copy(source);
    failure.disarm();
    if (!failure.happened()) {
      ASSERT_NE(copy.next, nullptr);
      EXPECT_STREQ(copy.next->className, "CIM_Disk");
    }
    copy = source;
    ASSERT_NE(copy.next, nullptr);
    EXPECT_STREQ(copy.next->className, "CIM_Disk");
    EXPECT_EQ(words_of(copy.instances), words_of(source.instances));
  });
  EXPECT_GE(allocations, malloc_can_fail ? 6U : 1U);
}

TEST(MemoryShortage, EachNameOfAClassEntryIsCopiedOrNull) {
  CIMclass entry;
  const unsigned allocations = for_each_failing_allocation(
      [&](AllocationFailure& failure) {
        entry.setClassName("CIM_Fan", "root/cimv2");
        failure.arm();
        entry.setClassName("CIM_Disk", "root/interop");
        failure.disarm();
        EXPECT_EQ((entry.className == nullptr) + (entry.nameSpace == nullptr),
                  failure.happened() ? 1 : 0);
        if (entry.className != nullptr) {
          EXPECT_STREQ(entry.className, "CIM_Disk");
        }
        if (entry.nameSpace != nullptr) {
          EXPECT_STREQ(entry.nameSpace, "root/interop");
        }
      },
      AllocationKind::c);
  EXPECT_EQ(allocations, malloc_can_fail ? 2U : 0U);
}

}  // namespace
}  // namespace zuCIM
