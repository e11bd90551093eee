#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>

#include "CIMlistener/running_listener.h"

// A process may end while indications are being delivered. Nothing here is ever released.
namespace {

std::atomic<int> calls = 0;

int count_call(std::string&) {
  calls.fetch_add(1);
  return 0;
}

int leave(std::string&) {
  if (calls.fetch_add(1) == 50) std::exit(7);
  return 0;
}

int never_return(std::string&) {
  calls.fetch_add(1);
  for (;;) ::pause();
}

void send_for_ever(std::uint16_t port) {
  for (;;) {
    try {
      const Descriptor socket = connect_to("127.0.0.1", port);
      send_all(socket, export_request("1042"));
      receive_all(socket);
    } catch (const std::system_error&) {
      // The listener may have gone.
    }
  }
}

zuCIM::CIMindication* start_delivery(zuCIM::IndicationCallback callback) {
  static zuCIM::CIMindication* listener = nullptr;
  listener = new zuCIM::CIMindication;
  listener->pCallBack = callback;
  listener->port = 0;
  if (listener->start_Listener() != 0) std::_Exit(2);
  if (!comes_true([] { return listener->check_Listener() == 0; })) std::_Exit(3);
  for (int sender = 0; sender < 3; ++sender)
    std::thread(send_for_ever, port_of(*listener)).detach();
  return listener;
}

void wait_for_calls(int wanted) {
  if (!comes_true([wanted] { return calls.load() >= wanted; })) std::_Exit(4);
}

void exit_during_delivery() {
  start_delivery(&count_call);
  wait_for_calls(100);
  std::exit(7);
}

void exit_from_a_callback() {
  start_delivery(&leave);
  for (;;) ::pause();
}

void exit_with_callbacks_that_never_return() {
  start_delivery(&never_return);
  wait_for_calls(3);
  std::exit(7);
}

void exit_after_destroying_the_listener() {
  const zuCIM::CIMindication* const listener = start_delivery(&count_call);
  wait_for_calls(20);
  delete listener;
  std::exit(7);
}

class ListenerExitDeathTest : public testing::Test {
 protected:
  ListenerExitDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ListenerExitDeathTest, TheProcessMayEndDuringDelivery) {
  EXPECT_EXIT(exit_during_delivery(), testing::ExitedWithCode(7), "");
}

TEST_F(ListenerExitDeathTest, ACallbackMayEndTheProcess) {
  EXPECT_EXIT(exit_from_a_callback(), testing::ExitedWithCode(7), "");
}

TEST_F(ListenerExitDeathTest, TheProcessMayEndDuringCallbacks) {
  EXPECT_EXIT(exit_with_callbacks_that_never_return(), testing::ExitedWithCode(7), "");
}

TEST_F(ListenerExitDeathTest, TheProcessMayEndAfterItsListener) {
  EXPECT_EXIT(exit_after_destroying_the_listener(), testing::ExitedWithCode(7), "");
}

}  // namespace
