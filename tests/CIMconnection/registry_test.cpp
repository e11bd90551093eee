#include "CIMconnection/registry.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "BRQ/Trace.h"
#include "CIMconnection/sample_server.h"
#include "support/registry_cleaner.h"
#include "support/trace_recorder.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr unsigned progress = 2;
constexpr unsigned warning = 4;
constexpr const char* source = "Src/CIMconnection";

class Registry : public testing::Test {
 protected:
  // Makes `count` contexts and returns the index of the first.
  std::uint32_t make(unsigned count) {
    const _THR_SERVER_ server = sample_server();
    const std::uint32_t first = makeContainer(&server, 0);
    for (unsigned made = 1; made < count; ++made) makeContainer(&server, 0);
    return first;
  }

  RegistryCleaner cleaner_;
};

// The counter is the process's, so this looks at it in a fresh one.
TEST(RegistryDeathTest, CountsIndicesFromZero) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto first_indices = [] {
    const _THR_SERVER_ server = sample_server();
    const bool right = makeContainer(&server, 0) == 0 && makeContainer(&server, 0) == 1;
    std::exit(right ? 0 : 1);
  };
  EXPECT_EXIT(first_indices(), testing::ExitedWithCode(0), "");
}

TEST_F(Registry, StartsEmpty) {
  EXPECT_EQ(getContainerSize(), 0);
  EXPECT_EQ(getContainer(0), nullptr);
}

TEST_F(Registry, MakesAContextFromAServerRecord) {
  const _THR_SERVER_ server{"far", "u", "p", "5989", "ca", "cert", "key"};
  const std::uint32_t index = makeContainer(&server, 0x123456789ABCDEF0U);
  ASSERT_EQ(getContainerSize(), 1);
  const CIMcontainer* const context = getContainer(0);
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(context->index, index);
  EXPECT_EQ(context->callerValue, 0x123456789ABCDEF0U);
  EXPECT_EQ(context->host, "far");
  EXPECT_EQ(context->user, "u");
  EXPECT_EQ(context->password, "p");
  EXPECT_EQ(context->scheme, "https");
  EXPECT_EQ(context->caFile, "ca");
  EXPECT_EQ(context->sslCert, "cert");
  EXPECT_EQ(context->sslKey, "key");
  EXPECT_EQ(context->messageId, 1000);
  EXPECT_EQ(context->currentClass, nullptr);
  EXPECT_EQ(context->listener, nullptr);
  EXPECT_EQ(context->methodName, nullptr);
  EXPECT_EQ(context->classes.className, nullptr);
  EXPECT_EQ(context->classes.next, nullptr);
  EXPECT_FALSE(context->esxiBusy);
}

TEST_F(Registry, TakesANullRecordForAnEmptyOne) {
  makeContainer(nullptr, 0);
  ASSERT_EQ(getContainerSize(), 1);
  EXPECT_EQ(getContainer(0)->host, "");
  EXPECT_EQ(getContainer(0)->scheme, "http");
}

TEST_F(Registry, GivesIndicesOneAfterTheOther) {
  const std::uint32_t first = make(3);
  EXPECT_EQ(getContainer(0)->index, first);
  EXPECT_EQ(getContainer(1)->index, first + 1);
  EXPECT_EQ(getContainer(2)->index, first + 2);
}

TEST_F(Registry, NeverGivesAnIndexTwice) {
  const std::uint32_t first = make(2);
  remove_context(1);
  remove_context(0);
  EXPECT_EQ(make(1), first + 2);
}

TEST_F(Registry, TracesTheIndexItIsAboutToGive) {
  const std::uint32_t first = make(1);
  TraceRecorder traces;
  const _THR_SERVER_ server = sample_server("far");
  makeContainer(&server, 0);
  EXPECT_EQ(traces.lines().size(), 1U);
  EXPECT_EQ(traces.count(progress, source, 204,
                         "[far] makeContainer() index=" + std::to_string(first + 1)),
            1);
}

