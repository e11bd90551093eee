#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "shared_simulator.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

const std::string key = "<QUALIFIER NAME=\"Key\" TYPE=\"boolean\"><VALUE>true</VALUE></QUALIFIER>";
const std::string key_property = "<PROPERTY NAME=\"Id\" TYPE=\"string\">" + key + "</PROPERTY>";

std::string class_element(const std::string& name, const std::string& superclass,
                          const std::string& content) {
  const std::string inherits = superclass.empty() ? "" : " SUPERCLASS=\"" + superclass + '"';
  return "<CLASS NAME=\"" + name + '"' + inherits + '>' + content + "</CLASS>";
}

// Each test has a simulator to itself, since all of them change what it holds.
class ChangeClasses : public testing::Test {
 protected:
  CimAnswer create(const std::string& element) {
    return client.call("CreateClass",
                       "<IPARAMVALUE NAME=\"NewClass\">" + element + "</IPARAMVALUE>");
  }

  CimAnswer modify(const std::string& element) {
    return client.call("ModifyClass",
                       "<IPARAMVALUE NAME=\"ModifiedClass\">" + element + "</IPARAMVALUE>");
  }

  CimAnswer remove(const std::string& name) {
    return client.call("DeleteClass", class_parameter(name));
  }

  CimAnswer get(const std::string& name) {
    return client.call("GetClass", class_parameter(name) + boolean_parameter("LocalOnly", "false"));
  }

  std::vector<std::string> properties_of(const std::string& name) {
    const CimAnswer answer = get(name);
    return property_names(answer.returned().child("CLASS"));
  }

  std::vector<std::string> class_names(const std::string& below) {
    return client.call("EnumerateClassNames", class_parameter(below)).class_names();
  }

  CimAnswer create_instance(const std::string& class_name) {
    return client.call("CreateInstance",
                       "<IPARAMVALUE NAME=\"NewInstance\"><INSTANCE CLASSNAME=\"" + class_name +
                           "\"><PROPERTY NAME=\"Id\" TYPE=\"string\"><VALUE>x</VALUE></PROPERTY>"
                           "</INSTANCE></IPARAMVALUE>");
  }

  SimulatorProcess simulator;
  CimClient client{simulator.url()};
};

TEST_F(ChangeClasses, ACreatedClassInheritsAndCanHaveInstances) {
  const CimAnswer answer = create(
      class_element("TEST_Thing", "CIM_ManagedElement",
                    key_property + "<PROPERTY.ARRAY NAME=\"Sizes\" TYPE=\"uint8\"></PROPERTY.ARRAY>"
                                   "<METHOD NAME=\"Go\" TYPE=\"uint32\"><PARAMETER NAME=\"Far\" "
                                   "TYPE=\"boolean\"></PARAMETER></METHOD>"));
  EXPECT_EQ(answer.error_text(), "");
  EXPECT_FALSE(answer.returned());
  EXPECT_THAT(properties_of("TEST_Thing"),
              ElementsAre("InstanceID", "Caption", "Description", "ElementName", "Id", "Sizes"));
  EXPECT_TRUE(get("TEST_Thing").returned().child("CLASS").child("METHOD").child("PARAMETER"));
  EXPECT_THAT(class_names("CIM_ManagedElement"), Contains("TEST_Thing"));
  EXPECT_EQ(create_instance("TEST_Thing").error_text(), "");
  const CimAnswer names =
      client.call("EnumerateInstanceNames", class_parameter("CIM_ManagedElement"));
  EXPECT_TRUE(names.returned().find_child_by_attribute("CLASSNAME", "TEST_Thing"));
}

TEST_F(ChangeClasses, AClassWithoutSuperclassIsAtTheTop) {
  EXPECT_EQ(create(class_element("TEST_Top", "", key_property)).error_text(), "");
  EXPECT_THAT(client.call("EnumerateClassNames", {}).class_names(), Contains("TEST_Top"));
  EXPECT_EQ(create(class_element("TEST_Below", "test_top", "")).error_text(), "");
  EXPECT_THAT(class_names("TEST_Top"), ElementsAre("TEST_Below"));
}

TEST_F(ChangeClasses, WhatIsNoProperClassIsRefused) {
  const struct {
    std::string element;
    int code;
  } cases[] = {
      {class_element("demo_note", "", key_property), 11},
      {class_element("TEST_Thing", "CIM_Nonesuch", key_property), 10},
      {class_element("TEST_Thing", "TEST_Thing", key_property), 10},
      {class_element("TEST Thing", "", key_property), 4},
      {class_element("9Thing", "", key_property), 4},
      {class_element("TEST_Thing", "", "<PROPERTY NAME=\"Id\" TYPE=\"text\"></PROPERTY>"), 4},
      {class_element("TEST_Thing", "", key_property + key_property), 4},
      {class_element("TEST_Thing", "",
                     "<PROPERTY NAME=\"Id\" TYPE=\"uint8\"><VALUE>256</VALUE></PROPERTY>"),
       4},
      {class_element("TEST_Thing", "CIM_ManagedElement",
                     "<PROPERTY NAME=\"Caption\" TYPE=\"uint8\"></PROPERTY>"),
       4},
      {class_element("TEST_Thing", "", "<METHOD NAME=\"Go\"></METHOD>"), 4},
      {class_element("TEST_Thing", "",
                     "<METHOD NAME=\"Go\" TYPE=\"uint8\"><PARAMETER NAME=\"x\" "
                     "TYPE=\"y\"></PARAMETER></METHOD>"),
       4},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(create(each.element).error_code(), each.code) << each.element;
  }
  EXPECT_EQ(get("TEST_Thing").error_code(), 6);
  EXPECT_EQ(create(class_element("TEST_Thing", "", "<PROPERTY NAME=\"Id\"/>")).http_status, 400);
  EXPECT_EQ(client.call("CreateClass", {}).error_code(), 4);
  EXPECT_EQ(client.call("CreateClass", class_parameter("x")).error_code(), 4);
}

