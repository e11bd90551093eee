#pragma once

#include <vector>

#include "CIMindication/property_lists.h"

// Subscribes to the alerts that the simulator sends.
inline int subscribe_to_alerts(zuCIM::CIMcontainer& context, zuCIM::IndicationCallback callback,
                               int port) {
  using namespace zuCIM;
  std::vector<_properties_> filter{text_property(PROP_SYSCREATIONCLASSNAME, "CIM_ComputerSystem"),
                                   text_property(PROP_SYSTEMNAME, nullptr),
                                   text_property(PROP_CREATIONCLASSNAME, nullptr),
                                   text_property(PROP_NAME, "filter"),
                                   text_property(PROP_SOURCENAMESPACE, "root/cimv2"),
                                   text_property(PROP_QUERY, "select * from CIM_AlertIndication"),
                                   text_property(PROP_QUERYLANGUAGE, "WQL"),
                                   text_property(nullptr, nullptr)};
  std::vector<_properties_> handler{text_property(PROP_SYSCREATIONCLASSNAME, "CIM_ComputerSystem"),
                                    text_property(PROP_SYSTEMNAME, nullptr),
                                    text_property(PROP_CREATIONCLASSNAME, nullptr),
                                    text_property(PROP_NAME, "handler"),
                                    text_property(PROP_DESTINATION, nullptr),
                                    text_property(nullptr, nullptr)};
  return context.subscribe(callback, port, filter.data(), handler.data());
}
