#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "shared_simulator.h"
#include "subscriber.h"

namespace {

using testing::HasSubstr;

constexpr const char* destination = "http://127.0.0.3:40000/test";

// Each test has a simulator to itself, since subscriptions are the same for all.
class Subscriptions : public testing::Test {
 protected:
  SimulatorProcess simulator;
  Subscriber subscriber{simulator.url(), "127.0.0.1_6543ABCD"};
};

constexpr const char* filter_class = "CIM_IndicationFilter";
constexpr const char* handler_class = "CIM_IndicationHandlerCIMXML";
constexpr const char* subscription_class = "CIM_IndicationSubscription";

TEST_F(Subscriptions, AreNamedByTheirFilterAndHandlerWithAllTheirKeys) {
  subscriber.create_filter();
  subscriber.create_handler(destination);
  const CimAnswer answer = subscriber.create_subscription();
  EXPECT_EQ(answer.error_text(), "");
  const auto name = answer.returned().child("INSTANCENAME");
  EXPECT_STREQ(name.attribute("CLASSNAME").value(), subscription_class);
  for (const auto& [key, class_name] :
       {std::pair{"Filter", filter_class}, std::pair{"Handler", handler_class}}) {
    const auto target = name.find_child_by_attribute("KEYBINDING", "NAME", key)
                            .child("VALUE.REFERENCE")
                            .child("INSTANCENAME");
    EXPECT_STREQ(target.attribute("CLASSNAME").value(), class_name);
    EXPECT_STREQ(target.find_child_by_attribute("KEYBINDING", "NAME", "SystemName")
                     .child("KEYVALUE")
                     .text()
                     .get(),
                 "127.0.0.1_6543ABCD");
  }
  EXPECT_EQ(subscriber.find_own(subscription_class), text_of(name));
}

TEST_F(Subscriptions, MayReferToTheClassOnlyInSeveralWays) {
  for (const char* content :
       {"", "<VALUE.REFERENCE/>", "<VALUE.REFERENCE>\n</VALUE.REFERENCE>\n"}) {
    subscriber.create_filter();
    subscriber.create_handler(destination);
    EXPECT_EQ(subscriber.create_subscription(content).error_text(), "") << content;
    EXPECT_EQ(subscriber.remove(subscriber.find_own(subscription_class)).error_text(), "");
  }
  const std::string by_class = "<CLASSNAME NAME=\"CIM_IndicationFilter\"/>";
  const std::string by_name = "<INSTANCENAME CLASSNAME=\"CIM_IndicationHandlerCIMXML\"/>";
  EXPECT_EQ(subscriber.create_subscription(by_class, by_name).error_text(), "");
}

TEST_F(Subscriptions, MayReferToInstances) {
  const std::string filter = text_of(subscriber.create_filter().returned().child("INSTANCENAME"));
  const std::string handler =
      text_of(subscriber.create_handler(destination).returned().child("INSTANCENAME"));
  EXPECT_EQ(subscriber.create_subscription(filter, handler).error_text(), "");
  EXPECT_EQ(subscriber.create_subscription(filter, handler).error_code(), 11);
  EXPECT_EQ(subscriber.create_subscription(handler, filter).error_code(), 4);
}

TEST_F(Subscriptions, ReferToWhatTheSameClientMadeLast) {
  Subscriber other(simulator.url(), "other");
  subscriber.create_filter();
  other.create_filter();
  subscriber.create_handler(destination);
  other.create_handler(destination);
  subscriber.create_filter_with("second", string_property("Query", "select * from CIM_Indication"));
  other.create_subscription();
  subscriber.create_subscription();
  EXPECT_THAT(other.find_own(subscription_class), Not(HasSubstr("127.0.0.1_6543ABCD")));
  EXPECT_THAT(subscriber.find_own(subscription_class), Not(HasSubstr("other")));
  EXPECT_THAT(subscriber.find_own(subscription_class), HasSubstr(">second<"));
}

TEST_F(Subscriptions, ReferToNothingIsRefused) {
  EXPECT_EQ(subscriber.create_subscription().error_code(), 4);
  subscriber.create_filter();
  EXPECT_EQ(subscriber.create_subscription().error_code(), 4);
  EXPECT_EQ(subscriber.find_own(subscription_class), "");
  const std::string handler =
      text_of(subscriber.create_handler(destination).returned().child("INSTANCENAME"));
  subscriber.remove(handler);
  EXPECT_EQ(subscriber.create_subscription().error_code(), 4);
  const std::string filter = subscriber.find_own(filter_class);
  EXPECT_EQ(subscriber.create_subscription(filter, handler).error_code(), 4);
}

TEST_F(Subscriptions, AreRemovedBeforeWhatTheyReferTo) {
  subscriber.subscribe(destination);
  EXPECT_EQ(subscriber.remove(subscriber.find_own(filter_class)).error_code(), 1);
  EXPECT_EQ(subscriber.remove(subscriber.find_own(handler_class)).error_code(), 1);
  for (const char* class_name : {subscription_class, filter_class, handler_class}) {
    EXPECT_EQ(subscriber.remove(subscriber.find_own(class_name)).error_text(), "");
    EXPECT_EQ(subscriber.find_own(class_name), "");
  }
}

TEST_F(Subscriptions, KeysOfFiltersAndHandlersMayBeLeftToTheServer) {
  const std::string query = string_property("Query", "select * from CIM_Indication");
  const CimAnswer answer = subscriber.create(filter_class, string_property("Name", "f") + query);
  EXPECT_EQ(answer.error_text(), "");
  EXPECT_THAT(text_of(answer.returned()), HasSubstr(">CIM_IndicationFilter<"));
  EXPECT_EQ(subscriber.create(filter_class, query).error_code(), 4);
}

struct QueryCase {
  const char* language;
  const char* query;
  int error;
};

TEST_F(Subscriptions, FiltersHaveAQueryThatCanBeUnderstood) {
  const QueryCase cases[] = {
      {"WQL", "select * from CIM_InstIndication", 0},
      {"wql", "SELECT * FROM CIM_InstIndication", 0},
      {"CIM:CQL", "select * from CIM_InstIndication", 0},
      {"DMTF:CQL", "select IndicationTime, SourceInstance.Name from CIM_InstIndication", 0},
      {"WQL", "select * from CIM_InstModification where SourceInstance ISA CIM_Fan", 0},
      {"WQL", "select * from VENDOR_Indication", 0},
      {"SQL", "select * from CIM_InstIndication", 14},
      {"WQL", "", 15},
      {"WQL", "select", 15},
      {"WQL", "select * from", 15},
      {"WQL", "select from CIM_InstIndication", 15},
      {"WQL", "select a b from CIM_InstIndication", 15},
      {"WQL", "select a, from CIM_InstIndication", 15},
      {"WQL", "select * from *", 15},
      {"WQL", "select * from CIM_InstIndication where", 15},
      {"WQL", "select * from CIM_InstIndication today", 15},
      {"WQL", "delete * from CIM_InstIndication", 15},
  };
  for (const QueryCase& each : cases) {
    EXPECT_EQ(subscriber.create_filter(each.query, each.language).error_code(), each.error)
        << each.query;
    if (each.error == 0) subscriber.remove(subscriber.find_own(filter_class));
  }
  EXPECT_EQ(subscriber.create_filter_with("none", {}).error_code(), 4);
  EXPECT_EQ(subscriber.find_own(filter_class), "");
}

TEST_F(Subscriptions, HandlersHaveADestinationThatCanBeReached) {
  for (const char* each : {"", "127.0.0.1", "/test", "ftp://127.0.0.1/", "https://127.0.0.1/",
                           "http://", "http://127.0.0.1:port/", "http://127.0.0.1:99999/"}) {
    EXPECT_EQ(subscriber.create_handler(each).error_code(), 4) << each;
  }
  EXPECT_EQ(subscriber.create_handler("http://localhost:5988/a/path?with=query").error_code(), 0);
}

}  // namespace
