#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "shared_simulator.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

const std::string all = boolean_parameter("LocalOnly", "false");

bool has_descendant(const pugi::xml_node& node, const char* element) {
  const auto found = node.find_node(
      [&](const pugi::xml_node& each) { return std::string_view(each.name()) == element; });
  return !found.empty();
}

bool has_attribute_below(const pugi::xml_node& node, const char* attribute) {
  const auto found = node.find_node(
      [&](const pugi::xml_node& each) { return !each.attribute(attribute).empty(); });
  return !found.empty();
}

std::vector<std::string> names_of(const pugi::xml_node& parent, const char* element) {
  std::vector<std::string> names;
  for (const auto& each : parent.children(element))
    names.emplace_back(each.attribute("NAME").value());
  return names;
}

class ClassOperations : public SimulatorTest {
 protected:
  pugi::xml_node get_class(const std::string& class_name, const std::string& parameters = {}) {
    answer_ = client.call("GetClass", class_parameter(class_name) + parameters);
    return answer_.returned().child("CLASS");
  }

  CimAnswer answer_;
};

TEST_F(ClassOperations, GetClassByDefaultReturnsOnlyWhatTheClassItselfDeclares) {
  const auto sensor = get_class("HOST_NumericSensor");
  EXPECT_STREQ(sensor.attribute("NAME").value(), "HOST_NumericSensor");
  EXPECT_STREQ(sensor.attribute("SUPERCLASS").value(), "CIM_NumericSensor");
  EXPECT_THAT(property_names(sensor), ElementsAre("Location", "LastUpdate", "History"));
  EXPECT_THAT(names_of(sensor, "METHOD"), IsEmpty());
  EXPECT_FALSE(has_attribute_below(sensor, "PROPAGATED"));
}

TEST_F(ClassOperations, GetClassWithoutLocalOnlyReturnsInheritedElementsFirst) {
  const auto sensor = get_class("HOST_NumericSensor", all);
  const auto names = property_names(sensor);
  EXPECT_EQ(names.front(), "InstanceID");
  EXPECT_EQ(names.back(), "History");
  EXPECT_THAT(names_of(sensor, "METHOD"),
              ElementsAre("RequestStateChange", "Reset", "RestoreDefaultThresholds"));
  EXPECT_TRUE(find_property(sensor, "CurrentReading").attribute("PROPAGATED").as_bool());
  EXPECT_FALSE(find_property(sensor, "Location").attribute("PROPAGATED").as_bool());
}

TEST_F(ClassOperations, AnOverriddenPropertyIsLocalAndKeepsItsOrigin) {
  const auto system =
      get_class("CIM_ComputerSystem", boolean_parameter("IncludeClassOrigin", "true"));
  const auto property = find_property(system, "NameFormat");
  EXPECT_STREQ(property.attribute("CLASSORIGIN").value(), "CIM_System");
  EXPECT_FALSE(property.attribute("PROPAGATED").as_bool());
}

TEST_F(ClassOperations, QualifiersComeUnlessTheyAreDeclined) {
  EXPECT_TRUE(has_descendant(get_class("CIM_NumericSensor"), "QUALIFIER"));
  EXPECT_FALSE(has_descendant(
      get_class("CIM_NumericSensor", boolean_parameter("IncludeQualifiers", "FALSE")),
      "QUALIFIER"));
}

TEST_F(ClassOperations, QualifiersThatStayWithTheirClassAreNotInherited) {
  const auto abstract = get_class("CIM_LogicalDevice", all);
  EXPECT_THAT(names_of(abstract, "QUALIFIER"), Contains("Abstract"));
  const auto concrete = get_class("HOST_NumericSensor", all);
  EXPECT_THAT(names_of(concrete, "QUALIFIER"),
              AllOf(Contains("Version"), Not(Contains("Abstract"))));
}

TEST_F(ClassOperations, AssociationsInheritTheirQualifier) {
  EXPECT_THAT(names_of(get_class("CIM_SystemDevice", all), "QUALIFIER"), Contains("Association"));
}

TEST_F(ClassOperations, ClassOriginsComeOnlyWhenAskedFor) {
  EXPECT_FALSE(has_attribute_below(get_class("CIM_NumericSensor", all), "CLASSORIGIN"));
  const auto sensor =
      get_class("CIM_NumericSensor", all + boolean_parameter("IncludeClassOrigin", "true"));
  EXPECT_STREQ(find_property(sensor, "DeviceID").attribute("CLASSORIGIN").value(),
               "CIM_LogicalDevice");
  EXPECT_STREQ(
      sensor.find_child_by_attribute("METHOD", "NAME", "Reset").attribute("CLASSORIGIN").value(),
      "CIM_LogicalDevice");
}

TEST_F(ClassOperations, PropertyListPicksPropertiesWithoutRegardToCase) {
  const auto sensor =
      get_class("CIM_NumericSensor",
                all + property_list({"deviceid", "CurrentReading", "Nonesuch", "CURRENTREADING"}));
  EXPECT_THAT(property_names(sensor), ElementsAre("DeviceID", "CurrentReading"));
  EXPECT_THAT(property_names(get_class("CIM_NumericSensor", all + property_list({}))), IsEmpty());
}

