#include <charconv>

#include "../indications/indications.h"
#include "../value_check.h"
#include "methods.h"

namespace simulator {

namespace {

constexpr std::uint32_t most_at_once = 10000;

std::uint32_t number_of(const std::string& text) {
  std::uint32_t number = 0;
  const std::string digits = normalised("uint32", text);
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

}  // namespace

MethodResult send_test_indications(const MethodCall& call) {
  const std::string* class_name = call.text("ClassName");
  const std::uint32_t count = number_of(*call.text("Count"));
  if (count > most_at_once) return {invalid_parameter, {}};
  const auto subscriptions = call.indications.send_test(
      class_name == nullptr ? Indications::usual_class : *class_name, count);
  if (!subscriptions) return {invalid_parameter, {}};
  MethodResult result{completed, {}};
  result.add(call.method, "Subscriptions", Value{std::to_string(*subscriptions)});
  return result;
}

MethodResult get_delivery_statistics(const MethodCall& call) {
  const std::string* destination = call.text("Destination");
  const Tally tally = call.indications.tally(destination == nullptr ? "" : *destination);
  MethodResult result{completed, {}};
  const auto add = [&](const char* name, std::uint64_t number) {
    result.add(call.method, name, Value{std::to_string(number)});
  };
  add("Queued", tally.queued);
  add("Pending", tally.pending());
  add("Sent", tally.sent);
  add("Accepted", tally.accepted);
  add("Retried", tally.retried);
  add("Failed", tally.failed);
  add("Dropped", tally.dropped);
  return result;
}

}  // namespace simulator
