#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/run_program.h"
#include "support/simulator_process.h"

// The example programs do what they show.
namespace {

using ::testing::HasSubstr;

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
      {std::string(ZUCIM_EXAMPLES) + "/show_failure", "127.0.0.43", "9", "root", "secret"});
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_THAT(result.out + result.err, HasSubstr("7"));
}

}  // namespace
