#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "shared_simulator.h"

namespace {

using testing::HasSubstr;

std::string property(const std::string& name, const std::string& type, const std::string& value) {
  return "<PROPERTY NAME=\"" + name + "\" TYPE=\"" + type + "\"><VALUE>" + value +
         "</VALUE></PROPERTY>";
}

std::string text(const std::string& value) {
  return property("Text", "string", value);
}

std::string instance_of(const std::string& class_name, const std::string& properties) {
  return "<INSTANCE CLASSNAME=\"" + class_name + "\">" + properties + "</INSTANCE>";
}

std::string note(const std::string& properties) {
  return instance_of("DEMO_Note", properties);
}

std::string id(int number) {
  return property("Id", "uint32", std::to_string(number));
}

std::string name_of(int number) {
  return "<INSTANCENAME CLASSNAME=\"DEMO_Note\"><KEYBINDING NAME=\"Id\"><KEYVALUE "
         "VALUETYPE=\"numeric\">" +
         std::to_string(number) + "</KEYVALUE></KEYBINDING></INSTANCENAME>";
}

std::string instance_name(int number) {
  return "<IPARAMVALUE NAME=\"InstanceName\">" + name_of(number) + "</IPARAMVALUE>";
}

// Each test has a simulator to itself, since all of them change what it holds.
class ChangeInstances : public testing::Test {
 protected:
  CimAnswer create(const std::string& instance) {
    return client.call("CreateInstance",
                       "<IPARAMVALUE NAME=\"NewInstance\">" + instance + "</IPARAMVALUE>");
  }

  CimAnswer modify(int number, const std::string& properties, const std::string& more = {}) {
    return client.call("ModifyInstance",
                       "<IPARAMVALUE NAME=\"ModifiedInstance\"><VALUE.NAMEDINSTANCE>" +
                           name_of(number) + note(properties) +
                           "</VALUE.NAMEDINSTANCE></IPARAMVALUE>" + more);
  }

  CimAnswer remove(int number) { return client.call("DeleteInstance", instance_name(number)); }

  CimAnswer get(int number) {
    return client.call("GetInstance",
                       instance_name(number) + boolean_parameter("LocalOnly", "false"));
  }

  // The value of a property, read back; "(null)" if it has none.
  std::string value_of(int number, const std::string& name) {
    const CimAnswer answer = get(number);
    const auto found = find_property(answer.returned().child("INSTANCE"), name);
    const auto value = found.child("VALUE");
    return value ? value.text().get() : "(null)";
  }

  std::size_t count(const std::string& operation) {
    const CimAnswer answer = client.call(operation, class_parameter("DEMO_Note"));
    const auto children = answer.returned().children();
    return static_cast<std::size_t>(std::distance(children.begin(), children.end()));
  }

