#pragma once

#include <string>

#include "CIMoperations/server_context.h"

// What a server answers about filters, handlers and subscriptions.

inline const std::string owner = "10.1.2.3_0F00ABCD";
inline const std::string other_owner = "10.1.2.4_0F00ABCD";

inline const std::string filter_class_name = "CIM_IndicationFilter";
inline const std::string handler_class_name = "CIM_IndicationHandlerCIMXML";
inline const std::string subscription_class_name = "CIM_IndicationSubscription";

// All three, in the order in which they are deleted and checked.
inline const std::string class_names[] = {subscription_class_name, filter_class_name,
                                          handler_class_name};

inline std::string key_of(const std::string& name, const std::string& value) {
  return "<KEYBINDING NAME=\"" + name + "\">\n<KEYVALUE>" + value + "</KEYVALUE>\n</KEYBINDING>\n";
}

// The name of a filter or a handler.
inline std::string plain_name(const std::string& class_name, const std::string& system_name,
                              const std::string& name) {
  return "<INSTANCENAME CLASSNAME=\"" + class_name + "\">\n" + key_of("SystemName", system_name) +
         key_of("Name", name) + "</INSTANCENAME>\n";
}

inline std::string reference_key(const std::string& name, const std::string& instance_name) {
  return "<KEYBINDING NAME=\"" + name + "\">\n<VALUE.REFERENCE>\n" + instance_name +
         "</VALUE.REFERENCE>\n</KEYBINDING>\n";
}

// The name of an instance of any of the three classes.
inline std::string name_in(const std::string& class_name, const std::string& system_name = owner,
                           const std::string& name = "1") {
  if (class_name != subscription_class_name) return plain_name(class_name, system_name, name);
  return "<INSTANCENAME CLASSNAME=\"" + class_name + "\">\n" +
         reference_key("Filter", plain_name(filter_class_name, system_name, name)) +
         reference_key("Handler", plain_name(handler_class_name, system_name, name)) +
         "</INSTANCENAME>\n";
}

// Answers.
inline const std::string filter_made = return_value(name_in(filter_class_name));
inline const std::string handler_made = return_value(name_in(handler_class_name));
inline const std::string subscription_made = return_value(name_in(subscription_class_name));
inline const std::string deleted = method_answer("");
inline const std::string none_listed = return_value("");
// CIM status 1, which is not tried again.
inline const std::string refusal =
    method_answer("<ERROR CODE=\"1\" DESCRIPTION=\"CIM_ERR_FAILED\"/>\n");

inline std::string listed(const std::string& instance_names) {
  return return_value(instance_names);
}
