#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

#include "shared_simulator.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

const std::string all = boolean_parameter("LocalOnly", "false");
using Keys = std::vector<std::pair<std::string, std::string>>;

Keys device(const std::string& class_name, const std::string& id) {
  return {{"SystemCreationClassName", "HOST_HypervisorSystem"},
          {"SystemName", "host-01.example.test"},
          {"CreationClassName", class_name},
          {"DeviceID", id}};
}

std::string value_of(const pugi::xml_node& instance, const char* property) {
  return find_property(instance, property).child("VALUE").text().get();
}

std::vector<std::string> array_of(const pugi::xml_node& instance, const char* property) {
  std::vector<std::string> values;
  for (const auto& each : find_property(instance, property).child("VALUE.ARRAY").children()) {
    values.emplace_back(each.text().get());
  }
  return values;
}

std::vector<pugi::xml_node> instances_of(const CimAnswer& answer) {
  std::vector<pugi::xml_node> instances;
  for (const auto& each : answer.returned().children("VALUE.NAMEDINSTANCE")) {
    instances.push_back(each.child("INSTANCE"));
  }
  return instances;
}

std::size_t count(const CimAnswer& answer, const char* element) {
  std::size_t result = 0;
  for ([[maybe_unused]] const auto& each : answer.returned().children(element)) ++result;
  return result;
}

class InstanceOperations : public SimulatorTest {
 protected:
  pugi::xml_node get_instance(const std::string& class_name, const Keys& keys,
                              const std::string& parameters = {}) {
    answer_ = client.call("GetInstance", instance_parameter(class_name, keys) + parameters);
    return answer_.returned().child("INSTANCE");
  }

  pugi::xml_node get_sensor(const std::string& parameters = {}) {
    return get_instance("HOST_NumericSensor", device("HOST_NumericSensor", "temperature.1"),
                        parameters);
  }

  // The first instance that EnumerateInstances finds.
  pugi::xml_node first_of(const std::string& class_name, const std::string& parameters) {
    answer_ = client.call("EnumerateInstances", class_parameter(class_name) + parameters);
    return answer_.returned().child("VALUE.NAMEDINSTANCE").child("INSTANCE");
  }

  CimAnswer answer_;
};

TEST_F(InstanceOperations, TheInventoryIsLargeEnoughToTryClientsWith) {
  const auto names = client.call("EnumerateInstanceNames", class_parameter("CIM_ManagedElement"));
  const auto parts = client.call("EnumerateInstanceNames", class_parameter("CIM_Component"));
  EXPECT_GE(count(names, "INSTANCENAME"), 100U);
  EXPECT_GE(count(names, "INSTANCENAME") + count(parts, "INSTANCENAME"), 120U);
  const auto sensors =
      client.call("EnumerateInstances", class_parameter("CIM_NumericSensor") + all);
  EXPECT_GE(instances_of(sensors).size(), 20U);
  std::set<std::string> units;
  for (const auto& each : instances_of(sensors)) {
    units.insert(value_of(each, "BaseUnits"));
    for (const char* property : {"ElementName", "UnitModifier", "CurrentReading"}) {
      EXPECT_FALSE(value_of(each, property).empty()) << property;
    }
  }
  EXPECT_THAT(units, AllOf(Contains("2"), Contains("5"), Contains("7"), Contains("19")));
}

TEST_F(InstanceOperations, EnumerateInstanceNamesFindsInstancesOfSubclassesWithAllTheirKeys) {
  const auto answer = client.call("EnumerateInstanceNames", class_parameter("cim_sensor"));
  const auto name = answer.returned().child("INSTANCENAME");
  EXPECT_STREQ(name.attribute("CLASSNAME").value(), "HOST_NumericSensor");
  std::vector<std::string> keys;
  for (const auto& each : name.children("KEYBINDING")) {
    keys.emplace_back(each.attribute("NAME").value());
    EXPECT_STREQ(each.child("KEYVALUE").attribute("VALUETYPE").value(), "string");
  }
  EXPECT_THAT(
      keys, ElementsAre("SystemCreationClassName", "SystemName", "CreationClassName", "DeviceID"));
}

