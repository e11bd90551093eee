#include "methods.h"

namespace simulator {

MethodResult echo(const MethodCall& call) {
  return {"0", call.arguments};
}

MethodResult return_number(const MethodCall& call) {
  return {*call.text("Number"), {}};
}

MethodResult return_nothing(const MethodCall&) {
  return {};
}

MethodResult greet(const MethodCall& call) {
  MethodResult result{"0", {}};
  result.add(call.method, "Greeting", Value{"Hello, " + *call.text("Name") + '!'});
  return result;
}

}  // namespace simulator