TEST_F(ChangeClasses, AModifiedClassIsAsItsNewDeclarationSays) {
  create(class_element("TEST_Thing", "CIM_ManagedElement", key_property));
  const CimAnswer answer = modify(class_element(
      "TEST_Thing", "CIM_ManagedElement",
      key_property + "<PROPERTY NAME=\"Size\" TYPE=\"uint8\"><VALUE>4</VALUE></PROPERTY>"));
  EXPECT_EQ(answer.error_text(), "");
  EXPECT_THAT(properties_of("TEST_Thing"), Contains("Size"));
  EXPECT_EQ(modify(class_element("TEST_Thing", "CIM_ManagedElement", key_property)).error_code(),
            0);
  EXPECT_THAT(properties_of("TEST_Thing"), Not(Contains("Size")));
  EXPECT_EQ(create_instance("TEST_Thing").error_code(), 0);
}

TEST_F(ChangeClasses, TheAnswerOfGetClassCanBeSentBack) {
  create(class_element("TEST_Thing", "CIM_ManagedElement", key_property));
  const CimAnswer answer = client.call(
      "GetClass", class_parameter("TEST_Thing") + boolean_parameter("LocalOnly", "false") +
                      boolean_parameter("IncludeClassOrigin", "true"));
  std::ostringstream element;
  answer.returned().child("CLASS").print(element, "", pugi::format_raw);
  EXPECT_EQ(modify(element.str()).error_text(), "");
  EXPECT_THAT(properties_of("TEST_Thing"),
              ElementsAre("InstanceID", "Caption", "Description", "ElementName", "Id"));
}

TEST_F(ChangeClasses, AClassThatCannotBeModifiedStaysAsItIs) {
  create(class_element("TEST_Thing", "CIM_ManagedElement", key_property));
  const std::string before = get("TEST_Thing").body;
  EXPECT_EQ(modify(class_element("TEST_Nonesuch", "", key_property)).error_code(), 6);
  EXPECT_EQ(modify(class_element("TEST_Thing", "", key_property)).error_code(), 10);
  EXPECT_EQ(modify(class_element("TEST_Thing", "CIM_Nonesuch", key_property)).error_code(), 10);
  EXPECT_EQ(modify(class_element("TEST_Thing", "CIM_ManagedElement",
                                 "<PROPERTY NAME=\"Caption\" TYPE=\"uint8\"></PROPERTY>"))
                .error_code(),
            4);
  EXPECT_EQ(client.call("ModifyClass", {}).error_code(), 4);
  EXPECT_EQ(get("TEST_Thing").body, before);
}

TEST_F(ChangeClasses, AClassWithSubclassesOrInstancesNeitherChangesNorGoes) {
  create(class_element("TEST_Thing", "CIM_ManagedElement", key_property));
  create(class_element("TEST_Part", "TEST_Thing", ""));
  const std::string element = class_element("TEST_Thing", "CIM_ManagedElement", key_property);
  EXPECT_EQ(modify(element).error_code(), 8);
  EXPECT_EQ(remove("TEST_Thing").error_code(), 8);
  EXPECT_EQ(remove("TEST_Part").error_code(), 0);
  EXPECT_EQ(create_instance("TEST_Thing").error_text(), "");
  EXPECT_EQ(modify(element).error_code(), 9);
  EXPECT_EQ(remove("TEST_Thing").error_code(), 9);
  EXPECT_EQ(
      client.call("DeleteInstance", instance_parameter("TEST_Thing", {{"Id", "x"}})).error_code(),
      0);
  EXPECT_EQ(remove("TEST_Thing").error_code(), 0);
}

TEST_F(ChangeClasses, ADeletedClassIsGoneAndItsNameIsFreeAgain) {
  create(class_element("TEST_Thing", "CIM_ManagedElement", key_property));
  EXPECT_EQ(remove("test_thing").error_code(), 0);
  EXPECT_EQ(get("TEST_Thing").error_code(), 6);
  EXPECT_EQ(remove("TEST_Thing").error_code(), 6);
  EXPECT_THAT(class_names("CIM_ManagedElement"), Not(Contains("TEST_Thing")));
  EXPECT_EQ(create_instance("TEST_Thing").error_code(), 5);
  EXPECT_EQ(client.call("EnumerateInstances", class_parameter("TEST_Thing")).error_code(), 5);
  EXPECT_EQ(create(class_element("TEST_Thing", "", key_property)).error_code(), 0);
  EXPECT_THAT(properties_of("TEST_Thing"), ElementsAre("Id"));
  EXPECT_EQ(client.call("DeleteClass", {}).error_code(), 4);
}

}  // namespace
