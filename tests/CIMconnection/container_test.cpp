#include "zuCIM/container.h"

#include <gtest/gtest.h>

#include "CIMconnection/registry.h"
#include "CIMconnection/sample_server.h"
#include "CIMconnection/sleepless_clock.h"
#include "support/trace_recorder.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

TEST(Container, StartsWithoutAnything) {
  const CIMcontainer context;
  EXPECT_EQ(context.classes.className, nullptr);
  EXPECT_EQ(context.currentClass, nullptr);
  EXPECT_EQ(context.listener, nullptr);
  EXPECT_EQ(context.methodName, nullptr);
  EXPECT_EQ(context.index, no_index);
  EXPECT_EQ(context.callerValue, 0U);
  EXPECT_EQ(context.mostDeletions, subscription_limit::most_deletions);
}

TEST(ContainerCopy, TakesEverythingButTheListener) {
  CIMcontainer original;
  original.host = "far";
  original.currentClass = original.classes.makeNextClass("CIM_Sensor", "root/cimv2");
  original.classes.instances = new CIMelement;
  original.classes.instances->name = known_cim_elements[elem::INSTANCE];
  original.methodName = known_cim_imethods[imethod::GetClass];
  original.index = 77;
  original.callerValue = 88;
  original.mostDeletions = 9;
  original.listenerLimits.stallSeconds = 8;
  CIMindication* const listener = new CIMindication;
  original.listener = listener;
  CIMcontainer copy;
  copy = original;
  EXPECT_EQ(original.listener, listener);
  EXPECT_EQ(copy.host, "far");
  EXPECT_STREQ(copy.classes.className, "CIM_Sensor");
  ASSERT_NE(copy.classes.instances, nullptr);
  EXPECT_NE(copy.classes.instances, original.classes.instances);
  EXPECT_EQ(copy.currentClass, &original.classes);
  EXPECT_EQ(copy.methodName, original.methodName);
  EXPECT_EQ(copy.index, 77U);
  EXPECT_EQ(copy.callerValue, 88U);
  EXPECT_EQ(copy.mostDeletions, 9U);
  EXPECT_EQ(copy.listenerLimits.stallSeconds, 8);
  EXPECT_EQ(copy.listener, nullptr);
}

TEST(ContainerCopy, TakesTheTargetsListenerAway) {
  const CIMcontainer original;
  CIMcontainer copy;
  copy.listener = new CIMindication;
  copy = original;
  EXPECT_EQ(copy.listener, nullptr);
}

TEST(ContainerCopy, IsMadeByTheCopyConstructorToo) {
  CIMcontainer original;
  original.index = 5;
  original.classes.setClassName("A", "b");
  const CIMcontainer copy(original);
  EXPECT_EQ(copy.index, 5U);
  EXPECT_STREQ(copy.classes.className, "A");
  EXPECT_STREQ(copy.classes.nameSpace, "b");
}

TEST(ContainerCopy, OfACopyConstructorReleasesNothing) {
  const CIMcontainer original;
  const TraceRecorder traces;
  const CIMcontainer copy(original);
  EXPECT_TRUE(traces.lines().empty());
}

TEST(ContainerCopy, OntoItselfChangesNothing) {
  CIMcontainer context;
  context.classes.setClassName("A", "b");
  context.currentClass = &context.classes;
  const CIMcontainer& same = context;
  context = same;
  EXPECT_STREQ(context.classes.className, "A");
  EXPECT_EQ(context.currentClass, &context.classes);
}

TEST(ContainerRelease, GivesBackWhatTheContextHolds) {
  CIMcontainer context;
  context.skipIpCheck = true;
  context.esxiBusy = true;
  ASSERT_EQ(context.initCurlHandle(), 0);
  context.esxiBusy = false;
  context.currentClass = context.classes.makeNextClass("A", "b");
  context.classes.makeNextClass("C", "d");
  context.request = "r";
  context.cimStatus = 5;
  context.index = 9;
  context.free_all();
  EXPECT_EQ(context.currentClass, nullptr);
  EXPECT_EQ(context.classes.className, nullptr);
  EXPECT_EQ(context.classes.next, nullptr);
  EXPECT_EQ(context.curl, nullptr);
  EXPECT_EQ(context.request, "");
  EXPECT_FALSE(context.esxiBusy);
  EXPECT_EQ(context.cimStatus, 0);
  EXPECT_EQ(context.index, 9U);
}

TEST(ContainerRelease, WaitsForAnotherHolder) {
  CIMcontainer context;
  context.skipIpCheck = true;
  context.ESXi_Occupied(true);
  ASSERT_EQ(context.initCurlHandle(), 0);
  bool had_handle = false;
  const SleeplessClock clock([&](std::size_t number) {
    if (number != 3) return;
    had_handle = context.curl != nullptr;
    context.ESXi_Occupied(false);
  });
  context.free_all();
  EXPECT_EQ(clock.sleeps().size(), 3U);
  EXPECT_TRUE(had_handle);
  EXPECT_EQ(context.curl, nullptr);
  EXPECT_FALSE(context.esxiBusy);
}

TEST(ContainerRelease, LeavesTheListenerAlone) {
  CIMcontainer context;
  CIMindication* const listener = new CIMindication;
  context.listener = listener;
  context.free_all();
  EXPECT_EQ(context.listener, listener);
}

// The leak checker judges what happens after the end.
TEST(ContainerDeathTest, ContextsThatAreStillRegisteredAreDestroyedAtExit) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto end_with_contexts = [] {
    for (int made = 0; made < 3; ++made) {
      CIMcontainer* const context =
          make_context(sample_server("a host name of some length.example"));
      context->skipIpCheck = true;
      context->ESXi_Occupied(true);
      context->initCurlHandle();
      context->currentClass = context->classes.makeNextClass("CIM_Sensor", "root/cimv2");
    }
    std::exit(0);
  };
  EXPECT_EXIT(end_with_contexts(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace zuCIM
