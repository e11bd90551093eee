#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "listener.h"
#include "shared_simulator.h"
#include "subscriber.h"
#include "support/run_program.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

// Each test has a simulator to itself, since subscriptions are the same for all.
class Indications : public testing::Test {
 protected:
  explicit Indications(const std::vector<std::string>& arguments = {"--verbose"})
      : simulator(arguments) {}

  SimulatorProcess simulator;
  Subscriber subscriber{simulator.url(), "127.0.0.1_6543ABCD"};
};

pugi::xml_node indication_of(const pugi::xml_document& document) {
  return document.child("CIM")
      .child("MESSAGE")
      .child("SIMPLEEXPREQ")
      .child("EXPMETHODCALL")
      .child("EXPPARAMVALUE")
      .child("INSTANCE");
}

std::string property(const pugi::xml_node& instance, const char* name) {
  return find_property(instance, name).child("VALUE").text().get();
}

TEST_F(Indications, ArriveAsExportRequests) {
  const ScriptedServer listener(accepting());
  subscriber.subscribe(url_of(listener, "/some/path?x=1"));
  EXPECT_EQ(subscriber.send(1), 1);
  ASSERT_TRUE(listener.wait_for_requests(1));
  const std::string request = listener.requests().front();
  EXPECT_THAT(request, testing::StartsWith("POST /some/path?x=1 HTTP/1.1\r\n"));
  const std::size_t body = request.find("\r\n\r\n") + 4;
  for (const std::string& header :
       {std::string("Host: " + listener.address() + ':' + listener.port_text()),
        std::string("Content-Type: application/xml; charset=\"utf-8\""),
        std::string("CIMExport: MethodRequest"), std::string("CIMExportMethod: ExportIndication"),
        "Content-Length: " + std::to_string(request.size() - body),
        std::string("Connection: close")}) {
    EXPECT_THAT(request.substr(0, body), HasSubstr("\r\n" + header + "\r\n"));
  }
  EXPECT_THAT(request.substr(body), testing::StartsWith("<?xml version=\"1.0\""));
}

TEST_F(Indications, SayWhatTheyAre) {
  const ScriptedServer listener(accepting());
  subscriber.subscribe(url_of(listener));
  subscriber.send(1);
  ASSERT_TRUE(listener.wait_for_requests(1));
  const std::string request = listener.requests().front();
  pugi::xml_document document;
  ASSERT_TRUE(document.load_string(request.substr(request.find("<?xml")).c_str()));
  const auto message = document.child("CIM").child("MESSAGE");
  EXPECT_STREQ(message.attribute("PROTOCOLVERSION").value(), "1.0");
  const auto call = message.child("SIMPLEEXPREQ").child("EXPMETHODCALL");
  EXPECT_STREQ(call.attribute("NAME").value(), "ExportIndication");
  EXPECT_STREQ(call.child("EXPPARAMVALUE").attribute("NAME").value(), "NewIndication");
  const auto instance = indication_of(document);
  EXPECT_STREQ(instance.attribute("CLASSNAME").value(), "CIM_AlertIndication");
  EXPECT_THAT(property(instance, "IndicationTime"), MatchesRegex("[0-9]{14}\\.[0-9]{6}\\+000"));
  EXPECT_EQ(property(instance, "SequenceNumber"), "0");
  EXPECT_EQ(property(instance, "IndicationFilterName"), "filter");
  EXPECT_EQ(property(instance, "Message"), "Test indication 1");
  EXPECT_NE(property(instance, "IndicationIdentifier"), "");
  EXPECT_NE(property(instance, "SequenceContext"), "");
}

TEST_F(Indications, ArriveInOrderWithMessagesThatAreNewEachTime) {
  const ScriptedServer listener(accepting());
  subscriber.subscribe(url_of(listener));
  subscriber.send(3);
  subscriber.send(2);
  ASSERT_TRUE(listener.wait_for_requests(5));
  const auto requests = listener.requests();
  EXPECT_THAT(sequence_numbers_of(requests), ElementsAre("0", "1", "2", "3", "4"));
  std::set<std::string> ids;
  for (const std::string& each : requests) ids.insert(message_id_of(each));
  EXPECT_EQ(ids.size(), 5U);
  EXPECT_EQ(listener.connection_count(), 5U);
}

TEST_F(Indications, GoToEverybodyWhoSubscribed) {
  const ScriptedServer listener(accepting());
  const ScriptedServer second(accepting());
  Subscriber other(simulator.url(), "other");
  subscriber.subscribe(url_of(listener));
  other.subscribe(url_of(second));
  EXPECT_EQ(subscriber.send(2), 2);
  ASSERT_TRUE(listener.wait_for_requests(2));
  ASSERT_TRUE(second.wait_for_requests(2));
  EXPECT_THAT(sequence_numbers_of(listener.requests()), ElementsAre("0", "1"));
  EXPECT_THAT(sequence_numbers_of(second.requests()), ElementsAre("0", "1"));
  const auto context = [](const ScriptedServer& server) {
    return pieces_of(server.requests(), "\"SequenceContext\"  TYPE=\"string\">\n<VALUE>", "<")[0];
  };
  EXPECT_NE(context(listener), context(second));
}

