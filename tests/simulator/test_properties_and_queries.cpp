#include <gtest/gtest.h>

#include "shared_simulator.h"

namespace {

const std::string catalogue =
    "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME CLASSNAME=\"HOST_TypeCatalogue\">"
    "<KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"numeric\">1</KEYVALUE></KEYBINDING>"
    "<KEYBINDING NAME=\"Flag\"><KEYVALUE VALUETYPE=\"boolean\">TRUE</KEYVALUE></KEYBINDING>"
    "</INSTANCENAME></IPARAMVALUE>";
const std::string note = instance_parameter("DEMO_Note", {{"Id", "1"}});
const std::string no_note = instance_parameter("DEMO_Note", {{"Id", "99"}});

std::string value_parameter(const std::string& name, const std::string& value) {
  return "<IPARAMVALUE NAME=\"" + name + "\"><VALUE>" + value + "</VALUE></IPARAMVALUE>";
}

std::string property_name(const std::string& name) {
  return value_parameter("PropertyName", name);
}

// Each test has a simulator to itself, since most of them change what it holds.
class Properties : public testing::Test {
 protected:
  CimAnswer get(const std::string& instance, const std::string& name) {
    return client.call("GetProperty", instance + property_name(name));
  }

  std::string text(const std::string& name) {
    const CimAnswer answer = get(note, name);
    return answer.returned() ? answer.returned().child("VALUE").text().get() : "(null)";
  }

  int set(const std::string& name, const std::string& new_value) {
    const std::string value = "<IPARAMVALUE NAME=\"NewValue\">" + new_value + "</IPARAMVALUE>";
    return client.call("SetProperty", note + property_name(name) + value).error_code();
  }

  int set_text(const std::string& name, const std::string& text) {
    return set(name, "<VALUE>" + text + "</VALUE>");
  }

