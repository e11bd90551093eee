#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <optional>
#include <thread>

#include "support/scripted_server.h"
#include "wire/wire_client.h"
#include "zuCIM/container.h"

// The leak checker's switch, where there is one.
extern "C" [[gnu::weak]] void __lsan_disable();

// A process that ends while a thread is in the midst of an exchange.

namespace zuCIM {
namespace {

// What happens when all statics of the library and of the test are gone: it is made before them.
struct LastAct {
  ~LastAct() {
    if (act != nullptr) act();
  }
  void (*act)() = nullptr;
};

[[gnu::init_priority(101)]] LastAct last_act;

// A server that keeps its answer back, and the thread that waits for it. Nobody destroys it as a
// whole.
struct Scene {
  WakeUp may_answer;
  std::optional<ScriptedServer> server{
      script::Steps{script::ReadRequest{}, script::WaitForEvent{&may_answer},
                    script::Send{http_answer(good_document)}, script::Close{}}};
  std::promise<int> status;
};
Scene* scene = nullptr;

void send_request(CIMcontainer* context) {
  // What the TLS library makes for a thread after its own end is never freed.
  if (__lsan_disable != nullptr) __lsan_disable();
  context->skipIpCheck = true;
  context->ESXi_Occupied(true);
  context->request = "<CIM/>";
  scene->status.set_value(context->sendRequest_recvResponse("GetClass", "root/cimv2"));
}

// The exchange must come to its good end even now.
void finish_exchange() {
  scene->may_answer.set();
  std::future<int> status = scene->status.get_future();
  if (status.wait_for(std::chrono::seconds(20)) != std::future_status::ready) _exit(2);
  if (status.get() != 0) _exit(3);
  scene->server.reset();
}

void exit_during_an_exchange() {
  scene = new Scene;
  const std::string port = scene->server->port_text();
  const _THR_SERVER_ server{scene->server->address().c_str(), "u", "p", port.c_str(), "", "", ""};
  makeContainer(&server, 0);
  std::thread(send_request, getContainer(0)).detach();
  if (!scene->server->wait_for_requests(1)) _exit(4);
  last_act.act = &finish_exchange;
  std::exit(7);
}

TEST(ExitDeathTest, LeavesARunningExchangeAlone) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(exit_during_an_exchange(), testing::ExitedWithCode(7), "");
}

}  // namespace
}  // namespace zuCIM