TEST_F(Indications, GoNowhereWithoutASubscription) {
  EXPECT_EQ(subscriber.send(1), 0);
  subscriber.create_filter();
  subscriber.create_handler("http://127.0.0.1:1/test");
  EXPECT_EQ(subscriber.send(1), 0);
  EXPECT_EQ(subscriber.statistics()["Queued"], 0);
}

struct FilterCase {
  const char* query;
  const char* source_namespace;
  const char* sent;  // class of the indication
  int subscriptions;
};

TEST_F(Indications, GoWhereTheFilterAsksForTheirClass) {
  const FilterCase cases[] = {
      {"select * from CIM_AlertIndication", "", "", 1},
      {"select * from CIM_Indication", "", "", 1},
      {"SELECT * FROM cim_processindication", "root/cimv2", "", 1},
      {"select * from CIM_AlertIndication where AlertType = 5", "ROOT/CIMV2", "", 1},
      {"select * from CIM_Indication", "", "CIM_InstModification", 1},
      {"select * from CIM_InstIndication", "", "CIM_InstModification", 1},
      {"select * from CIM_InstIndication", "", "CIM_InstCreation", 1},
      {"select * from CIM_InstIndication", "", "", 0},
      {"select * from CIM_AlertIndication", "", "CIM_InstDeletion", 0},
      {"select * from CIM_InstCreation", "", "CIM_InstDeletion", 0},
      {"select * from VENDOR_Indication", "", "", 0},
      {"select * from CIM_Indication", "root/other", "", 0},
  };
  const ScriptedServer listener(accepting());
  std::size_t arrived = 0;
  for (const FilterCase& each : cases) {
    std::string properties = string_property("Query", each.query);
    if (*each.source_namespace != '\0') {
      properties += string_property("SourceNamespace", each.source_namespace);
    }
    subscriber.create_filter_with("filter", properties);
    subscriber.create_handler(url_of(listener));
    EXPECT_EQ(subscriber.create_subscription().error_text(), "");
    EXPECT_EQ(subscriber.send(1, each.sent), each.subscriptions) << each.query;
    arrived += static_cast<std::size_t>(each.subscriptions);
    EXPECT_TRUE(listener.wait_for_requests(arrived));
    subscriber.settled_statistics();
    for (const char* part :
         {"CIM_IndicationSubscription", "CIM_IndicationFilter", "CIM_IndicationHandlerCIMXML"}) {
      EXPECT_EQ(subscriber.remove(subscriber.find_own(part)).error_text(), "");
    }
  }
  EXPECT_EQ(listener.connection_count(), arrived);
}

TEST_F(Indications, ThatCannotBeSentAreRefused) {
  const auto result = [&](const std::string& count, const std::string& class_name) {
    const CimAnswer answer = subscriber.call_service(
        "SendTestIndications",
        "<PARAMVALUE NAME=\"Count\" PARAMTYPE=\"uint32\"><VALUE>" + count +
            "</VALUE></PARAMVALUE><PARAMVALUE NAME=\"ClassName\" PARAMTYPE=\"string\"><VALUE>" +
            class_name + "</VALUE></PARAMVALUE>");
    return std::string(answer.response().child("RETURNVALUE").child("VALUE").text().get());
  };
  EXPECT_EQ(result("10000", "CIM_AlertIndication"), "0");
  EXPECT_EQ(result("10001", "CIM_AlertIndication"), "5");
  EXPECT_EQ(result("0x2711", "CIM_AlertIndication"), "5");
  EXPECT_EQ(result("1", "CIM_Indication"), "5");
  EXPECT_EQ(result("1", "DEMO_Note"), "5");
  EXPECT_EQ(result("1", "CIM_Nonesuch"), "5");
  EXPECT_EQ(result("0", "CIM_AlertIndication"), "0");
  EXPECT_EQ(result("0", "CIM_Indication"), "5");
  EXPECT_EQ(result("0", "CIM_Nonesuch"), "5");
}

TEST_F(Indications, MayBeNoneAtAll) {
  subscriber.subscribe("http://127.0.0.1:1/test");
  EXPECT_EQ(subscriber.send(0), 1);
  EXPECT_EQ(subscriber.statistics()["Queued"], 0);
}