  SimulatorProcess simulator;
  CimClient client{simulator.url()};
};

TEST_F(Properties, GetPropertyReturnsValuesOfEveryShape) {
  EXPECT_STREQ(get(catalogue, "scalaruint8").returned().child("VALUE").text().get(), "255");
  EXPECT_TRUE(get(catalogue, "ArrayString").returned().child("VALUE.ARRAY").child("VALUE"));
  EXPECT_TRUE(get(catalogue, "Link").returned().child("VALUE.REFERENCE").child("INSTANCENAME"));
}

TEST_F(Properties, APropertyWithoutAValueIsAnAnswerWithoutReturnValue) {
  const CimAnswer answer = get(note, "Caption");
  EXPECT_TRUE(answer.response());
  EXPECT_EQ(answer.error_code(), 0);
  EXPECT_FALSE(answer.returned());
}

TEST_F(Properties, WhatCannotBeReadIsRefused) {
  EXPECT_EQ(get(note, "Nonesuch").error_code(), 12);
  EXPECT_EQ(get(no_note, "Text").error_code(), 6);
  EXPECT_EQ(get(instance_parameter("DEMO_Nonesuch", {{"Id", "1"}}), "Text").error_code(), 5);
  EXPECT_EQ(client.call("GetProperty", note).error_code(), 4);
  EXPECT_EQ(client.call("GetProperty", property_name("Text")).error_code(), 4);
}

TEST_F(Properties, SetPropertyChangesWhatIsRead) {
  EXPECT_EQ(set_text("text", "a &lt; b"), 0);
  EXPECT_EQ(text("Text"), "a < b");
  EXPECT_EQ(set_text("Priority", "7"), 0);
  EXPECT_EQ(text("Priority"), "7");
  EXPECT_EQ(set("Tags", "<VALUE.ARRAY><VALUE>a</VALUE></VALUE.ARRAY>"), 0);
  EXPECT_STREQ(get(note, "Tags").returned().child("VALUE.ARRAY").child("VALUE").text().get(), "a");
  EXPECT_EQ(set("About", "<VALUE.REFERENCE><CLASSNAME NAME=\"DEMO_Note\"/></VALUE.REFERENCE>"), 0);
  EXPECT_TRUE(get(note, "About").returned().child("VALUE.REFERENCE").child("CLASSNAME"));
}

TEST_F(Properties, SetPropertyWithoutANewValueLeavesNull) {
  EXPECT_EQ(client.call("SetProperty", note + property_name("Text")).error_code(), 0);
  EXPECT_EQ(text("Text"), "(null)");
  EXPECT_EQ(set_text("Text", ""), 0);
  EXPECT_EQ(text("Text"), "");
}

TEST_F(Properties, AValueThatDoesNotFitIsATypeMismatch) {
  EXPECT_EQ(set_text("Priority", "65536"), 13);
  EXPECT_EQ(set_text("Priority", ""), 13);
  EXPECT_EQ(set_text("Tags", "a"), 13);
  EXPECT_EQ(set_text("About", "a"), 13);
  EXPECT_EQ(set("Text", "<VALUE.ARRAY><VALUE>a</VALUE></VALUE.ARRAY>"), 13);
  EXPECT_EQ(text("Priority"), "3");
}

TEST_F(Properties, WhatCannotBeSetIsRefused) {
  EXPECT_EQ(set_text("Author", "me"), 2);
  EXPECT_EQ(set_text("Author", "root"), 0);
  EXPECT_EQ(set_text("Id", "2"), 4);
  EXPECT_EQ(client.call("SetProperty", note + property_name("Id")).error_code(), 4);
  EXPECT_EQ(set_text("Nonesuch", "x"), 12);
  EXPECT_EQ(client.call("SetProperty", no_note + property_name("Text")).error_code(), 6);
  EXPECT_EQ(client.call("SetProperty", note).error_code(), 4);
  EXPECT_EQ(text("Author"), "root");
  EXPECT_EQ(text("Id"), "1");
}

class Queries : public SimulatorTest {
 protected:
  CimAnswer query(const std::string& language, const std::string& text) {
    return client.call("ExecQuery",
                       value_parameter("QueryLanguage", language) + value_parameter("Query", text));
  }
};

TEST_F(Queries, ASelectReturnsInstancesOfTheClassAndItsSubclassesWithTheirPaths) {
  const CimAnswer answer = query("WQL", "select * from CIM_NumericSensor");
  std::size_t count = 0;
  for (const auto& each : answer.returned().children("VALUE.OBJECTWITHPATH")) {
    const auto path = each.child("INSTANCEPATH");
    EXPECT_STREQ(path.child("NAMESPACEPATH").child("HOST").text().get(), "localhost");
    EXPECT_STREQ(path.child("NAMESPACEPATH")
                     .child("LOCALNAMESPACEPATH")
                     .last_child()
                     .attribute("NAME")
                     .value(),
                 "cimv2");
    EXPECT_STREQ(path.child("INSTANCENAME").attribute("CLASSNAME").value(), "HOST_NumericSensor");
    EXPECT_TRUE(find_property(each.child("INSTANCE"), "DeviceID").child("VALUE"));
    EXPECT_TRUE(find_property(each.child("INSTANCE"), "Location"));
    ++count;
  }
  EXPECT_EQ(count, 31U);
}

TEST_F(Queries, LanguagesAndKeywordsAreTakenWithoutRegardToCase) {
  for (const char* language : {"WQL", "wql", "CIM:CQL", "DMTF:CQL"}) {
    EXPECT_TRUE(query(language, "SELECT  *FROM\n demo_service ").returned()) << language;
  }
}

TEST_F(Queries, AClassWithoutInstancesGivesAnAnswerWithoutReturnValue) {
  const CimAnswer answer = query("WQL", "select * from CIM_ObjectManager");
  EXPECT_EQ(answer.error_code(), 0);
  EXPECT_FALSE(answer.returned());
}

TEST_F(Queries, WhatIsNoQueryIsRefused) {
  EXPECT_EQ(query("SQL", "select * from DEMO_Service").error_code(), 14);
  EXPECT_EQ(query("WQL", "select * from DEMO_Nonesuch").error_code(), 5);
  for (const char* text : {"", "select", "select Name from DEMO_Service", "* from DEMO_Service",
                           "select * from", "select * from *", "select * of DEMO_Service",
                           "select * from DEMO_Service where Name = 1"}) {
    EXPECT_EQ(query("WQL", text).error_code(), 15) << text;
  }
  EXPECT_EQ(client.call("ExecQuery", value_parameter("QueryLanguage", "WQL")).error_code(), 4);
  EXPECT_EQ(client.call("ExecQuery", value_parameter("Query", "x")).error_code(), 4);
}

}  // namespace