TEST_F(InstanceOperations, KeysKeepTheirKind) {
  const auto answer = client.call("EnumerateInstanceNames", class_parameter("HOST_TypeCatalogue"));
  std::map<std::string, std::string> kinds;
  for (const auto& each : answer.returned().child("INSTANCENAME").children("KEYBINDING")) {
    kinds[each.attribute("NAME").value()] = each.child("KEYVALUE").attribute("VALUETYPE").value();
  }
  EXPECT_EQ(kinds, (std::map<std::string, std::string>{{"Id", "numeric"}, {"Flag", "boolean"}}));
}

TEST_F(InstanceOperations, NamesOfAssociationsHoldReferences) {
  const auto answer = client.call("EnumerateInstanceNames", class_parameter("CIM_SystemDevice"));
  const auto reference = answer.returned()
                             .child("INSTANCENAME")
                             .find_child_by_attribute("KEYBINDING", "NAME", "GroupComponent")
                             .child("VALUE.REFERENCE")
                             .child("INSTANCENAME");
  EXPECT_STREQ(reference.attribute("CLASSNAME").value(), "HOST_HypervisorSystem");
}

TEST_F(InstanceOperations, ReferencesToOtherNamespacesAreFullPaths) {
  const auto answer = client.call("EnumerateInstanceNames",
                                  class_parameter("CIM_ElementConformsToProfile"), "root/interop");
  const auto reference = answer.returned()
                             .child("INSTANCENAME")
                             .find_child_by_attribute("KEYBINDING", "NAME", "ManagedElement")
                             .child("VALUE.REFERENCE");
  const auto path = reference.child("INSTANCEPATH");
  EXPECT_STREQ(path.child("NAMESPACEPATH").child("HOST").text().get(), "host-01.example.test");
  EXPECT_STREQ(path.child("NAMESPACEPATH")
                   .child("LOCALNAMESPACEPATH")
                   .last_child()
                   .attribute("NAME")
                   .value(),
               "cimv2");
  EXPECT_TRUE(path.child("INSTANCENAME"));
}

TEST_F(InstanceOperations, GetInstanceFindsWhatWasListedThroughReferenceKeys) {
  const auto names = client.call("EnumerateInstanceNames", class_parameter("CIM_SystemDevice"));
  const std::size_t start = names.body.find("<INSTANCENAME");
  const std::size_t end = names.body.find("</INSTANCENAME>\n<INSTANCENAME");
  const std::string name = names.body.substr(start, end - start) + "</INSTANCENAME>";
  const auto answer = client.call(
      "GetInstance", "<IPARAMVALUE NAME=\"InstanceName\">" + name + "</IPARAMVALUE>" + all);
  EXPECT_EQ(answer.error_code(), 0) << answer.error_text();
  EXPECT_STREQ(find_property(answer.returned().child("INSTANCE"), "PartComponent").name(),
               "PROPERTY.REFERENCE");
}

TEST_F(InstanceOperations, EverythingThatIsListedCanBeFetched) {
  for (const char* name_space : {"root/cimv2", "root/interop"}) {
    for (const char* top : {"CIM_ManagedElement", "CIM_Dependency"}) {
      const auto names = client.call("EnumerateInstanceNames", class_parameter(top), name_space);
      for (const auto& each : names.returned().children("INSTANCENAME")) {
        std::ostringstream text;
        each.print(text, "", pugi::format_raw);
        const auto answer = client.call(
            "GetInstance", "<IPARAMVALUE NAME=\"InstanceName\">" + text.str() + "</IPARAMVALUE>",
            name_space);
        EXPECT_TRUE(answer.returned().child("INSTANCE")) << text.str() << answer.error_text();
      }
    }
  }
}

TEST_F(InstanceOperations, GetInstanceByDefaultReturnsWhatTheClassItselfDeclares) {
  EXPECT_THAT(property_names(get_sensor()), ElementsAre("Location", "LastUpdate", "History"));
  EXPECT_EQ(value_of(get_sensor(all), "ElementName"), "CPU 1 Temperature");
}

TEST_F(InstanceOperations, GetInstanceHonoursThePropertyList) {
  const auto picked = get_sensor(all + property_list({"CURRENTREADING", "DeviceID", "Nonesuch"}));
  EXPECT_THAT(property_names(picked), ElementsAre("DeviceID", "CurrentReading"));
  EXPECT_THAT(property_names(get_sensor(all + property_list({}))), IsEmpty());
}

