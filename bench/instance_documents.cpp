#include <initializer_list>

#include "documents.h"
#include "writer.h"

namespace bench {
namespace {

constexpr unsigned seed = 5989;

struct Key {
  const char* name;
  std::string value;
};

void add_name(Writer& out, const std::string& class_name, std::initializer_list<Key> keys) {
  out.open("INSTANCENAME CLASSNAME=\"" + class_name + "\"");
  for (const Key& key : keys)
    out.open("KEYBINDING NAME=\"" + std::string(key.name) + "\"")
        .line("<KEYVALUE VALUETYPE=\"string\">" + key.value + "</KEYVALUE>")
        .close("KEYBINDING");
  out.close("INSTANCENAME");
}

std::string typed(const std::string& element, const std::string& name, const std::string& type) {
  return element + " NAME=\"" + name + "\"  TYPE=\"" + type + "\"";
}

void add_property(Writer& out, const char* name, const char* type, const std::string& value) {
  out.open(typed("PROPERTY", name, type)).value(value).close("PROPERTY");
}

void add_null(Writer& out, const char* name, const char* type) {
  out.open(typed("PROPERTY", name, type)).close("PROPERTY");
}

void add_array(Writer& out, const char* name, const char* type, Random& random, std::size_t count) {
  out.open(typed("PROPERTY.ARRAY", name, type)).open("VALUE.ARRAY");
  for (std::size_t i = 0; i < count; ++i) out.value(random.number(20));
  out.close("VALUE.ARRAY").close("PROPERTY.ARRAY");
}

std::string device_id(std::size_t index) {
  return "device-" + std::to_string(100000 + index);
}

void add_fan(Writer& out, Random& random, const std::string& id) {
  out.open("INSTANCE CLASSNAME=\"CIM_Fan\" ");
  add_property(out, "DeviceID", "string", id);
  add_property(out, "ElementName", "string", random.words(3));
  add_property(out, "DesiredSpeed", "uint64", random.number(9000));
  add_property(out, "VariableSpeed", "boolean", random.below(2) == 0 ? "FALSE" : "TRUE");
  out.close("INSTANCE");
}

void add_small_instance(Writer& out, Random& random, std::size_t index) {
  const std::string id = device_id(index);
  out.open("VALUE.NAMEDINSTANCE");
  add_name(out, "CIM_Fan", {{"DeviceID", id}});
  add_fan(out, random, id);
  out.close("VALUE.NAMEDINSTANCE");
}

// Texts with entities, as captions and descriptions have them.
std::string encoded_text(Random& random) {
  return random.words(2) + " &lt;" + random.word() + "&gt; &amp; &quot;" + random.word() + "&quot;";
}

void add_states(Writer& out, Random& random) {
  add_property(out, "EnabledState", "uint16", random.number(10));
  add_property(out, "RequestedState", "uint16", random.number(12));
  add_property(out, "EnabledDefault", "uint16", "2");
  add_property(out, "HealthState", "uint16", random.number(30));
  add_array(out, "OperationalStatus", "uint16", random, 2);
  add_null(out, "OtherEnabledState", "string");
  add_null(out, "TimeOfLastStateChange", "datetime");
  add_null(out, "InstallDate", "datetime");
}

void add_readings(Writer& out, Random& random) {
  add_property(out, "SensorType", "uint16", "2");
  add_property(out, "BaseUnits", "uint16", "2");
  add_property(out, "UnitModifier", "sint32", "-2");
  add_property(out, "RateUnits", "uint16", "0");
  add_property(out, "CurrentReading", "sint32", random.number(12000));
  add_property(out, "UpperThresholdCritical", "sint32", "11000");
  add_property(out, "LowerThresholdCritical", "sint32", "-500");
  add_array(out, "SupportedThresholds", "uint16", random, 4);
  add_null(out, "Hysteresis", "uint32");
}

void add_identity(Writer& out, Random& random, const std::string& id) {
  add_property(out, "CreationClassName", "string", "HOST_NumericSensor");
  add_property(out, "DeviceID", "string", id);
  add_property(out, "SystemCreationClassName", "string", "HOST_ComputerSystem");
  add_property(out, "SystemName", "string", "host-17.example");
  add_property(out, "ElementName", "string", random.words(2));
  add_property(out, "Caption", "string", encoded_text(random));
  add_property(out, "Description", "string", random.words(12));
}

void add_typical_instance(Writer& out, Random& random, std::size_t index) {
  const std::string id = device_id(index);
  out.open("VALUE.NAMEDINSTANCE");
  add_name(out, "HOST_NumericSensor",
           {{"CreationClassName", "HOST_NumericSensor"},
            {"DeviceID", id},
            {"SystemCreationClassName", "HOST_ComputerSystem"},
            {"SystemName", "host-17.example"}});
  out.open("INSTANCE CLASSNAME=\"HOST_NumericSensor\" ");
  add_identity(out, random, id);
  add_states(out, random);
  add_readings(out, random);
  out.close("INSTANCE").close("VALUE.NAMEDINSTANCE");
}

void add_namespace(Writer& out, Random&, std::size_t index) {
  out.open("VALUE.NAMEDINSTANCE");
  add_name(out, "CIM_Namespace",
           {{"CreationClassName", "CIM_Namespace"}, {"Name", "root/part" + std::to_string(index)}});
  out.line("<INSTANCE CLASSNAME=\"CIM_Namespace\"/>").close("VALUE.NAMEDINSTANCE");
}

template <class AddInstance>
std::string instances(std::size_t count, AddInstance add_instance) {
  Random random(seed);
  Writer out;
  begin_answer(out, "EnumerateInstances");
  for (std::size_t i = 0; i < count; ++i) add_instance(out, random, i);
  return end_answer(out);
}

}  // namespace

std::string small_instances(std::size_t count) {
  return instances(count, add_small_instance);
}

std::string typical_instances(std::size_t count) {
  return instances(count, add_typical_instance);
}

std::string namespaces(std::size_t count) {
  return instances(count, add_namespace);
}

std::string one_instance() {
  Random random(seed);
  Writer out;
  begin_answer(out, "GetInstance");
  add_fan(out, random, device_id(0));
  return end_answer(out);
}

std::string instance_names(std::size_t count) {
  Writer out;
  begin_answer(out, "EnumerateInstanceNames");
  for (std::size_t i = 0; i < count; ++i)
    add_name(out, "CIM_Fan", {{"CreationClassName", "CIM_Fan"}, {"DeviceID", device_id(i)}});
  return end_answer(out);
}

}  // namespace bench
