#include "methods.h"

#include <array>

#include "../names.h"

namespace simulator {

namespace {

struct Implementation {
  std::string_view class_name;  // where the method was declared first
  std::string_view method;
  MethodWork work;
};

constexpr std::array implementations{
    Implementation{"CIM_EnabledLogicalElement", "RequestStateChange", request_state_change},
    Implementation{"CIM_LogicalDevice", "Reset", reset_device},
    Implementation{"CIM_NumericSensor", "RestoreDefaultThresholds", restore_default_thresholds},
    Implementation{"CIM_Service", "StartService", start_service},
    Implementation{"CIM_Service", "StopService", stop_service},
    Implementation{"HOST_HypervisorSystem", "EvaluateThresholds", evaluate_thresholds},
    Implementation{"DEMO_Service", "Echo", echo},
    Implementation{"DEMO_Service", "ReturnNumber", return_number},
    Implementation{"DEMO_Service", "ReturnNothing", return_nothing},
    Implementation{"DEMO_Service", "Greet", greet},
    Implementation{"DEMO_Service", "SendTestIndications", send_test_indications},
    Implementation{"DEMO_Service", "GetDeliveryStatistics", get_delivery_statistics}};

}  // namespace

const Value& MethodCall::argument(std::string_view name) const {
  static const Value none;
  for (const Argument& each : arguments) {
    if (same_name(each.parameter->name, name)) return each.value;
  }
  return none;
}

void MethodResult::add(const Method& method, std::string_view name, Value value) {
  for (const Parameter& each : method.parameters) {
    if (same_name(each.name, name)) out.push_back({&each, std::move(value)});
  }
}

MethodWork find_work(const Method& method) {
  for (const Implementation& each : implementations) {
    if (same_name(each.class_name, method.class_origin) && same_name(each.method, method.name)) {
      return each.work;
    }
  }
  return nullptr;
}

}  // namespace simulator
