#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "shared_simulator.h"

namespace {

using testing::HasSubstr;

const std::string local_namespace =
    "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/>"
    "</LOCALNAMESPACEPATH>";

using Keys = std::vector<std::pair<std::string, std::string>>;

std::string instance_name(const std::string& class_name, const Keys& keys) {
  std::string out = "<INSTANCENAME CLASSNAME=\"" + class_name + "\">";
  for (const auto& [name, value] : keys) {
    out += "<KEYBINDING NAME=\"" + name + "\"><KEYVALUE VALUETYPE=\"string\">" + value +
           "</KEYVALUE></KEYBINDING>";
  }
  return out + "</INSTANCENAME>";
}

std::string instance_path(const std::string& class_name, const Keys& keys) {
  return "<LOCALINSTANCEPATH>" + local_namespace + instance_name(class_name, keys) +
         "</LOCALINSTANCEPATH>";
}

std::string class_path(const std::string& class_name) {
  return "<LOCALCLASSPATH>" + local_namespace + "<CLASSNAME NAME=\"" + class_name +
         "\"/></LOCALCLASSPATH>";
}

std::string argument(const std::string& name, const std::string& type, const std::string& content) {
  return "<PARAMVALUE NAME=\"" + name + "\" PARAMTYPE=\"" + type + "\">" + content +
         "</PARAMVALUE>";
}

std::string scalar(const std::string& name, const std::string& type, const std::string& value) {
  return argument(name, type, "<VALUE>" + value + "</VALUE>");
}

const std::string service = instance_path("DEMO_Service", {{"Name", "demo"}});
const Keys fan_keys{{"SystemCreationClassName", "HOST_HypervisorSystem"},
                    {"SystemName", "host-01.example.test"},
                    {"CreationClassName", "HOST_Fan"}};

std::string message(const std::string& method, const std::string& path,
                    const std::string& arguments = {}) {
  return "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
         "<SIMPLEREQ><METHODCALL NAME=\"" +
         method + "\">" + path + arguments + "</METHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

class Methods : public SimulatorTest {
 protected:
  CimAnswer call(const std::string& method, const std::string& path,
                 const std::string& arguments = {}) {
    return client.post(message(method, path, arguments), {method, "root/cimv2", {}});
  }
};

std::string return_value(const CimAnswer& answer) {
  return answer.response().child("RETURNVALUE").child("VALUE").text().get();
}

pugi::xml_node out_parameter(const CimAnswer& answer, const char* name) {
  return answer.response().find_child_by_attribute("PARAMVALUE", "NAME", name);
}

std::string text_of(const pugi::xml_node& parameter) {
  return parameter.child("VALUE").text().get();
}

TEST_F(Methods, ReturnNumberReturnsWhatItIsGiven) {
  for (const std::string number :
       {"0", "1", "-1", "4096", "123456", "2147483647", "-2147483648", "9223372036854775807"}) {
    const CimAnswer answer = call("ReturnNumber", service, scalar("Number", "sint64", number));
    EXPECT_EQ(return_value(answer), number) << answer.error_text();
    EXPECT_STREQ(answer.response().child("RETURNVALUE").attribute("PARAMTYPE").value(), "sint64");
  }
}

TEST_F(Methods, ReturnNothingHasNoReturnValue) {
  const CimAnswer answer = call("ReturnNothing", service);
  EXPECT_STREQ(answer.response().name(), "METHODRESPONSE");
  EXPECT_STREQ(answer.response().attribute("NAME").value(), "ReturnNothing");
  EXPECT_EQ(answer.error_code(), 0);
  EXPECT_FALSE(answer.response().child("RETURNVALUE"));
}

const std::vector<std::pair<std::string, std::string>>& values_of_types() {
  static const std::vector<std::pair<std::string, std::string>> values{
      {"boolean", "TRUE"},
      {"char16", "ß"},
      {"string", "a &amp; b"},
      {"uint8", "255"},
      {"sint8", "-128"},
      {"uint16", "65535"},
      {"sint16", "-32768"},
      {"uint32", "4294967295"},
      {"sint32", "-2147483648"},
      {"uint64", "18446744073709551615"},
      {"sint64", "-9223372036854775808"},
      {"real32", "1.5"},
      {"real64", "-2.5e+300"},
      {"datetime", "20261121003000.123456-300"}};
  return values;
}

std::string parameter_name(const std::string& kind, std::string type) {
  type[0] = static_cast<char>(type[0] - 'a' + 'A');
  return kind + type;
}

TEST_F(Methods, EchoReturnsScalarsOfEveryType) {
  std::string arguments;
  for (const auto& [type, value] : values_of_types()) {
    arguments += scalar(parameter_name("Scalar", type), type, value);
  }
  const CimAnswer answer = call("Echo", service, arguments);
  EXPECT_EQ(return_value(answer), "0") << answer.error_text();
  for (const auto& [type, value] : values_of_types()) {
    const auto parameter = out_parameter(answer, parameter_name("Scalar", type).c_str());
    EXPECT_STREQ(parameter.attribute("PARAMTYPE").value(), type.c_str());
    EXPECT_EQ(text_of(parameter), type == "string" ? "a & b" : value);
  }
}

TEST_F(Methods, EchoReturnsArraysOfEveryType) {
  std::string arguments;
  for (const auto& [type, value] : values_of_types()) {
    const std::string each = "<VALUE>" + value + "</VALUE>";
    arguments += argument(parameter_name("Array", type), type,
                          "<VALUE.ARRAY>" + each + each + "</VALUE.ARRAY>");
  }
  const CimAnswer answer = call("Echo", service, arguments);
  EXPECT_EQ(return_value(answer), "0") << answer.error_text();
  for (const auto& [type, value] : values_of_types()) {
    const auto array =
        out_parameter(answer, parameter_name("Array", type).c_str()).child("VALUE.ARRAY");
    EXPECT_STREQ(array.first_child().text().get(), array.last_child().text().get());
    EXPECT_NE(array.first_child(), array.last_child());
    EXPECT_STREQ(array.last_child().text().get(), type == "string" ? "a & b" : value.c_str());
  }
}

TEST_F(Methods, EchoReturnsReferencesNullsAndEmptyArrays) {
  const std::string reference = "<VALUE.REFERENCE>" +
                                instance_name("DEMO_Service", {{"Name", "demo"}}) +
                                "</VALUE.REFERENCE>";
  const CimAnswer answer =
      call("Echo", service,
           argument("Link", "reference", reference) +
               argument("Links", "reference",
                        "<VALUE.REFARRAY>" + reference + reference + "</VALUE.REFARRAY>") +
               argument("ScalarUint8", "uint8", "") +
               argument("ArrayUint8", "uint8", "<VALUE.ARRAY></VALUE.ARRAY>"));
  EXPECT_EQ(return_value(answer), "0") << answer.error_text();
  const auto link = out_parameter(answer, "Link");
  EXPECT_STREQ(link.attribute("PARAMTYPE").value(), "reference");
  EXPECT_TRUE(link.child("VALUE.REFERENCE").child("INSTANCENAME").child("KEYBINDING"));
  const auto links = out_parameter(answer, "Links").child("VALUE.REFARRAY");
  EXPECT_NE(links.first_child(), links.last_child());
  EXPECT_TRUE(out_parameter(answer, "ScalarUint8"));
  EXPECT_EQ(text_of(out_parameter(answer, "ScalarUint8")), "");
  EXPECT_TRUE(out_parameter(answer, "ArrayUint8").child("VALUE.ARRAY"));
  EXPECT_FALSE(out_parameter(answer, "ScalarSint8"));
}

TEST_F(Methods, ArgumentsThatDoNotFitAreInvalidParameters) {
  const std::string arguments[] = {
      scalar("Nonesuch", "string", "x"),
      scalar("ScalarUint8", "string", "1"),
      scalar("ScalarUint8", "uint8", "256"),
      scalar("ArrayUint8", "uint8", "1"),
      scalar("Link", "reference", "x"),
      scalar("ScalarUint8", "uint8", "1") + scalar("scalaruint8", "uint8", "1"),
  };
  for (const std::string& each : arguments) {
    EXPECT_EQ(call("Echo", service, each).error_code(), 4) << each;
  }
  EXPECT_EQ(call("ReturnNumber", service).error_code(), 4);
  EXPECT_EQ(
      call("Greet", service, scalar("Name", "string", "x") + scalar("Greeting", "string", "x"))
          .error_code(),
      4);
}

TEST_F(Methods, WhatCannotBeCalledIsRefused) {
  EXPECT_EQ(call("Unavailable", service).error_code(), 16);
  EXPECT_EQ(call("Nonesuch", service).error_code(), 17);
  EXPECT_EQ(call("Echo", instance_path("DEMO_Service", {{"Name", "x"}})).error_code(), 6);
  EXPECT_EQ(call("Echo", instance_path("DEMO_Nonesuch", {{"Name", "x"}})).error_code(), 5);
  EXPECT_EQ(call("Echo", class_path("DEMO_Service")).error_code(), 4);
}

TEST_F(Methods, AStaticMethodIsCalledOnTheClassOrOnAnInstance) {
  for (const std::string& path : {class_path("DEMO_Service"), service}) {
    const CimAnswer answer = call("Greet", path, scalar("Name", "string", "you"));
    EXPECT_EQ(return_value(answer), "0");
    EXPECT_EQ(text_of(out_parameter(answer, "Greeting")), "Hello, you!");
  }
}

class StateChange : public Methods {
 protected:
  StateChange() {
    Keys keys = fan_keys;
    keys.emplace_back("DeviceID", "fan.1");
    path_ = instance_path("HOST_Fan", keys);
    name_ = instance_parameter("HOST_Fan", keys);
  }

  CimAnswer request(const std::string& arguments) {
    return call("RequestStateChange", path_, arguments);
  }

  CimAnswer request_state(const std::string& state) {
    return request(scalar("RequestedState", "uint16", state));
  }

  std::string property(const char* name) {
    const CimAnswer answer =
        client.call("GetInstance", name_ + boolean_parameter("LocalOnly", "false"));
    return find_property(answer.returned().child("INSTANCE"), name).child("VALUE").text().get();
  }

  std::string path_;
  std::string name_;
};

TEST_F(StateChange, AStateThatIsThereAtOnceReturns0) {
  const CimAnswer answer = request_state("3");
  EXPECT_EQ(return_value(answer), "0") << answer.error_text();
  EXPECT_STREQ(answer.response().child("RETURNVALUE").attribute("PARAMTYPE").value(), "uint32");
  EXPECT_TRUE(out_parameter(answer, "Job"));
  EXPECT_FALSE(out_parameter(answer, "Job").child("VALUE.REFERENCE"));
  EXPECT_EQ(property("EnabledState"), "3");
  EXPECT_EQ(property("RequestedState"), "3");
  EXPECT_EQ(return_value(request_state("2")), "0");
  EXPECT_EQ(property("EnabledState"), "2");
}

TEST_F(StateChange, AStateThatTakesTimeStartsAJobThatCanBeRead) {
  const CimAnswer answer = request_state("11");
  EXPECT_EQ(return_value(answer), "4096");
  const auto job = out_parameter(answer, "Job").child("VALUE.REFERENCE").child("INSTANCENAME");
  EXPECT_STREQ(job.attribute("CLASSNAME").value(), "HOST_ConcreteJob");
  const std::string id = job.child("KEYBINDING").child("KEYVALUE").text().get();
  const CimAnswer read =
      client.call("GetInstance", instance_parameter("HOST_ConcreteJob", {{"InstanceID", id}}) +
                                     boolean_parameter("LocalOnly", "false"));
  EXPECT_STREQ(find_property(read.returned().child("INSTANCE"), "PercentComplete")
                   .child("VALUE")
                   .text()
                   .get(),
               "100");
  const CimAnswer second = request_state("11");
  EXPECT_THAT(second.body, testing::Not(HasSubstr('>' + id + '<')));
}

TEST_F(StateChange, WhatItCannotDoIsSaidByTheReturnValue) {
  const std::string before = property("EnabledState");
  EXPECT_EQ(return_value(request_state("99")), "5");
  EXPECT_EQ(return_value(request({})), "5");
  EXPECT_EQ(return_value(request(scalar("RequestedState", "uint16", "3") +
                                 scalar("TimeoutPeriod", "datetime", "20261121003000.000000+000"))),
            "4098");
  EXPECT_EQ(property("EnabledState"), before);
  EXPECT_EQ(return_value(request(scalar("RequestedState", "uint16", "2") +
                                 scalar("TimeoutPeriod", "datetime", "00000000000100.000000:000"))),
            "0");
}

TEST_F(Methods, EvaluateThresholdsReadsTheSensorsThatItIsGiven) {
  const CimAnswer sensors =
      client.call("EnumerateInstanceNames", class_parameter("HOST_NumericSensor"));
  pugi::xml_node each = sensors.returned().first_child();
  std::string references;
  for (int i = 0; i < 2; ++i, each = each.next_sibling()) {
    std::ostringstream name;
    each.print(name, "", pugi::format_raw);
    references += "<VALUE.REFERENCE>" + name.str() + "</VALUE.REFERENCE>";
  }
  const std::string host = instance_path(
      "HOST_HypervisorSystem",
      {{"CreationClassName", "HOST_HypervisorSystem"}, {"Name", "host-01.example.test"}});
  const auto evaluate = [&](const std::string& limits) {
    return call(
        "EvaluateThresholds", host,
        argument("Sensors", "reference", "<VALUE.REFARRAY>" + references + "</VALUE.REFARRAY>") +
            argument("Limits", "sint32", "<VALUE.ARRAY>" + limits + "</VALUE.ARRAY>"));
  };
  const CimAnswer answer = evaluate("<VALUE>2147483647</VALUE><VALUE>-2147483648</VALUE>");
  EXPECT_EQ(return_value(answer), "0") << answer.error_text();
  EXPECT_EQ(text_of(out_parameter(answer, "Exceeded")), "1");
  EXPECT_TRUE(out_parameter(answer, "First").child("VALUE.REFERENCE").child("INSTANCENAME"));
  EXPECT_EQ(return_value(evaluate("<VALUE>1</VALUE>")), "5");
  references.replace(references.find("HOST_NumericSensor"), 4, "NONE");
  EXPECT_EQ(return_value(evaluate("<VALUE>1</VALUE><VALUE>1</VALUE>")), "4");
}

TEST_F(StateChange, AResetDeviceIsEnabled) {
  request_state("3");
  EXPECT_EQ(return_value(call("Reset", path_)), "0");
  EXPECT_EQ(property("EnabledState"), "2");
}

TEST_F(Methods, ASensorCanBeToldToRestoreItsThresholds) {
  const CimAnswer sensors =
      client.call("EnumerateInstanceNames", class_parameter("HOST_NumericSensor"));
  std::ostringstream name;
  sensors.returned().first_child().print(name, "", pugi::format_raw);
  const std::string path =
      "<LOCALINSTANCEPATH>" + local_namespace + name.str() + "</LOCALINSTANCEPATH>";
  EXPECT_EQ(return_value(call("RestoreDefaultThresholds", path)), "0");
}

TEST_F(Methods, AServiceStartsAndStops) {
  const auto in_interop = [&](const std::string& method, const std::string& name) {
    const std::string path =
        "<LOCALINSTANCEPATH><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE "
        "NAME=\"interop\"/></LOCALNAMESPACEPATH>" +
        name + "</LOCALINSTANCEPATH>";
    return client.post(message(method, path), {method, "root/interop", {}});
  };
  const auto started = [&](const std::string& name) {
    const CimAnswer answer = client.call(
        "GetProperty",
        "<IPARAMVALUE NAME=\"InstanceName\">" + name +
            "</IPARAMVALUE><IPARAMVALUE NAME=\"PropertyName\"><VALUE>Started</VALUE></IPARAMVALUE>",
        "root/interop");
    return std::string(answer.returned().child("VALUE").text().get());
  };
  const CimAnswer services =
      client.call("EnumerateInstanceNames", class_parameter("CIM_ObjectManager"), "root/interop");
  std::ostringstream name;
  services.returned().first_child().print(name, "", pugi::format_raw);
  EXPECT_EQ(return_value(in_interop("StopService", name.str())), "0");
  EXPECT_EQ(started(name.str()), "FALSE");
  EXPECT_EQ(return_value(in_interop("StartService", name.str())), "0");
  EXPECT_EQ(started(name.str()), "TRUE");
}

}  // namespace
