#pragma once

#include <cstddef>

#include "end_to_end/admitted_context.h"

// How many subscriptions, filters and handlers a server has. The context is busy; another class is
// its current one afterwards.
inline std::size_t interop_instance_count(zuCIM::CIMcontainer& context) {
  std::size_t count = 0;
  for (const char* class_name :
       {"CIM_IndicationSubscription", "CIM_IndicationFilter", "CIM_IndicationHandlerCIMXML"}) {
    context.setCurrentClass(class_name, "root/interop");
    const int listed =
        count_elements(context.Imethod_EnumerateInstanceNames(), zuCIM::elem::INSTANCENAME);
    count += static_cast<std::size_t>(listed);
  }
  return count;
}
