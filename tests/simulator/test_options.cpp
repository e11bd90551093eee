#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <set>

#include "shared_simulator.h"
#include "support/certificates.h"
#include "support/failing_allocator.h"
#include "support/run_program.h"

namespace {

using testing::HasSubstr;

const std::string all = boolean_parameter("LocalOnly", "false");

// What the simulator says when it is started with arguments that it cannot work with.
ProgramResult refused(const std::vector<std::string>& arguments) {
  std::vector<std::string> command{ZUCIM_SIMULATOR};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return run_program(command);
}

CimAnswer sensors(const SimulatorProcess& simulator, const std::string& parameters = all) {
  return CimClient(simulator.url())
      .call("EnumerateInstances", class_parameter("CIM_NumericSensor") + parameters);
}

TEST(SimulatorOptions, PortZeroGivesAPortOfItsOwnAndSigtermOrSigintEndsItWithStatusZero) {
  SimulatorProcess first;
  SimulatorProcess second;
  EXPECT_EQ(first.address(), "127.0.0.2");
  EXPECT_NE(first.port(), second.port());
  EXPECT_EQ(first.url(), "http://127.0.0.2:" + std::to_string(first.port()));
  EXPECT_EQ(first.stop(SIGTERM), 0);
  EXPECT_EQ(second.stop(SIGINT), 0);
}

TEST(SimulatorOptions, ItEndsAtOnceThoughConnectionsAreKeptAlive) {
  SimulatorProcess simulator;
  CimClient client(simulator.url());
  EXPECT_EQ(client.call("EnumerateClassNames", {}).http_status, 200);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(simulator.stop(), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST(SimulatorOptions, AddressAndPortAreTakenAsGiven) {
  SimulatorProcess first({"--address", "127.0.0.3"});
  EXPECT_EQ(first.address(), "127.0.0.3");
  const std::string port = std::to_string(first.port());
  EXPECT_EQ(first.stop(), 0);
  SimulatorProcess second({"--address", "127.0.0.3", "--port", port});
  EXPECT_EQ(std::to_string(second.port()), port);
}

TEST(SimulatorOptions, APortThatIsTakenIsAnError) {
  const ProgramResult result = refused({"--port", std::to_string(shared_simulator().port())});
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_THAT(result.err, HasSubstr("cannot listen on 127.0.0.2:"));
  EXPECT_EQ(result.out, "");
}

// The HTTP status of an orderly request with these credentials (in base64).
int status_for(const SimulatorProcess& simulator, const std::string& credentials) {
  return CimClient(simulator.url())
      .post("/cimom",
            {{"Authorization", "Basic " + credentials},
             {"CIMOperation", "MethodCall"},
             {"CIMMethod", "EnumerateClassNames"},
             {"CIMObject", "root/cimv2"}},
            CimRequest{"EnumerateClassNames", "root/cimv2", {}}.message())
      .http_status;
}

const std::string root_secret = "cm9vdDpzZWNyZXQ=";
const std::string joerg_a_b = "asO2cmc6YTpi";  // "jörg" with the password "a:b"

TEST(SimulatorOptions, UserAndPasswordAreTheOnesDemanded) {
  SimulatorProcess simulator({"--user", "jörg", "--password", "a:b"});
  EXPECT_EQ(status_for(simulator, root_secret), 401);
  EXPECT_EQ(status_for(simulator, joerg_a_b), 200);
}

TEST(SimulatorOptions, ThePasswordMayComeFromTheEnvironment) {
  ::setenv("ZUCIM_SIMULATOR_PASSWORD", "a:b", 1);
  SimulatorProcess simulator({"--user", "jörg"});
  ::unsetenv("ZUCIM_SIMULATOR_PASSWORD");
  EXPECT_EQ(status_for(simulator, root_secret), 401);
  EXPECT_EQ(status_for(simulator, joerg_a_b), 200);
}

TEST(SimulatorOptions, AnonymousServesEveryone) {
  SimulatorProcess simulator({"--anonymous"});
  const auto answer = CimClient(simulator.url())
                          .post("/cimom",
                                {{"CIMOperation", "MethodCall"},
                                 {"CIMMethod", "EnumerateClassNames"},
                                 {"CIMObject", "root/cimv2"}},
                                CimRequest{"EnumerateClassNames", "root/cimv2", {}}.message());
  EXPECT_EQ(answer.http_status, 200);
}

TEST(SimulatorOptions, HttpsIsSpokenWithTheGivenCertificate) {
  const auto& certificates = test_certificates();
  SimulatorProcess simulator({"--https", "--certificate", certificates.server.certificate, "--key",
                              certificates.server.key});
  EXPECT_EQ(simulator.scheme(), "https");
  httplib::SSLClient client(simulator.address(), simulator.port());
  client.set_ca_cert_path(certificates.authority);
  client.enable_server_certificate_verification(true);
  ASSERT_TRUE(client.Get("/cimom"));
  EXPECT_EQ(client.Get("/cimom")->status, 405);
  httplib::Client plain(simulator.address(), simulator.port());
  EXPECT_FALSE(plain.Get("/cimom"));
}

TEST(SimulatorOptions, ClientCertificatesAreDemandedWhenACaIsGiven) {
  const auto& certificates = test_certificates();
  SimulatorProcess simulator({"--https", "--certificate", certificates.server.certificate, "--key",
                              certificates.server.key, "--client-ca", certificates.authority});
  // The HTTP library's client may write on a connection that the server has refused.
  ::signal(SIGPIPE, SIG_IGN);
  const auto reaches = [&](const CertificateFiles& own) {
    httplib::SSLClient client(simulator.address(), simulator.port(), own.certificate, own.key);
    client.enable_server_certificate_verification(false);
    const auto result = client.Get("/cimom");
    return result && result->status == 405;
  };
  EXPECT_TRUE(reaches(certificates.client));
  EXPECT_FALSE(reaches(certificates.unknown_client));
  httplib::SSLClient without(simulator.address(), simulator.port());
  without.enable_server_certificate_verification(false);
  EXPECT_FALSE(without.Get("/cimom"));
}

TEST(SimulatorOptions, InstancesGrowAClassWithKeysOfTheirOwn) {
  SimulatorProcess simulator(
      {"--instances", "CIM_NumericSensor=1000", "--instances", "HOST_Fan=5"});
  const auto answer = sensors(simulator);
  std::set<std::string> ids;
  std::set<std::string> readings;
  std::size_t generated = 0;
  for (const auto& each : answer.returned().children("VALUE.NAMEDINSTANCE")) {
    const auto instance = each.child("INSTANCE");
    const auto value = [&](const char* name) {
      return std::string(find_property(instance, name).child("VALUE").text().get());
    };
    ids.insert(value("DeviceID"));
    if (std::string(instance.attribute("CLASSNAME").value()) != "CIM_NumericSensor") continue;
    ++generated;
    readings.insert(value("CurrentReading"));
    EXPECT_EQ(value("CreationClassName"), "CIM_NumericSensor");
    EXPECT_FALSE(find_property(instance, "Location"));
  }
  EXPECT_EQ(generated, 1000U);
  EXPECT_EQ(ids.size(), 1031U);
  EXPECT_GT(readings.size(), 100U);
  const auto fans =
      CimClient(simulator.url()).call("EnumerateInstanceNames", class_parameter("HOST_Fan"));
  EXPECT_EQ(std::distance(fans.returned().begin(), fans.returned().end()), 13);
}

TEST(SimulatorOptions, AHundredThousandInstancesAreNothingSpecial) {
  const int count = malloc_can_fail ? 100000 : 10000;  // Sanitizers are slow.
  SimulatorProcess simulator({"--instances", "CIM_NumericSensor=" + std::to_string(count)});
  const auto names = CimClient(simulator.url())
                         .call("EnumerateInstanceNames", class_parameter("CIM_NumericSensor"));
  EXPECT_EQ(std::distance(names.returned().begin(), names.returned().end()), count + 31);
}

TEST(SimulatorOptions, ShortNullWritesEmptyElementTags) {
  SimulatorProcess simulator({"--short-null"});
  EXPECT_THAT(sensors(simulator).body,
              HasSubstr("<PROPERTY NAME=\"InstallDate\"  TYPE=\"datetime\"/>\n"));
  EXPECT_THAT(sensors(simulator).body,
              HasSubstr("<PROPERTY.ARRAY NAME=\"OtherIdentifyingInfo\"  TYPE=\"string\"/>\n"));
  EXPECT_THAT(sensors(shared_simulator()).body,
              HasSubstr("<PROPERTY NAME=\"InstallDate\"  TYPE=\"datetime\">\n</PROPERTY>\n"));
}

TEST(SimulatorOptions, BothEmbeddedWritesTheStandardAttributeToo) {
  SimulatorProcess simulator({"--both-embedded"});
  EXPECT_THAT(CimClient(simulator.url())
                  .call("EnumerateInstances", class_parameter("HOST_VirtualMachine"))
                  .body,
              HasSubstr("<PROPERTY NAME=\"Settings\"  TYPE=\"string\" EmbeddedObject=\"instance\" "
                        "EMBEDDEDOBJECT=\"instance\">\n"));
}

TEST(SimulatorOptions, VerboseLogsRequestsButNoPasswords) {
  SimulatorProcess simulator({"--verbose"});
  sensors(simulator);
  EXPECT_EQ(simulator.stop(), 0);
  EXPECT_THAT(simulator.log(), HasSubstr("POST /cimom CIMMethod=EnumerateInstances "
                                         "CIMObject=root/cimv2 200 "));
  EXPECT_THAT(simulator.log(), Not(HasSubstr("secret")));
  EXPECT_THAT(simulator.log(), Not(HasSubstr("cm9vdDpzZWNyZXQ=")));
}

struct RefusedArguments {
  std::vector<std::string> arguments;
  const char* complaint;
};

TEST(SimulatorOptions, ArgumentsThatMakeNoSenseAreRefused) {
  const std::vector<RefusedArguments> cases{
      {{"--nonesuch"}, "--nonesuch"},
      {{"--port", "65536"}, "--port"},
      {{"--https"}, "--https requires --"},
      {{"--key", "/dev/null"}, "--https"},
      {{"--https", "--certificate", "/dev/null", "--key", "/dev/null"}, "cannot use /dev/null"},
      {{"--data", "/nonexistent"}, "--data"},
      {{"--data", "/proc/self/task"}, "no declaration files"},
      {{"--instances", "CIM_Fan"}, "is not CLASS=NUMBER"},
      {{"--instances", "CIM_Fan="}, "is not CLASS=NUMBER"},
      {{"--instances", "=5"}, "is not CLASS=NUMBER"},
      {{"--instances", "CIM_Fan=5x"}, "is not CLASS=NUMBER"},
      {{"--instances", "CIM_Fan=-5"}, "is not CLASS=NUMBER"},
      {{"--instances", "CIM_Nonesuch=5"}, "no instance of CIM_Nonesuch"},
      {{"--instances", "CIM_SystemDevice=5"}, "no key that generated instances could vary"},
      {{"--address", "192.0.2.1"}, "cannot listen on 192.0.2.1:0"},
  };
  for (const RefusedArguments& each : cases) {
    const ProgramResult result = refused(each.arguments);
    EXPECT_NE(result.exit_status, 0) << each.complaint;
    EXPECT_THAT(result.err, HasSubstr(each.complaint));
    EXPECT_EQ(result.out, "");
  }
}

TEST(SimulatorOptions, HelpNamesEveryOption) {
  const ProgramResult result = refused({"--help"});
  EXPECT_EQ(result.exit_status, 0);
  for (const char* option :
       {"--address", "--port", "--https", "--certificate", "--key", "--client-ca", "--user",
        "--password", "--anonymous", "--data", "--instances", "--indications", "--short-null",
        "--both-embedded", "--verbose"}) {
    EXPECT_THAT(result.out, HasSubstr(option));
  }
}

}  // namespace
