#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "shared_simulator.h"
#include "support/certificates.h"
#include "support/run_program.h"

// An independent client, of the Debian package sblim-wbemcli, must be content with the simulator.

namespace {

using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::SizeIs;

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string with_credentials(const std::string& url, const std::string& credentials) {
  const std::size_t host = url.find("://") + 3;
  return url.substr(0, host) + credentials + '@' + url.substr(host);
}

ProgramResult wbemcli(const SimulatorProcess& simulator, const std::string& operation,
                      const std::string& object, const std::vector<std::string>& more = {}) {
  std::vector<std::string> command{"wbemcli", operation, "-nl", "-noverify"};
  command.insert(command.end(), more.begin(), more.end());
  command.push_back(with_credentials(simulator.url(), "root:secret") + '/' + object);
  return run_program(command);
}

// Runs wbemcli, which must have nothing to complain of; the lines it prints.
std::vector<std::string> list(const SimulatorProcess& simulator, const std::string& operation,
                              const std::string& object) {
  const ProgramResult result = wbemcli(simulator, operation, object);
  EXPECT_EQ(result.exit_status, 0) << operation << ' ' << object;
  EXPECT_EQ(result.err, "") << operation << ' ' << object;
  return lines_of(result.out);
}

std::vector<std::string> class_names(const SimulatorProcess& simulator, const std::string& top) {
  std::vector<std::string> names;
  for (const std::string& each : list(simulator, "ecn", top)) {
    names.push_back(each.substr(each.rfind(':') + 1));
  }
  return names;
}

TEST(Wbemcli, GoesThroughEveryClassWithEveryReadingOperation) {
  for (const std::string name_space : {"root/cimv2:", "root/interop:"}) {
    auto names = class_names(shared_simulator(), name_space + "CIM_ManagedElement");
    const auto associations = class_names(shared_simulator(), name_space + "CIM_Dependency");
    names.insert(names.end(), associations.begin(), associations.end());
    for (const std::string& each : names) {
      EXPECT_THAT(list(shared_simulator(), "gc", name_space + each), Contains(EndsWith(':' + each)))
          << each;
      list(shared_simulator(), "ei", name_space + each);
      list(shared_simulator(), "ein", name_space + each);
    }
  }
}

void lists_classes_and_instances(const SimulatorProcess& simulator) {
  const std::string host = simulator.address() + ':' + std::to_string(simulator.port());
  EXPECT_THAT(list(simulator, "ecn", "root/cimv2:CIM_Sensor"),
              Contains(host + "/root/cimv2:HOST_NumericSensor"));
  EXPECT_THAT(list(simulator, "ec", "root/cimv2:CIM_Sensor"), Contains(HasSubstr("BaseUnits")));
  EXPECT_THAT(list(simulator, "ein", "root/cimv2:CIM_NumericSensor"), SizeIs(31));
  EXPECT_THAT(list(simulator, "ei", "root/cimv2:CIM_NumericSensor"),
              Contains("-ElementName=\"CPU 1 Temperature\""));
  const auto names = list(simulator, "ein", "root/cimv2:HOST_RecordLog");
  ASSERT_THAT(names, SizeIs(1));
  EXPECT_THAT(list(simulator, "gi", names.front().substr(names.front().find('/') + 1)),
              Contains("-CurrentNumberOfRecords=12"));
  EXPECT_THAT(list(simulator, "ei", "root/interop:CIM_Namespace"),
              Contains("-Name=\"root/interop\""));
}

TEST(Wbemcli, ListsClassesAndInstancesOverHttp) {
  lists_classes_and_instances(shared_simulator());
}

TEST(Wbemcli, ListsClassesAndInstancesOverHttps) {
  const auto& server = test_certificates().server;
  lists_classes_and_instances(
      SimulatorProcess({"--https", "--certificate", server.certificate, "--key", server.key}));
}

// Runs an operation that changes something; wbemcli must have nothing to complain of.
std::string change(const SimulatorProcess& simulator, const std::string& operation,
                   const std::string& object, const std::string& values = {}) {
  std::vector<std::string> command{"wbemcli", operation,
                                   with_credentials(simulator.url(), "root:secret") + '/' + object};
  if (!values.empty()) command.push_back(values);
  const ProgramResult result = run_program(command);
  EXPECT_EQ(result.exit_status, 0) << operation << ' ' << object;
  EXPECT_EQ(result.err, "") << operation << ' ' << object;
  return result.out;
}

TEST(Wbemcli, CreatesModifiesAndDeletesInstances) {
  const SimulatorProcess simulator;
  const std::string note = "root/cimv2:DEMO_Note.Id=5";
  EXPECT_THAT(change(simulator, "ci", note, "Id=5,Text=\"first\",Tags=a"), HasSubstr("Id=5"));
  EXPECT_THAT(list(simulator, "ein", "root/cimv2:DEMO_Note"), SizeIs(2));
  EXPECT_THAT(list(simulator, "gi", note), Contains("-Text=\"first\""));
  change(simulator, "mi", note, "Text=\"second\"");
  EXPECT_THAT(list(simulator, "gi", note), Contains("-Text=\"second\""));
  change(simulator, "sp", note, "Text=\"third\"");
  EXPECT_THAT(change(simulator, "gp", note, "Text"), HasSubstr("third"));
  EXPECT_THAT(list(simulator, "ei", "root/cimv2:DEMO_Note"), Contains("-Text=\"third\""));
  change(simulator, "di", note);
  EXPECT_THAT(list(simulator, "ein", "root/cimv2:DEMO_Note"), SizeIs(1));
  EXPECT_THAT(wbemcli(simulator, "di", note).err, HasSubstr("(6) CIM_ERR_NOT_FOUND"));
}

TEST(Wbemcli, CallsMethods) {
  const SimulatorProcess simulator;
  const std::string service = "root/cimv2:DEMO_Service.Name=\"demo\"";
  EXPECT_THAT(change(simulator, "cm", service, "ReturnNumber.Number=-7"), HasSubstr("-7"));
  EXPECT_THAT(change(simulator, "cm", service, "Echo.ScalarString=\"hello\",ScalarUint8=200"),
              testing::AllOf(HasSubstr("hello"), HasSubstr("200")));
}

TEST(Wbemcli, DeletesClassesThatNothingDependsOn) {
  const SimulatorProcess simulator;
  EXPECT_THAT(wbemcli(simulator, "dc", "root/cimv2:DEMO_Note").err,
              HasSubstr("(9) CIM_ERR_CLASS_HAS_INSTANCES"));
  change(simulator, "di", "root/cimv2:DEMO_Note.Id=1");
  change(simulator, "dc", "root/cimv2:DEMO_Note");
  EXPECT_THAT(class_names(simulator, "root/cimv2:CIM_ManagedElement"),
              testing::Not(Contains("DEMO_Note")));
}

TEST(Wbemcli, ReportsTheErrorsOfTheSimulator) {
  EXPECT_THAT(wbemcli(shared_simulator(), "gc", "root/cimv2:CIM_Nonesuch").err,
              HasSubstr("(6) CIM_ERR_NOT_FOUND"));
  EXPECT_THAT(wbemcli(shared_simulator(), "ei", "root/nonesuch:CIM_Sensor").err,
              HasSubstr("(3) CIM_ERR_INVALID_NAMESPACE"));
  const ProgramResult refused = run_program(
      {"wbemcli", "ein",
       with_credentials(shared_simulator().url(), "root:wrong") + "/root/cimv2:CIM_Sensor"});
  EXPECT_NE(refused.exit_status, 0);
  EXPECT_THAT(refused.err, HasSubstr("Invalid username/password"));
}

}  // namespace