TEST_F(InstanceOperations, GetInstanceAddsQualifiersAndOriginsOnlyWhenAsked) {
  get_sensor(all);
  EXPECT_EQ(answer_.body.find("QUALIFIER"), std::string::npos);
  EXPECT_EQ(answer_.body.find("CLASSORIGIN"), std::string::npos);
  const auto full = get_sensor(all + boolean_parameter("IncludeQualifiers", "true") +
                               boolean_parameter("IncludeClassOrigin", "true"));
  EXPECT_TRUE(full.child("QUALIFIER"));
  EXPECT_TRUE(find_property(full, "DeviceID").child("QUALIFIER"));
  EXPECT_STREQ(find_property(full, "DeviceID").attribute("CLASSORIGIN").value(),
               "CIM_LogicalDevice");
}

TEST_F(InstanceOperations, GetInstanceComparesKeysByValueAndTheirNamesWithoutCase) {
  EXPECT_TRUE(get_instance("host_typecatalogue", {{"FLAG", "true"}, {"id", "0x1"}}));
  EXPECT_TRUE(get_instance("HOST_RecordLog", {{"instanceid", "HOST:log:sel"}}));
  EXPECT_FALSE(get_instance("HOST_RecordLog", {{"InstanceID", "host:log:sel"}}));
  EXPECT_EQ(answer_.error_code(), 6);
}

TEST_F(InstanceOperations, ASingleKeyMayComeWithoutItsName) {
  const auto answer = client.call("GetInstance",
                                  "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME "
                                  "CLASSNAME=\"HOST_RecordLog\"><KEYVALUE>HOST:log:sel</KEYVALUE>"
                                  "</INSTANCENAME></IPARAMVALUE>");
  EXPECT_TRUE(answer.returned().child("INSTANCE")) << answer.error_text();
}

struct ListingCase {
  const char* what;
  const char* local_only;
  const char* deep;
  std::vector<std::string> present;
  std::vector<std::string> absent;
};

// Asked through CIM_NumericSensor; DeviceID is inherited, CurrentReading is its own, Location
// comes from its subclass.
TEST_F(InstanceOperations, LocalOnlyAndDeepInheritanceChooseThePropertiesTogether) {
  const std::vector<ListingCase> cases{
      {"everything", "false", "true", {"DeviceID", "CurrentReading", "Location"}, {}},
      {"up to the class", "false", "false", {"DeviceID", "CurrentReading"}, {"Location"}},
      {"the class alone", "true", "false", {"CurrentReading"}, {"DeviceID", "Location"}},
      {"the class and below", "true", "true", {"CurrentReading", "Location"}, {"DeviceID"}}};
  for (const ListingCase& each : cases) {
    const auto instance =
        first_of("CIM_NumericSensor", boolean_parameter("LocalOnly", each.local_only) +
                                          boolean_parameter("DeepInheritance", each.deep));
    EXPECT_STREQ(instance.attribute("CLASSNAME").value(), "HOST_NumericSensor") << each.what;
    for (const auto& name : each.present) EXPECT_TRUE(find_property(instance, name)) << each.what;
    for (const auto& name : each.absent) EXPECT_FALSE(find_property(instance, name)) << each.what;
  }
}

TEST_F(InstanceOperations, EnumerateInstancesByDefaultIsLocalAndDeep) {
  const auto instance = first_of("CIM_NumericSensor", {});
  EXPECT_TRUE(find_property(instance, "CurrentReading"));
  EXPECT_TRUE(find_property(instance, "Location"));
  EXPECT_FALSE(find_property(instance, "DeviceID"));
  EXPECT_EQ(answer_.body.find("QUALIFIER"), std::string::npos);
  EXPECT_EQ(answer_.body.find("CLASSORIGIN"), std::string::npos);
}

TEST_F(InstanceOperations, EnumerateInstancesHonoursListQualifiersAndOrigins) {
  const auto instance =
      first_of("CIM_NumericSensor", all + property_list({"DeviceID", "BaseUnits"}) +
                                        boolean_parameter("IncludeQualifiers", "true") +
                                        boolean_parameter("IncludeClassOrigin", "true"));
  EXPECT_THAT(property_names(instance), ElementsAre("DeviceID", "BaseUnits"));
  EXPECT_TRUE(find_property(instance, "BaseUnits").child("QUALIFIER"));
  EXPECT_STREQ(find_property(instance, "BaseUnits").attribute("CLASSORIGIN").value(),
               "CIM_NumericSensor");
}