  SimulatorProcess simulator;
  CimClient client{simulator.url()};
};

TEST_F(ChangeInstances, ACreatedInstanceIsNamedAndThereForEveryReader) {
  const CimAnswer answer = create(note(id(7) + text("a &lt; b")));
  EXPECT_EQ(answer.error_code(), 0);
  const auto name = answer.returned().child("INSTANCENAME");
  EXPECT_STREQ(name.attribute("CLASSNAME").value(), "DEMO_Note");
  EXPECT_STREQ(name.child("KEYBINDING").attribute("NAME").value(), "Id");
  EXPECT_STREQ(name.child("KEYBINDING").child("KEYVALUE").text().get(), "7");
  EXPECT_EQ(value_of(7, "Text"), "a < b");
  EXPECT_EQ(count("EnumerateInstances"), 2U);
  EXPECT_EQ(count("EnumerateInstanceNames"), 2U);
}

TEST_F(ChangeInstances, PropertiesThatAreNotGivenHaveTheDefaultOfTheClass) {
  create(note(id(7) + "<PROPERTY NAME=\"Author\" TYPE=\"string\"></PROPERTY>"));
  EXPECT_EQ(value_of(7, "Priority"), "3");
  EXPECT_EQ(value_of(7, "Text"), "(null)");
  EXPECT_EQ(value_of(7, "Author"), "(null)");
}

TEST_F(ChangeInstances, ArraysAndReferencesAreKept) {
  create(note(id(7) +
              "<PROPERTY.ARRAY NAME=\"Tags\" TYPE=\"string\"><VALUE.ARRAY><VALUE>a</VALUE><VALUE>"
              "</VALUE></VALUE.ARRAY></PROPERTY.ARRAY><PROPERTY.REFERENCE NAME=\"About\" "
              "REFERENCECLASS=\"DEMO_Note\"><VALUE.REFERENCE>" +
              name_of(1) + "</VALUE.REFERENCE></PROPERTY.REFERENCE>"));
  const CimAnswer answer = get(7);
  const auto instance = answer.returned().child("INSTANCE");
  const auto tags = find_property(instance, "Tags").child("VALUE.ARRAY");
  EXPECT_STREQ(tags.first_child().text().get(), "a");
  EXPECT_TRUE(tags.first_child().next_sibling());
  EXPECT_STREQ(find_property(instance, "About")
                   .child("VALUE.REFERENCE")
                   .child("INSTANCENAME")
                   .attribute("CLASSNAME")
                   .value(),
               "DEMO_Note");
}

TEST_F(ChangeInstances, AReferenceCanBeAKey) {
  const auto reference = [](const char* name, const std::string& class_name,
                            const std::string& key) {
    return "<PROPERTY.REFERENCE NAME=\"" + std::string(name) +
           "\"><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"" + class_name +
           "\"><KEYBINDING NAME=\"Name\"><KEYVALUE VALUETYPE=\"string\">" + key +
           "</KEYVALUE></KEYBINDING></INSTANCENAME></VALUE.REFERENCE></PROPERTY.REFERENCE>";
  };
  const auto create_in_interop = [&](const std::string& instance) {
    return client.call("CreateInstance",
                       "<IPARAMVALUE NAME=\"NewInstance\">" + instance + "</IPARAMVALUE>",
                       "root/interop");
  };
  const auto conforms = [&](const std::string& profile) {
    return create_in_interop(
        instance_of("CIM_ElementConformsToProfile",
                    reference("ConformantStandard", "CIM_RegisteredProfile", profile) +
                        reference("ManagedElement", "CIM_Namespace", "n")));
  };
  const CimAnswer answer = conforms("f");
  EXPECT_EQ(answer.error_text(), "");
  const auto binding = answer.returned().child("INSTANCENAME").child("KEYBINDING");
  EXPECT_TRUE(binding.child("VALUE.REFERENCE").child("INSTANCENAME"));
  EXPECT_EQ(conforms("f").error_code(), 11);
  EXPECT_EQ(conforms("g").error_code(), 0);
}

TEST_F(ChangeInstances, WhatCannotBeCreatedIsRefusedAndChangesNothing) {
  const struct {
    std::string instance;
    int code;
  } cases[] = {
      {note(id(1)), 11},
      {instance_of("DEMO_Nonesuch", id(7)), 5},
      {note(text("no key")), 4},
      {note("<PROPERTY NAME=\"Id\" TYPE=\"uint32\"></PROPERTY>"), 4},
      {note(id(7) + property("Nonesuch", "string", "x")), 4},
      {note(id(7) + property("Priority", "uint32", "1")), 4},
      {note(id(7) + property("Priority", "uint16", "65536")), 4},
      {note(id(7) + property("Tags", "string", "x")), 4},
      {instance_of("CIM_ManagedElement", {}), 7},
  };
  for (const auto& each : cases) {
    const CimAnswer answer = create(each.instance);
    EXPECT_EQ(answer.error_code(), each.code) << each.instance << answer.error_text();
    EXPECT_FALSE(answer.returned());
  }
  EXPECT_EQ(count("EnumerateInstanceNames"), 1U);
}

TEST_F(ChangeInstances, CreateInstanceChecksItsParameters) {
  EXPECT_EQ(client.call("CreateInstance", {}).error_code(), 4);
  EXPECT_EQ(create(name_of(7)).error_code(), 4);
  EXPECT_EQ(
      client
          .call("CreateInstance", "<IPARAMVALUE NAME=\"NewInstance\">" + note(id(7)) +
                                      "</IPARAMVALUE>" + boolean_parameter("LocalOnly", "true"))
          .error_code(),
      4);
  EXPECT_EQ(client.call("CreateInstance", {}, "root/nonesuch").error_code(), 3);
}

TEST_F(ChangeInstances, AModifiedInstanceKeepsWhatIsNotMentioned) {
  EXPECT_EQ(modify(1, text("changed")).error_code(), 0);
  EXPECT_EQ(value_of(1, "Text"), "changed");
  EXPECT_EQ(value_of(1, "ElementName"), "Welcome");
  EXPECT_EQ(modify(1, "<PROPERTY NAME=\"Text\" TYPE=\"string\"></PROPERTY>").error_code(), 0);
  EXPECT_EQ(value_of(1, "Text"), "(null)");
}

TEST_F(ChangeInstances, ANamedInstanceBesideTheParametersIsTakenToo) {
  const auto answer = client.call(
      "ModifyInstance", property_list({"Text"}) + "<VALUE.NAMEDINSTANCE>\n" + instance_name(1) +
                            note(text("changed") + property("ElementName", "string", "no")) +
                            "</VALUE.NAMEDINSTANCE>\n");
  EXPECT_EQ(answer.error_text(), "");
  EXPECT_FALSE(answer.returned());
  EXPECT_EQ(value_of(1, "Text"), "changed");
  EXPECT_EQ(value_of(1, "ElementName"), "Welcome");
}

TEST_F(ChangeInstances, ThePropertyListSaysWhatIsChanged) {
  const std::string both = text("changed") + property("ElementName", "string", "changed");
  EXPECT_EQ(modify(1, both, property_list({"text"})).error_code(), 0);
  EXPECT_EQ(value_of(1, "Text"), "changed");
  EXPECT_EQ(value_of(1, "ElementName"), "Welcome");
  EXPECT_EQ(modify(1, text("again"), property_list({})).error_code(), 0);
  EXPECT_EQ(value_of(1, "Text"), "changed");
}

TEST_F(ChangeInstances, AListedPropertyWithoutAValueGetsTheDefaultOfTheClass) {
  modify(1, property("Priority", "uint16", "9"));
  EXPECT_EQ(value_of(1, "Priority"), "9");
  EXPECT_EQ(modify(1, {}, property_list({"Priority", "Text", "Id"})).error_code(), 0);
  EXPECT_EQ(value_of(1, "Priority"), "3");
  EXPECT_EQ(value_of(1, "Text"), "(null)");
  EXPECT_EQ(value_of(1, "Id"), "1");
}

TEST_F(ChangeInstances, KeysAndReadOnlyPropertiesMayBeSentButNotChanged) {
  EXPECT_EQ(modify(1, property("Id", "uint32", "0x1") + property("Author", "string", "root"))
                .error_code(),
            0);
  EXPECT_EQ(modify(1, text("changed") + id(2)).error_code(), 4);
  EXPECT_EQ(modify(1, text("changed") + property("Author", "string", "me")).error_code(), 2);
  EXPECT_EQ(value_of(1, "Text"), "Change me.");
}

TEST_F(ChangeInstances, WhatCannotBeModifiedIsRefused) {
  EXPECT_EQ(modify(7, text("x")).error_code(), 6);
  EXPECT_EQ(modify(1, property("Nonesuch", "string", "x")).error_code(), 12);
  EXPECT_EQ(modify(1, text("x"), property_list({"Nonesuch"})).error_code(), 12);
  EXPECT_EQ(modify(1, property("Priority", "string", "1")).error_code(), 4);
  EXPECT_EQ(modify(1, property("Priority", "uint16", "x")).error_code(), 4);
  const auto call = [&](const std::string& parameters) {
    return client.call("ModifyInstance", parameters).error_code();
  };
  EXPECT_EQ(call({}), 4);
  EXPECT_EQ(call("<VALUE.NAMEDINSTANCE>" + note(text("x")) + "</VALUE.NAMEDINSTANCE>"), 4);
  EXPECT_EQ(call("<VALUE.NAMEDINSTANCE>" + instance_name(1) + "</VALUE.NAMEDINSTANCE>"), 4);
  EXPECT_EQ(call("<VALUE.NAMEDINSTANCE>" + instance_name(1) + instance_of("DEMO_Service", {}) +
                 "</VALUE.NAMEDINSTANCE>"),
            4);
  const std::string named =
      "<VALUE.NAMEDINSTANCE>" + instance_name(1) + note(text("x")) + "</VALUE.NAMEDINSTANCE>";
  EXPECT_EQ(call(named + "<IPARAMVALUE NAME=\"ModifiedInstance\"><VALUE.NAMEDINSTANCE/>"
                         "</IPARAMVALUE>"),
            4);
  EXPECT_EQ(value_of(1, "Text"), "Change me.");
}

TEST_F(ChangeInstances, ADeletedInstanceIsGoneAndItsKeysAreFreeAgain) {
  EXPECT_EQ(create(note(id(2))).error_code(), 0);
  EXPECT_EQ(remove(1).error_code(), 0);
  EXPECT_EQ(get(1).error_code(), 6);
  EXPECT_EQ(remove(1).error_code(), 6);
  EXPECT_EQ(get(2).error_code(), 0);
  EXPECT_EQ(create(note(id(1) + text("new"))).error_code(), 0);
  EXPECT_EQ(value_of(1, "Text"), "new");
}

TEST_F(ChangeInstances, DeleteInstanceChecksItsParameters) {
  EXPECT_EQ(client.call("DeleteInstance", {}).error_code(), 4);
  EXPECT_EQ(client.call("DeleteInstance", instance_parameter("DEMO_Note", {})).error_code(), 4);
  EXPECT_EQ(client.call("DeleteInstance", instance_parameter("DEMO_Nonesuch", {{"Id", "1"}}))
                .error_code(),
            5);
}

TEST_F(ChangeInstances, OneNamespaceDoesNotSeeWhatHappensInAnother) {
  const std::string filter = instance_of(
      "CIM_IndicationFilter", property("SystemCreationClassName", "string", "CIM_ComputerSystem") +
                                  property("SystemName", "string", "client") +
                                  property("CreationClassName", "string", "CIM_IndicationFilter") +
                                  property("Name", "string", "f") +
                                  property("Query", "string", "select * from CIM_Indication"));
  const auto names = [&](const std::string& name_space) {
    return client.call("EnumerateInstanceNames", class_parameter("CIM_ManagedElement"), name_space)
        .body;
  };
  const std::string before = names("root/cimv2");
  EXPECT_THAT(before, HasSubstr("DEMO_Note"));
  EXPECT_EQ(
      client
          .call("CreateInstance", "<IPARAMVALUE NAME=\"NewInstance\">" + filter + "</IPARAMVALUE>",
                "root/interop")
          .error_text(),
      "");
  EXPECT_THAT(names("root/interop"), HasSubstr(">client<"));
  EXPECT_EQ(names("root/cimv2"), before);
}

}  // namespace
