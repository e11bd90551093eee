// Times whole operations over loopback beside libcurl alone and beside wbemcli, with the server in
// a process of its own. Usage: bench_wire [REGEX]     only what matches, for example '^wire/small/'
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstdlib>
#include <deque>
#include <thread>

#include "bare_client.h"
#include "context.h"
#include "documents.h"
#include "engines.h"
#include "race.h"
#include "replay_server.h"
#include "results.h"

namespace {

using namespace bench;

constexpr const char* host = "127.0.0.2";
constexpr std::size_t instances = 10000;

void enumerate(zuCIM::CIMcontainer& context) {
  context.Imethod_EnumerateInstances(0, 0, 0, 1, nullptr);
  expect_success(context);
}

// Runs wbemcli and throws away what it prints. Aborts when it fails.
void run_wbemcli(const std::string& url) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  const char* const arguments[] = {"wbemcli", "ei", "-nl", url.c_str(), nullptr};
  pid_t process = -1;
  int status = -1;
  if (posix_spawnp(&process, "wbemcli", &actions, nullptr, const_cast<char**>(arguments),
                   environ) != 0 ||
      waitpid(process, &status, 0) != process || status != 0)
    std::abort();
  posix_spawn_file_actions_destroy(&actions);
}

void enumeration(const std::string& port) {
  const char* const title = "wire/enumerate";
  if (!is_wanted(title, {"zuCIM", "libcurl", "libcurl and parse", "wbemcli"})) return;
  zuCIM::CIMcontainer& context = context_of(make_context(host, port));
  enumerate(context);
  BareClient bare(host, port, "EnumerateInstances", context.request);
  const std::string url =
      std::string("http://root:secret@") + host + ':' + port + "/root/cimv2:HOST_NumericSensor";
  add_result(title, "document", "bytes", static_cast<double>(bare.post().size()));
  add_result(title, "document", "items", static_cast<double>(instances));
  race(title,
       {{"zuCIM", [&] { enumerate(context); }},
        {"libcurl", [&] { bare.post(); }},
        {"libcurl and parse", [&] { parse_with_zucim(bare.post()); }},
        {"wbemcli", [&] { run_wbemcli(url); }, [] {}}},
       Clock::wall);
}

// The name of the instance that is asked for.
class InstanceName {
 public:
  InstanceName() { name_.ParseCIMXML(instance_names(1)); }

  zuCIM::CIMelement* get() { return name_.findelement(zuCIM::elem::INSTANCENAME, 0); }

 private:
  zuCIM::CIMelement name_;
};

void get_instance(zuCIM::CIMcontainer& context, InstanceName& name) {
  context.Imethod_GetInstance(name.get(), 0, nullptr);
  expect_success(context);
}

void small_request(const std::string& port) {
  const char* const title = "wire/small";
  if (!is_wanted(title, {"zuCIM", "libcurl"})) return;
  zuCIM::CIMcontainer& context = context_of(make_context(host, port));
  InstanceName name;
  get_instance(context, name);
  BareClient bare(host, port, "GetInstance", context.request);
  race(title, {{"zuCIM", [&] { get_instance(context, name); }}, {"libcurl", [&] { bare.post(); }}},
       Clock::wall);
}

constexpr int servers = 200;
constexpr int pollers = 8;

// Calls poll(0) to poll(servers - 1) from several threads.
template <class Poll>
void poll_all(Poll poll) {
  std::vector<std::thread> threads;
  for (int first = 0; first < pollers; ++first)
    threads.emplace_back([first, &poll] {
      for (int i = first; i < servers; i += pollers) poll(static_cast<std::size_t>(i));
    });
  for (std::thread& thread : threads) thread.join();
}

void polling(const std::string& port) {
  const char* const title = "wire/polling";
  if (!is_wanted(title, {"zuCIM", "libcurl"})) return;
  std::vector<unsigned> contexts;
  std::vector<InstanceName> names(servers);
  std::deque<BareClient> bare;
  for (int i = 0; i < servers; ++i)
    contexts.push_back(make_context("127.0.1." + std::to_string(i + 1), port));
  const auto poll = [&](std::size_t i) { get_instance(context_of(contexts[i]), names[i]); };
  poll(0);
  for (int i = 0; i < servers; ++i)
    bare.emplace_back("127.0.1." + std::to_string(i + 1), port, "GetInstance",
                      context_of(contexts[0]).request);
  add_result(title, "document", "items", servers);
  race(title,
       {{"zuCIM", [&] { poll_all(poll); }},
        {"libcurl", [&] { poll_all([&](std::size_t i) { bare[i].post(); }); }}},
       Clock::wall);
}

}  // namespace

int main(int argc, char* argv[]) {
  const ReplayServer server(
      {{"EnumerateInstances", typical_instances(instances)}, {"GetInstance", one_instance()}});
  prepare(argc, argv);
  enumeration(server.port());
  small_request(server.port());
  polling(server.port());
}
