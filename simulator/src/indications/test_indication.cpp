#include "test_indication.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <vector>

#include "../xml_writer.h"

namespace simulator {

namespace {

// The time in the form of the type datetime, in UTC.
std::string time_now() {
  using namespace std::chrono;
  const auto now = system_clock::now();
  const auto micros = duration_cast<microseconds>(now.time_since_epoch()).count() % 1'000'000;
  const std::time_t seconds = system_clock::to_time_t(now);
  std::tm parts{};
  ::gmtime_r(&seconds, &parts);
  std::array<char, 16> date{};
  std::strftime(date.data(), date.size(), "%Y%m%d%H%M%S", &parts);
  std::array<char, 16> fraction{};
  std::snprintf(fraction.data(), fraction.size(), ".%06d+000", static_cast<int>(micros));
  return std::string(date.data()) + fraction.data();
}

void set_alert(Instance& alert, const std::string& number) {
  alert.set_text("AlertType", "5");  // device alert
  alert.set_text("ProbableCause", "0");
  alert.set_text("Description", "Nothing has happened; this is a test.");
  alert.set_text("AlertingManagedElement", "root/cimv2:DEMO_Service.Name=\"demo\"");
  alert.set_text("SystemName", "host-01.example.test");
  alert.set_text("ProviderName", "zucim-simulator");
  alert.set_text("OwningEntity", "zucim-simulator");
  alert.set_text("MessageID", "TEST1");
  alert.set_text("Message", "Test indication " + number);
}

std::vector<std::size_t> given_properties(const Instance& instance) {
  std::vector<std::size_t> positions;
  for (std::size_t i = 0; i < instance.values.size(); ++i) {
    if (instance.values[i]) positions.push_back(i);
  }
  return positions;
}

}  // namespace

const Class* find_indication_class(const Namespace& name_space, const std::string& class_name) {
  const Class* type = name_space.find_class(class_name);
  const bool fits = type != nullptr && is_a(name_space, *type, "CIM_Indication") &&
                    !has_qualifier(type->qualifiers, "Abstract");
  return fits ? type : nullptr;
}

std::string test_indication(const Class& type, const IndicationFacts& facts) {
  Instance indication{&type, std::vector<ValuePtr>(type.properties.size())};
  indication.set_text("IndicationIdentifier", "zucim-simulator:" + std::to_string(facts.number));
  indication.set_text("IndicationTime", time_now());
  indication.set_text("IndicationFilterName", facts.filter_name);
  indication.set_text("PerceivedSeverity", "2");  // information
  indication.set_text("SequenceContext", facts.context);
  indication.set_text("SequenceNumber", std::to_string(facts.sequence_number));
  indication.set_text("SourceInstanceHost", "host-01.example.test");
  indication.set_text("SourceInstanceModelPath", "root/cimv2:DEMO_Service.Name=\"demo\"");
  if (type.find_property("AlertType")) set_alert(indication, std::to_string(facts.number));
  std::string out;
  InstanceWriter(type, given_properties(indication), {}).append(out, indication);
  return out;
}

}  // namespace simulator
