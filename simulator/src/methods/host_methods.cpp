#include <array>
#include <charconv>
#include <cstdint>

#include "../value_check.h"
#include "methods.h"

namespace simulator {

namespace {

// More return values of management profiles.
constexpr const char* failed = "4";
constexpr const char* job_started = "4096";
constexpr const char* timeout_not_supported = "4098";

// What becomes of EnabledState when a state is asked for.
struct Transition {
  std::string_view requested;
  const char* enabled;
  bool takes_time;
};

constexpr std::array transitions{
    Transition{"2", "2", false},  // enabled
    Transition{"3", "3", false},  // disabled
    Transition{"4", "3", true},   // shut down
    Transition{"6", "6", false},  // offline
    Transition{"10", "2", true},  // reboot
    Transition{"11", "2", true},  // reset
};

const Transition* find_transition(std::string_view requested) {
  for (const Transition& each : transitions) {
    if (each.requested == requested) return &each;
  }
  return nullptr;
}

bool is_interval(const std::string& datetime) {
  return datetime[21] == ':';
}

// Adds a job that is done already; null where the namespace has no class for it.
ReferencePtr add_job(Namespace& name_space, const std::string& name) {
  const Class* type = name_space.find_class("HOST_ConcreteJob");
  if (type == nullptr) return nullptr;
  auto job = std::make_unique<Instance>();
  job->type = type;
  job->values.resize(type->properties.size());
  std::size_t number = name_space.instances_of(*type).list().size();
  do {
    job->set_text("InstanceID", "HOST:job:" + std::to_string(++number));
  } while (name_space.find_instance(*type, name_of(*job)) != nullptr);
  job->set_text("ElementName", name);
  job->set_text("Name", name);
  job->set_text("JobState", "7");
  job->set_text("JobStatus", "Completed");
  job->set_text("PercentComplete", "100");
  ReferencePtr reference = reference_to(*job);
  name_space.add_instance(std::move(job));
  return reference;
}

std::optional<std::int64_t> number_of(const std::string* text) {
  std::int64_t result = 0;
  if (text == nullptr) return std::nullopt;
  const char* end = text->data() + text->size();
  if (std::from_chars(text->data(), end, result).ptr != end) return std::nullopt;
  return result;
}

// The reading of the sensor that a reference names, if there is such a sensor.
std::optional<std::int64_t> reading_of(const Namespace& name_space, const Reference& sensor) {
  const Class* type = name_space.find_class(sensor.target.class_name);
  const Instance* instance =
      type == nullptr ? nullptr : name_space.find_instance(*type, sensor.target);
  if (instance == nullptr) return std::nullopt;
  return number_of(instance->value("CurrentReading").text());
}

MethodResult set_started(const MethodCall& call, const char* started, const char* enabled) {
  call.instance->set_text("Started", started);
  call.instance->set_text("EnabledState", enabled);
  return {completed, {}};
}

}  // namespace

MethodResult request_state_change(const MethodCall& call) {
  const std::string* requested = call.text("RequestedState");
  const std::string* timeout = call.text("TimeoutPeriod");
  const Transition* transition =
      requested == nullptr ? nullptr : find_transition(normalised("uint16", *requested));
  if (transition == nullptr) return {invalid_parameter, {}};
  if (timeout != nullptr && !is_interval(*timeout)) return {timeout_not_supported, {}};

  call.instance->set_text("RequestedState", std::string(transition->requested));
  call.instance->set_text("EnabledState", transition->enabled);
  MethodResult result{transition->takes_time ? job_started : completed, {}};
  Value job;
  if (transition->takes_time) {
    if (ReferencePtr added =
            add_job(call.name_space, "Request state " + std::string(transition->requested))) {
      job.content = std::move(added);
    }
  }
  result.add(call.method, "Job", std::move(job));
  return result;
}

MethodResult reset_device(const MethodCall& call) {
  call.instance->set_text("EnabledState", "2");
  return {completed, {}};
}

// Nothing here ever moves a threshold away from its default.
MethodResult restore_default_thresholds(const MethodCall&) {
  return {completed, {}};
}

MethodResult start_service(const MethodCall& call) {
  return set_started(call, "TRUE", "2");
}

MethodResult stop_service(const MethodCall& call) {
  return set_started(call, "FALSE", "3");
}

MethodResult evaluate_thresholds(const MethodCall& call) {
  const ReferenceArray* sensors = call.argument("Sensors").references();
  const TextArray* limits = call.argument("Limits").array();
  if (sensors == nullptr || limits == nullptr || sensors->size() != limits->size()) {
    return {invalid_parameter, {}};
  }
  std::size_t exceeded = 0;
  Value first;
  for (std::size_t i = 0; i < sensors->size(); ++i) {
    const auto& limit_text = (*limits)[i];
    const auto limit = number_of(limit_text ? &*limit_text : nullptr);
    const auto reading = reading_of(call.name_space, *(*sensors)[i]);
    if (!limit || !reading) return {failed, {}};
    if (*reading <= *limit) continue;
    if (exceeded++ == 0) first.content = (*sensors)[i];
  }
  MethodResult result{completed, {}};
  result.add(call.method, "Exceeded", Value{std::to_string(exceeded)});
  result.add(call.method, "First", std::move(first));
  return result;
}

}  // namespace simulator
