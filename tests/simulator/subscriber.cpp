#include "subscriber.h"

#include <gtest/gtest.h>

#include <chrono>
#include <sstream>

namespace {

const std::string service_path =
    "<LOCALINSTANCEPATH><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/>"
    "</LOCALNAMESPACEPATH><INSTANCENAME CLASSNAME=\"DEMO_Service\"><KEYBINDING NAME=\"Name\">"
    "<KEYVALUE VALUETYPE=\"string\">demo</KEYVALUE></KEYBINDING></INSTANCENAME>"
    "</LOCALINSTANCEPATH>";

std::string argument(const std::string& name, const std::string& type, const std::string& value) {
  return "<PARAMVALUE NAME=\"" + name + "\" PARAMTYPE=\"" + type + "\"><VALUE>" + value +
         "</VALUE></PARAMVALUE>";
}

std::string reference_property(const std::string& name, const std::string& class_name,
                               const std::string& content) {
  return "<PROPERTY.REFERENCE NAME=\"" + name + "\" REFERENCECLASS=\"" + class_name + "\">\n" +
         content + "</PROPERTY.REFERENCE>\n";
}

std::string value_reference(const std::string& instance_name) {
  return "<VALUE.REFERENCE>\n" + instance_name + "</VALUE.REFERENCE>\n";
}

}  // namespace

std::string string_property(const std::string& name, const std::string& value) {
  return "<PROPERTY NAME=\"" + name + "\" TYPE=\"string\">\n<VALUE>" + value +
         "</VALUE>\n</PROPERTY>\n";
}

std::string text_of(const pugi::xml_node& node) {
  std::ostringstream out;
  node.print(out, "", pugi::format_raw);
  return out.str();
}

Subscriber::Subscriber(const std::string& url, std::string system_name)
    : client_(url), system_name_(std::move(system_name)) {}

std::string Subscriber::keys(const std::string& class_name, const std::string& name) const {
  return string_property("SystemCreationClassName", "CIM_ComputerSystem") +
         string_property("SystemName", system_name_) +
         string_property("CreationClassName", class_name) + string_property("Name", name);
}

CimAnswer Subscriber::create_filter(const std::string& query, const std::string& language) {
  return create_filter_with(
      "filter", string_property("Query", query) + string_property("QueryLanguage", language));
}

CimAnswer Subscriber::create_filter_with(const std::string& name, const std::string& properties) {
  return create("CIM_IndicationFilter", keys("CIM_IndicationFilter", name) + properties);
}

CimAnswer Subscriber::create_handler(const std::string& destination) {
  return create("CIM_IndicationHandlerCIMXML", keys("CIM_IndicationHandlerCIMXML", "handler") +
                                                   string_property("Destination", destination));
}

CimAnswer Subscriber::create_subscription(const std::string& content) {
  return create("CIM_IndicationSubscription",
                reference_property("Filter", "CIM_IndicationFilter", content) +
                    reference_property("Handler", "CIM_IndicationHandlerCIMXML", content));
}

CimAnswer Subscriber::create_subscription(const std::string& filter, const std::string& handler) {
  return create(
      "CIM_IndicationSubscription",
      reference_property("Filter", "CIM_IndicationFilter", value_reference(filter)) +
          reference_property("Handler", "CIM_IndicationHandlerCIMXML", value_reference(handler)));
}

void Subscriber::subscribe(const std::string& destination) {
  EXPECT_EQ(create_filter().error_text(), "");
  EXPECT_EQ(create_handler(destination).error_text(), "");
  EXPECT_EQ(create_subscription().error_text(), "");
}

CimAnswer Subscriber::create(const std::string& class_name, const std::string& properties) {
  return client_.call("CreateInstance",
                      "<IPARAMVALUE NAME=\"NewInstance\">\n<INSTANCE CLASSNAME=\"" + class_name +
                          "\">\n" + properties + "</INSTANCE>\n</IPARAMVALUE>\n",
                      "root/interop");
}

CimAnswer Subscriber::names(const std::string& class_name) {
  return client_.call("EnumerateInstanceNames", class_parameter(class_name), "root/interop");
}

CimAnswer Subscriber::remove(const std::string& instance_name) {
  return client_.call("DeleteInstance",
                      "<IPARAMVALUE NAME=\"InstanceName\">\n" + instance_name + "</IPARAMVALUE>\n",
                      "root/interop");
}

std::string Subscriber::find_own(const std::string& class_name) {
  const CimAnswer answer = names(class_name);
  for (const auto& each : answer.returned().children("INSTANCENAME")) {
    const std::string text = text_of(each);
    if (text.find('>' + system_name_ + '<') != std::string::npos) return text;
  }
  return {};
}

CimAnswer Subscriber::call_service(const std::string& method, const std::string& arguments) {
  return client_.post(
      "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
      "<SIMPLEREQ><METHODCALL NAME=\"" +
          method + "\">" + service_path + arguments + "</METHODCALL></SIMPLEREQ></MESSAGE></CIM>",
      {method, "root/cimv2", {}});
}

int Subscriber::send(int count, const std::string& class_name) {
  std::string arguments = argument("Count", "uint32", std::to_string(count));
  if (!class_name.empty()) arguments += argument("ClassName", "string", class_name);
  const CimAnswer answer = call_service("SendTestIndications", arguments);
  EXPECT_EQ(answer.error_text(), "");
  const auto subscriptions =
      answer.response().find_child_by_attribute("PARAMVALUE", "NAME", "Subscriptions");
  return subscriptions ? subscriptions.child("VALUE").text().as_int() : -1;
}

std::map<std::string, int> Subscriber::statistics(const std::string& destination) {
  const std::string arguments =
      destination.empty() ? std::string() : argument("Destination", "string", destination);
  const CimAnswer answer = call_service("GetDeliveryStatistics", arguments);
  std::map<std::string, int> result;
  for (const auto& each : answer.response().children("PARAMVALUE")) {
    result[each.attribute("NAME").value()] = each.child("VALUE").text().as_int();
  }
  return result;
}

std::map<std::string, int> Subscriber::settled_statistics(const std::string& destination) {
  const auto last = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  auto result = statistics(destination);
  while (result["Pending"] != 0 && std::chrono::steady_clock::now() < last) {
    result = statistics(destination);
  }
  EXPECT_EQ(result["Pending"], 0);
  return result;
}
