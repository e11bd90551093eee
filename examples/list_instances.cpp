// Lists the sensors of a CIM server, and then what they read.
// Usage: list_instances HOST PORT USER PASSWORD
#include <zuCIM.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

using namespace zuCIM;

// A value may be missing from an answer.
const char* or_dash(const char* text) {
  return text != nullptr ? text : "-";
}

// A result is a chain of elements: the next of its kind follows the last element inside this one.
CIMelement* following(CIMelement* element) {
  return element->getLastElement()->next;
}

void print_name(CIMelement* name) {
  std::printf("%s.DeviceID=\"%s\"\n", or_dash(name->attr_find(attr::CLASSNAME)),
              or_dash(name->getValueOf(elem::KEYBINDING, "DeviceID")));
}

void print_reading(CIMelement* sensor) {
  static const std::map<std::string, const char*> units{
      {"2", "degrees C"}, {"5", "V"}, {"6", "A"}, {"7", "W"}, {"19", "rpm"}, {"65", "%"}};
  const auto property = [&](const char* name) {
    return or_dash(sensor->getValueOf(elem::PROPERTY, name));
  };
  const auto unit = units.find(property("BaseUnits"));
  const double scale = std::pow(10, std::atoi(property("UnitModifier")));
  std::printf("%-44s %10g %s\n", property("ElementName"),
              scale * std::atof(property("CurrentReading")),
              unit != units.end() ? unit->second : "");
}

int fail(const char* what, int code) {
  std::fprintf(stderr, "%s: status %d\n", what, code);
  return 1;
}

int main(int argc, char* argv[]) {
  if (argc != 5) return std::fputs("Usage: list_instances HOST PORT USER PASSWORD\n", stderr), 2;
  const _THR_SERVER_ server{.host = argv[1],
                            .user = argv[3],
                            .password = argv[4],
                            .port = argv[2],  // 5989 means HTTPS.
                            .caFile = "",
                            .certFile = "",
                            .keyFile = ""};

  // A context stands for one server. The library keeps it, and its index always finds it again.
  const auto index = makeContainer(&server, 0);
  CIMcontainer* context = getContainer(static_cast<unsigned>(getCIM(index)));
  if (context == nullptr) return fail("No context", status::failure);

  // Admission finds the addresses of the server and of this machine and asks for credentials.
  context->addContainer();
  if (context->ChkCimStatus() == status::local_address) {
    std::puts("(This machine's name has no address but 127.0.0.1; that is good enough here.)\n");
    context->localIP = "127.0.0.1";
  } else if (context->ChkCimStatus() != status::success) {
    return fail("Admission", context->ChkCimStatus());
  }

  context->ESXi_Occupied(true);  // Operations are refused unless the context is marked as taken.
  context->setCurrentClass("CIM_NumericSensor", "root/cimv2");

  CIMelement* name = context->Imethod_EnumerateInstanceNames();
  if (context->ChkCimStatus() != status::success)
    return fail("EnumerateInstanceNames", context->ChkCimStatus());
  for (; name != nullptr; name = following(name)) print_name(name);

  // LocalOnly false, IncludeQualifiers false, IncludeClassOrigin false, DeepInheritance true.
  context->Imethod_EnumerateInstances(0, 0, 0, 1, nullptr);
  if (context->ChkCimStatus() != status::success)
    return fail("EnumerateInstances", context->ChkCimStatus());
  std::printf("\n%-44s %10s\n", "Sensor", "Reading");
  const CIMelement* list = context->currentClass->instances;  // Null when there are none.
  for (CIMelement* sensor = list != nullptr ? list->next : nullptr; sensor != nullptr;
       sensor = following(sensor))
    print_reading(sensor);

  context->ESXi_Occupied(false);
  return 0;
}
