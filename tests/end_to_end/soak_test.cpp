#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "end_to_end/admitted_context.h"
#include "end_to_end/alert_subscription.h"
#include "support/comes_true.h"
#include "support/loopback.h"

// Several threads with contexts of their own, and one that two of them share, while indications
// arrive and contexts come and go. ZUCIM_SOAK_SECONDS says for how long, two by default; the rounds
// that show everything are made in any case.
namespace {

using namespace zuCIM;
using Clock = std::chrono::steady_clock;

constexpr unsigned worker_count = 3;
// The host that the shared context stands for; the workers' own come before it.
constexpr unsigned shared_host = worker_count;
// In as many rounds contexts are released one by one and all at once, both with a subscription that
// still stands and without.
constexpr unsigned fewest_rounds = 4;

std::atomic<unsigned> received = 0;

int take(std::string& text) {
  EXPECT_NE(text.find("<EXPMETHODCALL"), std::string::npos);
  ++received;
  return 0;
}

std::chrono::seconds soak_time() {
  const char* const seconds = std::getenv("ZUCIM_SOAK_SECONDS");
  return std::chrono::seconds(seconds != nullptr ? std::atoi(seconds) : 2);
}

std::string host_name(unsigned host) {
  return "esx" + std::to_string(host) + ".example";
}

// One simulator under a name and an address for each context, since a server has one context only.
class ManyNames {
 public:
  ManyNames() {
    for (unsigned host = 0; host <= shared_host; ++host)
      hosts_.add(host_name(host), {"127.0.0." + std::to_string(10 + host)});
    hosts_.add("console.example", {"127.0.1.1"}).set_host_name("console.example");
  }

 private:
  HostsTable hosts_;
};

// False when none comes within a minute.
bool wait_for_an_indication() {
  const unsigned before = received;
  return comes_true([before] { return received != before; });
}

void list_something(CIMcontainer& context) {
  context.setCurrentClass("CIM_NumericSensor", "");
  EXPECT_NE(context.Imethod_EnumerateInstanceNames(), nullptr);
  EXPECT_NE(context.Imethod_EnumerateInstances(0, 0, 0, 1, nullptr), 0);
  EXPECT_EQ(context.Imethod_GetClass(0, 1, 0, nullptr), 0);
  EXPECT_EQ(context.ChkCimStatus(), 0);
}

class Soak : public RegistryTest {
 protected:
  Soak() { prepare(); }

  std::uint32_t make(unsigned host) {
    const std::string name = host_name(host);
    const std::string port = std::to_string(simulator_.port());
    const _THR_SERVER_ server{name.c_str(), "root", "secret", port.c_str(), "", "", ""};
    return makeContainer(&server, host);
  }

  static CIMcontainer& found(std::uint32_t index) {
    return *getContainer(static_cast<unsigned>(getCIM(index)));
  }

  void prepare() noexcept {
    shared_ = make(shared_host);
    is_first_ready_ = false;
    is_over_ = (Clock::now() >= end_ && rounds_ >= fewest_rounds) || HasFailure();
  }

  void release_contexts() noexcept {
    if (rounds_ / 2 % 2 == 1)
      EXPECT_EQ(clearContainers(), 0);
    else
      while (getContainerSize() > 0) eraseContainers(*getContainer(0));
  }

  // A release cannot end a subscription on the server when the context is not busy, so the server
  // goes on sending to nobody. This keeps that from growing.
  void end_subscriptions() noexcept {
    CIMcontainer& context = found(make(shared_host));
    context.addContainer();
    context.ESXi_Occupied(true);
    EXPECT_EQ(context.unsubscribe_all(), 0);
    context.ESXi_Occupied(false);
    eraseContainers(context);
  }

  // Runs while no other thread works with contexts: only now they may be released, one by one or
  // all at once.
  void end_round() noexcept {
    ++rounds_;
    release_contexts();
    end_subscriptions();
    prepare();
  }

  // Every other round one worker leaves its subscription to the release, which then meets
  // indications that arrive.
  bool leaves_subscription(unsigned worker) const { return worker == 1 && rounds_ % 2 == 0; }

  void use_own(unsigned worker) {
    const std::uint32_t index = make(worker);
    CIMcontainer& context = found(index);
    context.addContainer();
    ASSERT_EQ(context.ChkCimStatus(), 0);
    // A context knows its subscription by the time when it was made, and here all have one server.
    context.createdAt += worker * 1000000;
    context.ESXi_Occupied(true);
    list_something(context);
    EXPECT_EQ(subscribe_to_alerts(context, &take, unused_port("0.0.0.0")), 0);
    ASSERT_NE(context.listener, nullptr);
    EXPECT_TRUE(comes_true([&] { return context.listener->check_Listener() == 0; }));
    EXPECT_TRUE(wait_for_an_indication());
    if (!leaves_subscription(worker)) {
      EXPECT_EQ(found(index).unsubscribe(), 0);
    }
    context.ESXi_Occupied(false);
  }

  // The first worker takes the shared context while it is free, the second one waits for it. What
  // orders their work is the busy flag alone.
  void use_shared(unsigned worker) {
    if (worker > 1) return;
    CIMcontainer& context = found(shared_);
    while (worker == 1 && !is_first_ready_.load(std::memory_order_relaxed))
      std::this_thread::yield();
    context.ESXi_Occupied(true);
    is_first_ready_.store(true, std::memory_order_relaxed);
    if (worker == 0) context.addContainer();
    list_something(context);
    context.ESXi_Occupied(false);
  }

  SimulatorProcess simulator_{{"--address", "0.0.0.0", "--indications", "100/s"}};
  ManyNames names_;
  const Clock::time_point end_ = Clock::now() + soak_time();
  std::uint32_t shared_ = 0;
  unsigned rounds_ = 0;
  bool is_over_ = false;
  std::atomic<bool> is_first_ready_ = false;
};

TEST_F(Soak, EndsWithNothingLeft) {
  std::barrier round_end(worker_count, [this]() noexcept { end_round(); });
  const auto work = [&](unsigned worker) {
    while (!is_over_) {
      use_shared(worker);
      use_own(worker);
      round_end.arrive_and_wait();
    }
  };
  std::vector<std::thread> workers;
  for (unsigned worker = 0; worker < worker_count; ++worker) workers.emplace_back(work, worker);
  for (std::thread& worker : workers) worker.join();
  EXPECT_GE(rounds_, fewest_rounds);
  EXPECT_EQ(getContainerSize(), 1);
  if (HasFailure()) std::fputs(simulator_.log().c_str(), stderr);
}

}  // namespace
