#pragma once

#include <string>
#include <vector>

#include "zuCIM.h"

inline zuCIM::_properties_ text_property(const char* name, const char* value) {
  return {name, zuCIM::type::string, 1, value, nullptr};
}

// The properties that a caller gives to subscribe.
struct PropertyLists {
  std::vector<zuCIM::_properties_> filter{text_property(zuCIM::PROP_NAME, "my filter"),
                                          text_property(zuCIM::PROP_CREATIONCLASSNAME, nullptr),
                                          text_property(zuCIM::PROP_SYSTEMNAME, nullptr),
                                          text_property(zuCIM::PROP_QUERY, "select * from CIM_A"),
                                          text_property(nullptr, nullptr)};
  std::vector<zuCIM::_properties_> handler{text_property(zuCIM::PROP_CREATIONCLASSNAME, nullptr),
                                           text_property(zuCIM::PROP_DESTINATION, nullptr),
                                           text_property(zuCIM::PROP_NAME, "my handler"),
                                           text_property(zuCIM::PROP_SYSTEMNAME, nullptr),
                                           text_property(nullptr, nullptr)};

  // Subscribes with them.
  int subscribe(zuCIM::CIMcontainer& context, int port) {
    const auto ignore = [](std::string&) { return 0; };
    return context.subscribe(ignore, port, filter.data(), handler.data());
  }
};
