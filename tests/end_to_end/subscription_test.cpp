#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>
#include <filesystem>
#include <future>
#include <iterator>
#include <latch>
#include <string>
#include <thread>

#include "CIMlistener/received.h"
#include "CIMoperations/recording_clock.h"
#include "end_to_end/admitted_context.h"
#include "end_to_end/alert_subscription.h"
#include "end_to_end/interop_count.h"
#include "support/comes_true.h"
#include "support/failing_allocator.h"
#include "support/loopback.h"
#include "support/run_program.h"

// Subscribing to the simulator, with the indications that it sends.
namespace {

using namespace zuCIM;

std::size_t entries_of(const char* folder) {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

std::size_t thread_count() {
  return entries_of("/proc/self/task");
}

std::size_t descriptor_count() {
  return entries_of("/proc/self/fd");
}

class Subscription : public RegistryTest {
 protected:
  int subscribe() {
    const int outcome = subscribe_to_alerts(*context_, &Received::take, port_);
    const auto is_listening = [this] { return context_->listener->check_Listener() == 0; };
    EXPECT_TRUE(outcome != 0 || comes_true(is_listening));
    return outcome;
  }

  // Has the simulator send indications.
  void send(std::uint32_t count) {
    context_->setCurrentClass("DEMO_Service", "");
    CIMelement* const service = context_->Imethod_EnumerateInstanceNames();
    ASSERT_NE(service, nullptr);
    const _paramvalue_ parameters[] = {{"Count", type::uint32, 1, &count},
                                       {nullptr, 0, 0, nullptr}};
    EXPECT_EQ(context_->performExtrinsicMethod("SendTestIndications", service, parameters), 0);
  }

  std::size_t instance_count() { return interop_instance_count(*context_); }

  SimulatorProcess simulator_;
  SmallNetwork network_{simulator_.address()};
  CIMcontainer* context_ = admitted_context(std::to_string(simulator_.port()), "secret");
  const int port_ = unused_port("0.0.0.0");
  Received received_;
};

TEST_F(Subscription, BringsIndications) {
  ASSERT_EQ(subscribe(), 0);
  EXPECT_EQ(context_->subscribe_check(), 0U);
  send(3);
  for (const std::string& text : received_.wait_for(3)) {
    EXPECT_EQ(text.find("<?xml"), 0U);
    EXPECT_NE(text.find("CIM_AlertIndication"), std::string::npos);
  }
  EXPECT_EQ(received_.texts().size(), 3U);
  EXPECT_EQ(context_->unsubscribe(), 0);
  EXPECT_EQ(context_->subscribe_check(), 0x1111U);
  EXPECT_EQ(instance_count(), 0U);
}

TEST_F(Subscription, EndsFromWithinTheCallback) {
  ASSERT_EQ(subscribe(), 0);
  // The server sends before it answers, and the context has one thread at a time.
  std::latch answered(1);
  std::promise<int> outcome;
  received_.on_each([&](const std::string&) {
    answered.wait();
    outcome.set_value(context_->unsubscribe());
  });
  send(1);
  answered.count_down();
  ASSERT_EQ(received_.wait_for(1).size(), 1U);
  EXPECT_EQ(outcome.get_future().get(), 0);
  EXPECT_EQ(context_->listener, nullptr);
}

// The other client's instances have another SystemName.
TEST_F(Subscription, OfAllClientsIsDeletedAtOnce) {
  ASSERT_EQ(subscribe(), 0);
  CIMcontainer other;
  other = *context_;
  ++other.createdAt;
  EXPECT_EQ(other.unsubscribe(), 0);
  EXPECT_EQ(instance_count(), 3U);
  EXPECT_EQ(other.subscribe_check(), 0x1111U);
  EXPECT_EQ(other.unsubscribe_all(), 0);
  EXPECT_EQ(instance_count(), 0U);
  EXPECT_EQ(context_->subscribe_check(), 0x111U);
  EXPECT_EQ(context_->unsubscribe(), 0);
}

// The context is busy, so that it can unsubscribe, and is then waited for, without real time.
TEST_F(Subscription, EndsOnTheServerWhenAllIsReleased) {
  ASSERT_EQ(subscribe(), 0);
  {
    const RecordingClock clock;
    EXPECT_EQ(clearContainers(), 0);
  }
  context_ = admitted_context(std::to_string(simulator_.port()), "secret");
  EXPECT_EQ(instance_count(), 0U);
}

// Whether malloc was told at the start to keep no caches, which would blur the count of bytes.
bool has_plain_malloc() {
  return std::getenv("MALLOC_ARENA_MAX") != nullptr;
}

TEST_F(Subscription, LeavesNothingAfterManyCycles) {
  constexpr int cycles = 200;
  // A sanitizer starts a thread of its own with the first thread of the process; it is to count.
  std::thread([] {}).join();
  const std::size_t threads = thread_count();
  const auto cycle = [this] {
    ASSERT_EQ(subscribe(), 0);
    send(1);
    EXPECT_EQ(received_.wait_for(1).size(), 1U);
    EXPECT_EQ(context_->unsubscribe(), 0);
    received_.clear();
  };
  const auto is_quiet = [threads] { return thread_count() <= threads; };
  // What is made once, and stays, is made now.
  for (int warm_up = 0; warm_up < 20; ++warm_up) cycle();
  EXPECT_EQ(instance_count(), 0U);
  ASSERT_TRUE(comes_true(is_quiet));
  const std::size_t descriptors = descriptor_count();
  const std::size_t bytes = mallinfo2().uordblks;
  for (int turn = 0; turn < cycles; ++turn) cycle();
  EXPECT_EQ(instance_count(), 0U);
  EXPECT_TRUE(comes_true(is_quiet)) << thread_count();
  EXPECT_EQ(descriptor_count(), descriptors);
  // Less than the smallest block for each cycle.
  EXPECT_TRUE(!has_plain_malloc() || mallinfo2().uordblks < bytes + cycles * 16)
      << mallinfo2().uordblks - bytes;
}

#if !ZUCIM_SANITIZER_ALLOCATES
// The test above once more, with its count of bytes.
TEST(SubscriptionMemory, IsTheSameAfterManyCycles) {
  const std::string program = std::filesystem::read_symlink("/proc/self/exe");
  const ProgramResult run =
      run_program({"env", "MALLOC_ARENA_MAX=1", "GLIBC_TUNABLES=glibc.malloc.tcache_count=0",
                   program, "--gtest_filter=Subscription.LeavesNothingAfterManyCycles"});
  EXPECT_EQ(run.exit_status, 0) << run.out;
  EXPECT_NE(run.out.find("[  PASSED  ] 1 test."), std::string::npos) << run.out;
}
#endif

}  // namespace
