#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "end_to_end/interop_count.h"
#include "support/child_process.h"
#include "support/loopback.h"
#include "support/registry_cleaner.h"
#include "support/run_program.h"
#include "support/simulator_process.h"

// The example programs do what they show.
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class Examples : public ::testing::Test {
 protected:
  ProgramResult run(const std::string& example, const std::string& password = "secret") const {
    return run_program({std::string(ZUCIM_EXAMPLES) + "/" + example, simulator_.address(),
                        std::to_string(simulator_.port()), "root", password});
  }

  void expect_output(const std::string& example, const std::string& part) const {
    const ProgramResult result = run(example);
    EXPECT_EQ(result.exit_status, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr(part));
  }

  const SimulatorProcess simulator_;
};

TEST_F(Examples, ListInstancesPrintsNamesAndReadings) {
  expect_output("list_instances", "DeviceID=");
  expect_output("list_instances", "rpm");
}

TEST_F(Examples, WalkClassesPrintsKeysAndMethods) {
  expect_output("walk_classes", "  string Name  (key)\n");
  expect_output("walk_classes", "RequestStateChange(RequestedState, Job, TimeoutPeriod)");
}

TEST_F(Examples, ChangeInstanceLeavesNothingBehind) {
  const std::string expected =
      "created  SELECT * FROM CIM_AlertIndication\n"
      "changed  SELECT * FROM CIM_InstCreation\n"
      "deleted\n";
  EXPECT_EQ(run("change_instance").out, expected);
  EXPECT_EQ(run("change_instance").out, expected);
}

TEST_F(Examples, CallMethodPrintsTheOutParameters) {
  expect_output("call_method", "ArrayUint32    2 3 5 7\n");
  expect_output("call_method", "ScalarSint16   -40\n");
}

TEST_F(Examples, NamespacesPrintsBoth) {
  expect_output("namespaces", "root/cimv2\nroot/interop\n");
}

TEST_F(Examples, ADeadServerIsReported) {
  const ProgramResult result = run_program(
      {std::string(ZUCIM_EXAMPLES) + "/show_failure", "127.0.0.43", dead_port, "root", "secret"});
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_THAT(result.out + result.err, HasSubstr("ErrCode:7 "));
}

class WatchIndications : public RegistryTest {
 protected:
  using Command = std::vector<std::string>;

  Command command(const Command& more = {}, const std::string& password = "secret") const {
    Command words{std::string(ZUCIM_EXAMPLES) + "/watch_indications", simulator_.address(),
                  std::to_string(simulator_.port()), "root", password};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }

  // How many instances of a subscription the server has, as another client sees it.
  std::size_t on_server() const {
    const SmallNetwork network(simulator_.address());
    zuCIM::CIMcontainer* const context =
        admitted_context(std::to_string(simulator_.port()), "secret");
    const std::size_t count = interop_instance_count(*context);
    EXPECT_EQ(context->ChkCimStatus(), 0);
    context->ESXi_Occupied(false);
    zuCIM::eraseContainers(*context);
    return count;
  }

  const SimulatorProcess simulator_{{"--indications", "20/s"}};
};

std::size_t count_of(const std::string& part, const std::string& text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST_F(WatchIndications, PrintsThreeAndThenUnsubscribes) {
  const ProgramResult result = run_program(command({"0", "3"}));
  EXPECT_EQ(result.exit_status, 0) << result.err;
  EXPECT_THAT(result.out, StartsWith("Subscribed; "));
  EXPECT_EQ(count_of("\n\nCIM_AlertIndication, 20", result.out), 3U) << result.out;
  EXPECT_EQ(count_of("\n  Message                  Test indication ", result.out), 3U);
  EXPECT_THAT(result.out, EndsWith("\n\nUnsubscribed; nothing of the subscription is left on the "
                                   "server.\n"));
  EXPECT_EQ(on_server(), 0U);
}

TEST_F(WatchIndications, UnsubscribesWhenASignalEndsIt) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    ChildProcess watch(command());
    EXPECT_THAT(watch.read_line(), StartsWith("Subscribed; "));
    EXPECT_EQ(on_server(), 3U);
    watch.send(signal);
    EXPECT_THAT(watch.read_rest(), EndsWith("is left on the server.\n"));
    EXPECT_EQ(watch.wait(), 0) << watch.standard_error();
    EXPECT_EQ(on_server(), 0U);
  }
}

TEST_F(WatchIndications, UnsubscribesWhenNobodyReadsAnyMore) {
  std::string line;
  for (const std::string& word : command()) line += "'" + word + "' ";
  const ProgramResult result = run_program({"sh", "-c", line + "| head -n 1"});
  EXPECT_THAT(result.out, StartsWith("Subscribed; "));
  EXPECT_EQ(on_server(), 0U);
}

TEST_F(WatchIndications, TellsOfARefusedPassword) {
  const ProgramResult result = run_program(command({}, "wrong"));
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_THAT(result.err, HasSubstr("The server refuses this user or password.\n"));
}

TEST_F(WatchIndications, TellsOfADeadServer) {
  const ProgramResult result = run_program({std::string(ZUCIM_EXAMPLES) + "/watch_indications",
                                            "127.0.0.43", dead_port, "root", "secret"});
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_THAT(result.err, HasSubstr("There is no connection to the server.\n"));
}

TEST_F(WatchIndications, TellsOfAPortInUse) {
  const Descriptor taken = listen_on("0.0.0.0", 0);
  const std::string port = std::to_string(local_port(taken));
  const ProgramResult result = run_program(command({port}));
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_EQ(result.err, "Cannot listen on port " + port + "; is it in use?\n");
  EXPECT_EQ(on_server(), 0U);
}

TEST_F(WatchIndications, TellsItsUsage) {
  const ProgramResult result = run_program({std::string(ZUCIM_EXAMPLES) + "/watch_indications"});
  EXPECT_EQ(result.exit_status, 2);
  EXPECT_THAT(result.err, HasSubstr("HOST PORT USER PASSWORD [LISTENER_PORT [COUNT]]"));
}

}  // namespace