TEST_F(Indications, AreTriedAgainUntilTheyAreTaken) {
  const ScriptedServer listener(Scripts{{{script::Reset{}}, accepting()}, true});
  subscriber.subscribe(url_of(listener));
  subscriber.send(2);
  ASSERT_TRUE(listener.wait_for_requests(2));
  EXPECT_THAT(sequence_numbers_of(listener.requests()), ElementsAre("0", "1"));
  auto counts = subscriber.settled_statistics(url_of(listener));
  EXPECT_EQ(counts, (std::map<std::string, int>{{"Queued", 2},
                                                {"Pending", 0},
                                                {"Sent", 3},
                                                {"Accepted", 2},
                                                {"Retried", 1},
                                                {"Failed", 0},
                                                {"Dropped", 0}}));
  EXPECT_EQ(subscriber.statistics(), counts);
  EXPECT_EQ(subscriber.statistics("http://127.0.0.1:1/")["Queued"], 0);
  const std::string start = "indication to " + url_of(listener) + ": message ";
  EXPECT_THAT(simulator.log(), HasSubstr(start));
  EXPECT_THAT(simulator.log(), HasSubstr(", attempt 2: accepted\n"));
}

TEST_F(Indications, ToADeadDestinationAreGivenUpAndHoldUpNobody) {
  const ScriptedServer listener(accepting());
  const std::string dead = std::string("http://127.0.0.2:") + dead_port + "/test";
  Subscriber other(simulator.url(), "other");
  other.subscribe(dead);
  subscriber.subscribe(url_of(listener));
  EXPECT_EQ(subscriber.send(1), 2);
  EXPECT_TRUE(listener.wait_for_requests(1));
  auto counts = other.settled_statistics(dead);
  EXPECT_EQ(counts["Sent"], 5);
  EXPECT_EQ(counts["Failed"], 1);
  EXPECT_THAT(simulator.log(), HasSubstr("indication to " + dead + ": given up\n"));
}

TEST_F(Indications, OfASubscriptionThatIsDeletedAreDropped) {
  const WakeUp go_on;
  const ScriptedServer listener({script::ReadRequest{}, script::WaitForEvent{&go_on},
                                 script::SendMadeFromRequest{accepting_answer}});
  subscriber.subscribe(url_of(listener));
  subscriber.send(3);
  ASSERT_TRUE(listener.wait_for_requests(1));
  subscriber.remove(subscriber.find_own("CIM_IndicationSubscription"));
  go_on.set();
  auto counts = subscriber.settled_statistics();
  EXPECT_EQ(counts["Accepted"], 1);
  EXPECT_EQ(counts["Dropped"], 2);
  EXPECT_EQ(listener.connection_count(), 1U);
  EXPECT_EQ(subscriber.send(1), 0);

  // The same subscription made again is another one.
  EXPECT_EQ(subscriber.create_subscription().error_text(), "");
  EXPECT_EQ(subscriber.send(1), 1);
  ASSERT_TRUE(listener.wait_for_requests(2));
  EXPECT_THAT(sequence_numbers_of(listener.requests()), ElementsAre("0", "0"));
}

TEST_F(Indications, DoNotKeepTheSimulatorFromEnding) {
  const ScriptedServer hanging({script::ReadRequest{}, script::WaitForPeerClose{}});
  subscriber.subscribe(url_of(hanging));
  subscriber.send(100);
  ASSERT_TRUE(hanging.wait_for_requests(1));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(simulator.stop(), 0);
  // Far from what a listener may take to answer.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
}

class TimedIndications : public Indications {
 protected:
  TimedIndications() : Indications({"--indications", "50/s"}) {}
};

TEST_F(TimedIndications, ComeByThemselves) {
  const ScriptedServer listener(accepting());
  subscriber.subscribe(url_of(listener));
  ASSERT_TRUE(listener.wait_for_requests(3));
  EXPECT_THAT(sequence_numbers_of(listener.requests()).front(), "0");
  EXPECT_EQ(simulator.stop(), 0);
  EXPECT_EQ(simulator.log(), "");
}

TEST(SimulatorOptions, ARateOfIndicationsMayBeAFraction) {
  for (const char* rate : {"0.5/s", "2/s", "1000/s", "0.00001/s"}) {
    SimulatorProcess simulator({"--indications", rate});
    EXPECT_EQ(simulator.stop(), 0) << rate;
  }
}

TEST(SimulatorOptions, ARateOfIndicationsThatMakesNoSenseIsRefused) {
  for (const char* rate : {"", "x", "5", "/s", "0/s", "-1/s", "5/m", "5/s/s", "1e2/s", "inf/s",
                           "nan/s", "1001/s", "5 /s", "0.000001/s"}) {
    const ProgramResult result = run_program({ZUCIM_SIMULATOR, "--indications", rate});
    EXPECT_NE(result.exit_status, 0) << rate;
    EXPECT_THAT(result.err, HasSubstr("--indications")) << rate;
  }
  const ProgramResult result = run_program({ZUCIM_SIMULATOR, "--indications", "5/m"});
  EXPECT_THAT(result.err, HasSubstr("\"5/m\" is not N/s with N from 0.00001 to 1000"));
}

}  // namespace