TEST_F(InstanceOperations, AClassWithoutInstancesGivesAnAnswerWithoutReturnValue) {
  for (const char* operation : {"EnumerateInstances", "EnumerateInstanceNames"}) {
    const auto answer =
        client.call(operation, class_parameter("CIM_IndicationFilter"), "root/interop");
    EXPECT_EQ(answer.error_code(), 0);
    EXPECT_STREQ(answer.response().attribute("NAME").value(), operation);
    EXPECT_FALSE(answer.returned());
  }
}

TEST_F(InstanceOperations, EveryTypeComesBackAsItWasDeclared) {
  const auto instance = get_instance("HOST_TypeCatalogue", {{"Id", "1"}, {"Flag", "TRUE"}}, all);
  EXPECT_EQ(value_of(instance, "ScalarUint64"), "18446744073709551615");
  EXPECT_EQ(value_of(instance, "ScalarSint64"), "-9223372036854775808");
  EXPECT_EQ(value_of(instance, "ScalarChar16"), "ß");
  EXPECT_EQ(value_of(instance, "ScalarDatetime"), "20261121003000.123456-300");
  EXPECT_EQ(value_of(instance, "ScalarString"),
            "Text with &, <, >, \"quotes\", 'apostrophes' and\na second line");
  EXPECT_THAT(array_of(instance, "ArrayBoolean"), ElementsAre("TRUE", "FALSE", "TRUE"));
  EXPECT_THAT(array_of(instance, "ArrayString"),
              ElementsAre("one", "", "  two leading blanks", "drei & <vier>"));
  EXPECT_STREQ(find_property(instance, "Link")
                   .child("VALUE.REFERENCE")
                   .child("INSTANCENAME")
                   .attribute("CLASSNAME")
                   .value(),
               "HOST_HypervisorSystem");
}

TEST_F(InstanceOperations, EmbeddedObjectsAreTextsThatAreMarkupThemselves) {
  const auto instance = get_instance("HOST_TypeCatalogue", {{"Id", "1"}, {"Flag", "TRUE"}}, all);
  const auto property = find_property(instance, "EmbeddedInstance");
  EXPECT_STREQ(property.attribute("EmbeddedObject").value(), "instance");
  EXPECT_FALSE(property.attribute("EMBEDDEDOBJECT"));
  pugi::xml_document embedded;
  ASSERT_TRUE(embedded.load_string(property.child("VALUE").text().get()));
  EXPECT_EQ(value_of(embedded.child("INSTANCE"), "Notes"), "an \"embedded\" <instance> & more");
}

TEST_F(InstanceOperations, NullAndEmptyAreDifferent) {
  const auto nulls = get_instance("HOST_TypeCatalogue", {{"Id", "2"}, {"Flag", "FALSE"}}, all);
  for (const char* property : {"ScalarString", "ArrayString", "Link"}) {
    ASSERT_TRUE(find_property(nulls, property));
    EXPECT_STREQ(find_property(nulls, property).text().get(), "\n") << property;
  }
  const auto empty = get_instance("HOST_TypeCatalogue", {{"Id", "3"}, {"Flag", "TRUE"}}, all);
  EXPECT_TRUE(find_property(empty, "ScalarString").child("VALUE"));
  EXPECT_TRUE(find_property(empty, "ArrayString").child("VALUE.ARRAY"));
}

TEST_F(InstanceOperations, TextsAreUtf8) {
  const auto names = client.call("EnumerateInstances", class_parameter("HOST_StorageVolume") + all);
  EXPECT_NE(names.body.find("データストア 3"), std::string::npos);
}

TEST_F(InstanceOperations, TheNamespacesAreInstancesInBothOfThem) {
  for (const char* name_space : {"root/cimv2", "root/interop"}) {
    const auto answer =
        client.call("EnumerateInstances", class_parameter("CIM_Namespace") + all, name_space);
    std::vector<std::string> names;
    for (const auto& each : instances_of(answer)) names.push_back(value_of(each, "Name"));
    EXPECT_THAT(names, ElementsAre("root/cimv2", "root/interop"));
  }
}

}  // namespace