TEST_F(Registry, HasNoContextPastItsEnd) {
  make(2);
  EXPECT_NE(getContainer(1), nullptr);
  EXPECT_EQ(getContainer(static_cast<unsigned>(getContainerSize())), nullptr);
  EXPECT_EQ(getContainer(0xFFFFFFFF), nullptr);
}

TEST_F(Registry, GrowsBySixteenContexts) {
  make(1);
  EXPECT_EQ(gCIMContainers.maxargc, 16U);
  EXPECT_EQ(gCIMContainers.elementSize, static_cast<std::int32_t>(sizeof(CIMcontainer)));
  make(15);
  EXPECT_EQ(gCIMContainers.maxargc, 16U);
  make(1);
  EXPECT_EQ(gCIMContainers.maxargc, 32U);
}

TEST_F(Registry, NeverMovesAContext) {
  make(1);
  CIMcontainer* const context = getContainer(0);
  make(100);
  EXPECT_EQ(getContainer(0), context);
  CIMcontainer* const last = getContainer(100);
  remove_context(0);
  EXPECT_EQ(getContainer(99), last);
}

TEST_F(Registry, FindsContextsAfterOthersWereRemoved) {
  const std::uint32_t first = make(3);
  remove_context(0);
  EXPECT_EQ(getCIM(first + 1), 0);
  EXPECT_EQ(getCIM(first + 2), 1);
  EXPECT_EQ(getCIM(first), -1);
}

TEST_F(Registry, FindsEveryContextAmongMany) {
  const std::uint32_t first = make(200);
  for (const unsigned position : {150U, 3U, 0U}) remove_context(position);
  std::set<std::uint32_t> present;
  for (int position = 0; position < getContainerSize(); ++position) {
    const std::uint32_t index = getContainer(static_cast<unsigned>(position))->index;
    EXPECT_EQ(getCIM(index), position);
    present.insert(index);
  }
  for (std::uint32_t index = first; index < first + 200; ++index)
    EXPECT_EQ(getCIM(index) == -1, present.count(index) == 0) << index;
}

TEST_F(Registry, TracesAnUnknownIndex) {
  TraceRecorder traces;
  EXPECT_EQ(getCIM(12345678), -1);
  EXPECT_EQ(traces.count(warning, source, 75, "getCIM: ERROR: index=12345678 size=0"), 1);
  make(2);
  traces.clear();
  EXPECT_EQ(getCIM(12345678), -1);
  EXPECT_EQ(traces.lines().size(), 1U);
  EXPECT_EQ(traces.count(warning, source, 75, "getCIM: ERROR: index=12345678 size=2"), 1);
}

TEST_F(Registry, FindsTheFirstPositionAfterAnAssignmentBrokeTheOrder) {
  const std::uint32_t first = make(4);
  remove_context(0);
  // Positions 0, 1, 2 have the indices first + 3, first + 2, first + 3 now.
  *getContainer(0) = *getContainer(2);
  EXPECT_EQ(getCIM(first + 3), 0);
  EXPECT_EQ(getCIM(first + 2), 1);
  EXPECT_EQ(getCIM(first + 1), -1);
}

TEST_F(Registry, KeepsItsOrderWhenContextsElsewhereAreAssigned) {
  const std::uint32_t first = make(3);
  CIMcontainer copy;
  copy = *getContainer(2);
  copy = *getContainer(0);
  remove_context(0);
  EXPECT_EQ(getCIM(first + 2), 1);
}

TEST_F(Registry, IsSafeAfterItLostItsSlots) {
  const std::uint32_t first = make(2);
  // What the array leaves of itself when it cannot grow.
  while (gCIMContainers.argc > 0) remove_context(0);
  std::free(gCIMContainers.argv);
  gCIMContainers.argv = nullptr;
  gCIMContainers.argc = 2;
  gCIMContainers.maxargc = 2;
  EXPECT_EQ(getContainerSize(), 2);
  EXPECT_EQ(getContainer(0), nullptr);
  EXPECT_EQ(getCIM(first), -1);
  EXPECT_EQ(getCIM(0), -1);
  const std::uint32_t next = make(1);
  EXPECT_EQ(getCIM(next), 2);
  EXPECT_EQ(getCIM(first), -1);
  EXPECT_EQ(getContainer(1), nullptr);
  remove_context(2);
  gCIMContainers.setmaxargc(0);
}