TEST_F(ClassOperations, PropertyListDoesNotBringBackWhatLocalOnlyLeavesOut) {
  EXPECT_THAT(
      property_names(get_class("HOST_NumericSensor", property_list({"DeviceID", "Location"}))),
      ElementsAre("Location"));
}

TEST_F(ClassOperations, ReferencesArraysAndParametersAreDeclaredAsSuch) {
  const auto device = get_class("CIM_SystemDevice", all);
  EXPECT_STREQ(find_property(device, "PartComponent").name(), "PROPERTY.REFERENCE");
  EXPECT_STREQ(find_property(device, "PartComponent").attribute("REFERENCECLASS").value(),
               "CIM_LogicalDevice");
  const auto history = find_property(get_class("HOST_NumericSensor"), "History");
  EXPECT_STREQ(history.name(), "PROPERTY.ARRAY");
  EXPECT_STREQ(history.attribute("ARRAYSIZE").value(), "8");
  const auto method = get_class("HOST_HypervisorSystem").child("METHOD");
  EXPECT_STREQ(method.child("PARAMETER.REFARRAY").attribute("REFERENCECLASS").value(),
               "CIM_NumericSensor");
  EXPECT_TRUE(method.child("PARAMETER.REFERENCE"));
  EXPECT_TRUE(method.child("PARAMETER.ARRAY"));
  EXPECT_TRUE(method.child("PARAMETER"));
}

TEST_F(ClassOperations, DefaultValuesBelongToTheClass) {
  const auto element = get_class("CIM_EnabledLogicalElement");
  EXPECT_STREQ(find_property(element, "EnabledState").child("VALUE").text().get(), "5");
}

TEST_F(ClassOperations, EnumerateClassNamesWithoutAClassStartsAtTheTop) {
  const auto top = client.call("EnumerateClassNames", {});
  EXPECT_THAT(top.class_names(), UnorderedElementsAre("CIM_ManagedElement", "CIM_Dependency",
                                                      "CIM_Component", "CIM_LogManagesRecord",
                                                      "CIM_OwningJobElement", "CIM_Indication"));
  const auto deep =
      client.call("EnumerateClassNames", boolean_parameter("DeepInheritance", "true"));
  EXPECT_GE(deep.class_names().size(), 25U);
  EXPECT_THAT(deep.class_names(), AllOf(Contains("CIM_NumericSensor"), Contains("CIM_Chassis")));
}

TEST_F(ClassOperations, EnumerateClassNamesGoesOneLevelDownUnlessAskedForMore) {
  const std::string sensor = class_parameter("cim_sensor");
  EXPECT_THAT(client.call("EnumerateClassNames", sensor).class_names(),
              ElementsAre("CIM_NumericSensor", "HOST_DiscreteSensor"));
  const std::string deep = boolean_parameter("DeepInheritance", "TRUE");
  EXPECT_THAT(client.call("EnumerateClassNames", sensor + deep).class_names(),
              ElementsAre("CIM_NumericSensor", "HOST_NumericSensor", "HOST_DiscreteSensor"));
}

TEST_F(ClassOperations, AClassWithoutSubclassesGivesAnAnswerWithoutReturnValue) {
  const auto answer = client.call("EnumerateClassNames", class_parameter("HOST_Fan"));
  EXPECT_EQ(answer.error_code(), 0);
  EXPECT_TRUE(answer.response());
  EXPECT_FALSE(answer.returned());
}

TEST_F(ClassOperations, EnumerateClassesHonoursItsParameters) {
  const std::string sensor = class_parameter("CIM_Sensor");
  const auto local = client.call("EnumerateClasses", sensor);
  EXPECT_THAT(names_of(local.returned(), "CLASS"),
              ElementsAre("CIM_NumericSensor", "HOST_DiscreteSensor"));
  EXPECT_EQ(property_names(local.returned().child("CLASS")).front(), "BaseUnits");
  EXPECT_TRUE(has_descendant(local.returned(), "QUALIFIER"));
  EXPECT_FALSE(has_attribute_below(local.returned(), "CLASSORIGIN"));

  const auto full =
      client.call("EnumerateClasses", sensor + all + boolean_parameter("DeepInheritance", "true") +
                                          boolean_parameter("IncludeQualifiers", "false") +
                                          boolean_parameter("IncludeClassOrigin", "true"));
  EXPECT_EQ(names_of(full.returned(), "CLASS").size(), 3U);
  EXPECT_EQ(property_names(full.returned().child("CLASS")).front(), "InstanceID");
  EXPECT_FALSE(has_descendant(full.returned(), "QUALIFIER"));
  EXPECT_TRUE(has_attribute_below(full.returned(), "CLASSORIGIN"));
}

TEST_F(ClassOperations, BothNamespacesHaveTheClassesThatClientsLookFor) {
  for (const char* class_name : {"CIM_ObjectManager", "CIM_Namespace", "CIM_IndicationFilter",
                                 "CIM_IndicationHandlerCIMXML", "CIM_IndicationSubscription"}) {
    EXPECT_TRUE(client.call("GetClass", class_parameter(class_name), "root/interop").returned())
        << class_name;
  }
  EXPECT_TRUE(get_class("CIM_Namespace"));
}

}  // namespace
