#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "end_to_end/admitted_context.h"
#include "support/certificates.h"
#include "support/loopback.h"
#include "support/trace_recorder.h"

namespace {

using namespace zuCIM;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Listing : public ::testing::Test {
 protected:
  static constexpr const char* address = "127.0.0.41";

  RegistryCleaner cleaner_;
  SmallNetwork network_{address};
};

// What every server must allow a client to read, whatever it is reached by.
void list_everything(CIMcontainer& context) {
  ASSERT_EQ(context.ChkCimStatus(), 0);
  ASSERT_NE(context.setCurrentClass("CIM_NumericSensor", ""), nullptr);
  CIMelement* const first = context.Imethod_EnumerateInstanceNames();
  ASSERT_EQ(context.ChkCimStatus(), 0);
  const int names = count_elements(first, elem::INSTANCENAME);
  EXPECT_GE(names, 20);

  EXPECT_NE(context.Imethod_EnumerateInstances(0, 0, 0, 1, nullptr), 0);
  ASSERT_EQ(context.ChkCimStatus(), 0);
  CIMclass& entry = *context.currentClass;
  EXPECT_EQ(count_elements(entry.instanceNames->next, elem::INSTANCENAME), names);
  EXPECT_EQ(count_elements(entry.instances->next, elem::INSTANCE), names);
  EXPECT_NE(entry.instances->next->getValueOf(elem::PROPERTY, "CurrentReading"), nullptr);

  CIMelement name(*entry.instanceNames);
  EXPECT_NE(context.Imethod_GetInstance(name.next, -1, nullptr), 0);
  EXPECT_EQ(context.ChkCimStatus(), 0);
  EXPECT_EQ(count_elements(entry.instances->next, elem::INSTANCE), 1);

  EXPECT_EQ(context.Imethod_GetClass(0, 1, 0, nullptr), 0);
  EXPECT_STREQ(entry.instances->findProperty("DeviceID")->value, "Key");
  EXPECT_NE(entry.methods, nullptr);
}

TEST_F(Listing, WorksOverHttp) {
  const SimulatorProcess simulator({"--address", address});
  list_everything(*admitted_context(std::to_string(simulator.port()), "secret"));
}

TEST_F(Listing, WorksOverHttpsWithAVerifiedCertificate) {
  const CertificateFiles files = make_server_certificate("listing", {std::string("IP:") + address});
  const SimulatorProcess simulator({"--address", address, "--port", "5989", "--https",
                                    "--certificate", files.certificate, "--key", files.key});
  list_everything(*admitted_context("5989", "secret", test_certificates().authority));
}

TEST_F(Listing, WorksWhenTheServerWritesNullPropertiesInTheShortForm) {
  const SimulatorProcess simulator({"--address", address, "--short-null"});
  list_everything(*admitted_context(std::to_string(simulator.port()), "secret"));
}

TEST_F(Listing, OfTenThousandInstancesIsComplete) {
  const SimulatorProcess simulator(
      {"--address", address, "--instances", "CIM_NumericSensor=10000"});
  CIMcontainer& context = *admitted_context(std::to_string(simulator.port()), "secret");
  context.setCurrentClass("CIM_NumericSensor", "");
  EXPECT_NE(context.Imethod_EnumerateInstances(-1, -1, -1, 1, nullptr), 0);
  EXPECT_GE(count_elements(context.currentClass->instances->next, elem::INSTANCE), 10000);
}

TEST_F(Listing, TracesEachStep) {
  const SimulatorProcess simulator({"--address", address});
  const TraceRecorder traces(trace_level::progress | trace_level::warning | trace_level::detail);
  CIMcontainer& context = *admitted_context(std::to_string(simulator.port()), "secret");
  const std::string made = "[esx.example] makeContainer() index=" + std::to_string(context.index);
  EXPECT_THAT(
      traces.texts(trace_level::progress),
      ElementsAre(made, "[esx.example] ENTER addContainer()", "[esx.example] LEAVE addContainer"));
  EXPECT_EQ(traces.count(trace_level::progress, "Src/CIMconnection", 204, made), 1);
  EXPECT_EQ(context.serverIP, address);
  EXPECT_EQ(context.serverName, "esx.example");
  EXPECT_EQ(context.localIP, "127.0.1.1");

  const TraceRecorder listing(trace_level::progress | trace_level::warning | trace_level::detail);
  context.setCurrentClass("CIM_NumericSensor", "");
  context.Imethod_EnumerateInstanceNames();
  EXPECT_THAT(listing.texts(),
              ElementsAre("[esx.example] Imethod_EnumerateInstanceNames()",
                          "[esx.example]    Enter sendRequest_recvResponse()",
                          "[esx.example]       initCurlHandle: CURL_EASY_INIT done",
                          "[esx.example]       initCurlHandle: SSL=0x0",
                          "[esx.example]       Before curl_easy_perform()",
                          "[esx.example]       After curl_easy_perform() ret=0",
                          "[esx.example]    Leave sendRequest_recvResponse() errCode=0"));
  EXPECT_THAT(listing.texts(trace_level::warning), IsEmpty());
}

TEST_F(Listing, OfAnUnknownClassGivesTheServersStatus) {
  const SimulatorProcess simulator({"--address", address});
  CIMcontainer& context = *admitted_context(std::to_string(simulator.port()), "secret");
  context.setCurrentClass("CIM_Nonsense", "");
  EXPECT_EQ(context.Imethod_EnumerateInstanceNames(), nullptr);
  EXPECT_EQ(context.ChkCimStatus(), 5);
  context.setCurrentClass("CIM_NumericSensor", "root/nonsense");
  EXPECT_EQ(context.Imethod_EnumerateInstances(-1, -1, -1, -1, nullptr), 0);
  EXPECT_EQ(context.ChkCimStatus(), 3);
}

TEST_F(Listing, WithARefusedPasswordSaysSo) {
  const SimulatorProcess simulator({"--address", address});
  CIMcontainer& context = *admitted_context(std::to_string(simulator.port()), "wrong-password");
  const TraceRecorder traces;
  context.SetExtraTimeOut(-1);
  context.setCurrentClass("CIM_NumericSensor", "");
  EXPECT_EQ(context.Imethod_EnumerateInstanceNames(), nullptr);
  EXPECT_EQ(context.ChkCimStatus(), 22);
  EXPECT_EQ(context.infoFlags & info_flag::credentials_refused, info_flag::credentials_refused);
  for (const std::string& text : traces.texts())
    EXPECT_EQ(text.find("wrong-password"), std::string::npos) << text;
}

TEST_F(Listing, OfADeadServerSaysSo) {
  CIMcontainer& context = *admitted_context(dead_port, "secret");
  context.SetExtraTimeOut(-1);
  context.setCurrentClass("CIM_NumericSensor", "");
  EXPECT_EQ(context.Imethod_EnumerateInstanceNames(), nullptr);
  EXPECT_EQ(context.ChkCimStatus(), 7);
  EXPECT_EQ(context.infoFlags & info_flag::no_connection, info_flag::no_connection);
}

}  // namespace
