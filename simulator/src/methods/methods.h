#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "../repository.h"

// Methods of classes, as clients call them.
namespace simulator {

class Indications;

// A value for a parameter of a method.
struct Argument {
  const Parameter* parameter;
  Value value;
};

// A call that has been checked: the method exists, and the arguments are of the types it declares.
struct MethodCall {
  Namespace& name_space;
  const Class& type;
  const Method& method;
  Indications& indications;
  Instance* instance = nullptr;  // null where a class was called
  std::vector<Argument> arguments;

  // The value of an argument; null if it is not given.
  const Value& argument(std::string_view name) const;

  // The text of a scalar argument; null if it has none.
  const std::string* text(std::string_view name) const { return argument(name).text(); }
};

// What a method answers.
struct MethodResult {
  std::optional<std::string> return_value;  // without it the answer has no RETURNVALUE
  std::vector<Argument> out;

  // Adds a value for the out parameter of that name, if the method has it.
  void add(const Method& method, std::string_view name, Value value);
};

using MethodWork = MethodResult (*)(const MethodCall& call);

// What carries a method out; null if there is nothing.
MethodWork find_work(const Method& method);

// Return values, as management profiles number them.
inline constexpr const char* completed = "0";
inline constexpr const char* invalid_parameter = "5";

// Methods of the inventory's classes.
MethodResult request_state_change(const MethodCall& call);
MethodResult reset_device(const MethodCall& call);
MethodResult restore_default_thresholds(const MethodCall& call);
MethodResult evaluate_thresholds(const MethodCall& call);
MethodResult start_service(const MethodCall& call);
MethodResult stop_service(const MethodCall& call);

// Methods of DEMO_Service.
MethodResult echo(const MethodCall& call);
MethodResult return_number(const MethodCall& call);
MethodResult return_nothing(const MethodCall& call);
MethodResult greet(const MethodCall& call);
MethodResult send_test_indications(const MethodCall& call);
MethodResult get_delivery_statistics(const MethodCall& call);

}  // namespace simulator