TEST_F(Registry, GivesAnIndexEvenWhenTheContextCannotBeAppended) {
  const std::uint32_t first = make(1);
  remove_context(0);
  gCIMContainers.setmaxargc(0);
  gCIMContainers.elementSize = 1;
  TraceRecorder traces;
  const _THR_SERVER_ server = sample_server();
  const std::uint32_t index = makeContainer(&server, 0);
  EXPECT_EQ(index, first + 1);
  EXPECT_EQ(traces.count(0x40000000, "Src/CIMclasses",
                         "putargv: Exception raised: different length of array elements!"),
            1);
  EXPECT_EQ(gCIMContainers.maxargc, 0U);
  EXPECT_EQ(traces.texts(0x40000000).size(), 1U);
  EXPECT_EQ(getCIM(index), -1);
  gCIMContainers.setmaxargc(0);
  EXPECT_EQ(make(1), first + 2);
}

TEST_F(Registry, LetsThreadsMakeAndFindContextsAtOnce) {
  constexpr unsigned thread_count = 4;
  constexpr unsigned contexts_each = 500;
  std::vector<std::vector<std::uint32_t>> indices(thread_count);
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  for (unsigned thread = 0; thread < thread_count; ++thread)
    threads.emplace_back([&, thread] {
      for (unsigned made = 0; made < contexts_each; ++made) {
        const std::uint64_t mark = thread * 1000 + made;
        const _THR_SERVER_ server = sample_server();
        const std::uint32_t index = makeContainer(&server, mark);
        indices[thread].push_back(index);
        const int position = getCIM(index);
        const CIMcontainer* const context = getContainer(static_cast<unsigned>(position));
        if (context == nullptr || context->callerValue != mark || context->host.empty()) ++wrong;
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  std::set<std::uint32_t> different;
  for (const auto& list : indices) different.insert(list.begin(), list.end());
  EXPECT_EQ(different.size(), thread_count * contexts_each);
  EXPECT_EQ(getContainerSize(), static_cast<int>(thread_count * contexts_each));
}

TEST_F(Registry, ShowsWholeContextsOnlyWhileOthersAreMade) {
  constexpr int context_count = 400;
  const std::string host = "a host name that needs memory of its own.example";
  std::thread maker([&host] {
    const _THR_SERVER_ server = sample_server(host.c_str());
    for (int made = 0; made < context_count; ++made) makeContainer(&server, 0);
  });
  int wrong = 0;
  for (int size = 0; size < context_count;) {
    size = getContainerSize();
    for (int position = 0; position < size; ++position)
      if (getContainer(static_cast<unsigned>(position))->host != host) ++wrong;
  }
  maker.join();
  EXPECT_EQ(wrong, 0);
}

// A trace sink that looks the registry's size up for each line.
class InquisitiveSink {
 public:
  InquisitiveSink() {
    BRQ::set_trace_sink([](const BRQ::TraceLine&) { getContainerSize(); });
    BRQ_MODULE_INFO_zuCIM.set_trace_mask(~0U);
  }
  ~InquisitiveSink() {
    BRQ_MODULE_INFO_zuCIM.set_trace_mask(0);
    BRQ::set_trace_sink({});
  }
  InquisitiveSink(const InquisitiveSink&) = delete;
  InquisitiveSink& operator=(const InquisitiveSink&) = delete;
};

TEST_F(Registry, LetsATraceSinkLookItsSizeUp) {
  constexpr int context_count = 1000;
  const InquisitiveSink sink;
  std::thread maker([] {
    const _THR_SERVER_ server = sample_server();
    for (int made = 0; made < context_count; ++made) makeContainer(&server, 0);
  });
  CIMconnection connection;
  while (getContainerSize() < context_count) connection.SetCimStatus_FL(0, "t", "x", 1);
  maker.join();
  EXPECT_EQ(getContainerSize(), context_count);
}

}  // namespace
}  // namespace zuCIM
