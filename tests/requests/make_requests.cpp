// Writes docs/requests.md: a real request and its answer for each operation, made by the library
// and answered by the simulator.
#include <iostream>
#include <sstream>
#include <string>

#include "support/simulator_process.h"
#include "zuCIM.h"

namespace {

using namespace zuCIM;

constexpr int longest_answer = 40;

constexpr const char* introduction =
    "# Requests and answers\n\n"
    "What goes over the wire for each operation: the body of the request as the library writes "
    "it,\n"
    "and the body of the answer that `zucim-simulator` gives. `tests/requests/make_requests.cpp`\n"
    "makes this page, and a test fails when it is stale; `scripts/update-requests` writes it "
    "anew.\n";

// A context for a server that needs no admission.
class Client : public CIMcontainer {
 public:
  explicit Client(const SimulatorProcess& simulator) {
    const std::string port_text = std::to_string(simulator.port());
    const _THR_SERVER_ server{
        simulator.address().c_str(), "root", "secret", port_text.c_str(), "", "", ""};
    setHostUserPasswd(&server);
    skipIpCheck = true;
    ESXi_Occupied(true);
  }

  CIMelement* first_name(const char* class_name) {
    setCurrentClass(class_name, "");
    return Imethod_EnumerateInstanceNames();
  }
};

void print_lines(const std::string& text, int most) {
  std::istringstream lines(text);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count)
    if (count < most) std::cout << line << '\n';
  if (count > most) std::cout << "... (" << count - most << " more lines)\n";
}

void print_block(const char* title, const std::string& text, int most) {
  std::cout << '\n' << title << "\n\n```xml\n";
  print_lines(text, most);
  std::cout << "```\n";
}

// Every part of the page stands for a success; anything else is a fault of this program.
void print_exchange(const CIMcontainer& context, const std::string& call, int status) {
  if (status != 0) throw std::runtime_error(call + ": status " + std::to_string(status));
  std::cout << "\n## " << call << '\n';
  print_block("Request:", context.request, 1000);
  print_block("Answer:", context.responseBody, longest_answer);
}

CIMarray property_list(const char* name) {
  CIMarray names;
  names.putargv(name, -1, 15);
  return names;
}

void read(Client& client) {
  client.setCurrentClass("DEMO_Note", "");
  const CIMarray text_only = property_list("Text");
  print_exchange(client, "Imethod_GetClass(1, 0, -1, {\"Text\"})",
                 client.Imethod_GetClass(1, 0, -1, &text_only));
  client.Imethod_EnumerateInstanceNames();
  print_exchange(client, "Imethod_EnumerateInstanceNames()", client.ChkCimStatus());
  client.Imethod_EnumerateInstances(0, 0, 0, 1, &text_only);
  print_exchange(client, "Imethod_EnumerateInstances(0, 0, 0, 1, {\"Text\"})",
                 client.ChkCimStatus());
  client.Imethod_GetInstance(client.first_name("DEMO_Note"), -1, nullptr);
  print_exchange(client, "Imethod_GetInstance(name, -1, null)", client.ChkCimStatus());
  client.setCurrentClass("DEMO_Note", "");
  print_exchange(client, "Imethod_EnumerateClassNames(0)", client.Imethod_EnumerateClassNames(0));
  client.setCurrentClass("CIM_NumericSensor", "");
  print_exchange(client, "Imethod_EnumerateClasses(1, 0, 0, 0)",
                 client.Imethod_EnumerateClasses(1, 0, 0, 0));
  print_exchange(client, "Imethod_ExecQuery(\"WQL\", \"DEMO_Note\")",
                 client.Imethod_ExecQuery("WQL", "DEMO_Note"));
  print_exchange(client, "Imethod_GetProperty(name, \"Text\")",
                 client.Imethod_GetProperty(client.first_name("DEMO_Note"), "Text"));
  CIMarray names;
  print_exchange(client, "getNameSpace(names)", client.getNameSpace(names));
}

void change_instances(Client& client) {
  print_exchange(client, "Imethod_SetProperty(name, \"Text\", \"new\")",
                 client.Imethod_SetProperty(client.first_name("DEMO_Note"), "Text", "new"));
  const std::uint32_t id = 2;
  const char* const text = "a note";
  const _properties_ properties[] = {{"Id", type::uint32, 1, &id, nullptr},
                                     {"Text", type::string, 1, text, nullptr},
                                     {nullptr, 0, 0, nullptr, nullptr}};
  client.setCurrentClass("DEMO_Note", "");
  auto* const name = reinterpret_cast<CIMelement*>(client.Imethod_CreateInstance(properties));
  print_exchange(client, "Imethod_CreateInstance({Id = 2, Text = \"a note\"})",
                 client.ChkCimStatus());
  CIMelement document;
  document.ParseCIMXML(
      "<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\"><INSTANCE CLASSNAME=\"DEMO_Note\"><PROPERTY "
      "NAME=\"Text\" TYPE=\"string\"><VALUE>other</VALUE></PROPERTY></INSTANCE></CIM>");
  const CIMarray text_only = property_list("Text");
  print_exchange(client, "Imethod_ModifyInstance(name, instance, {\"Text\"})",
                 client.Imethod_ModifyInstance(name, *document.next, &text_only));
  print_exchange(client, "Imethod_DeleteInstance(name)", client.Imethod_DeleteInstance(name));
}

void change_classes(Client& client) {
  CIMelement document;
  document.ParseCIMXML(
      "<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\"><CLASS NAME=\"DEMO_Made\"><PROPERTY "
      "NAME=\"Id\" TYPE=\"uint32\"><QUALIFIER NAME=\"Key\" TYPE=\"boolean\"><VALUE>true</VALUE>"
      "</QUALIFIER></PROPERTY></CLASS></CIM>");
  client.setCurrentClass("DEMO_Made", "");
  print_exchange(client, "Imethod_CreateClass(definition)",
                 client.Imethod_CreateClass(*document.next));
  print_exchange(client, "Imethod_ModifyClass(definition)",
                 client.Imethod_ModifyClass(*document.next));
  print_exchange(client, "Imethod_DeleteClass()", client.Imethod_DeleteClass());
}

void call_method(Client& client) {
  CIMelement* const service = client.first_name("DEMO_Service");
  const std::uint16_t numbers[] = {1, 2};
  const _paramvalue_ parameters[] = {{"ScalarString", type::string, 1, "a text"},
                                     {"ArrayUint16", type::uint16 | type::array_bit, 2, numbers},
                                     {"Link", type::reference, 1, service},
                                     {nullptr, 0, 0, nullptr}};
  print_exchange(client, "performExtrinsicMethod(\"Echo\", name, parameters)",
                 client.performExtrinsicMethod("Echo", service, parameters));
}

}  // namespace

int main() try {
  const SimulatorProcess simulator;
  Client client(simulator);
  std::cout << introduction;
  read(client);
  change_instances(client);
  change_classes(client);
  call_method(client);
  return 0;
} catch (const std::exception& error) {
  std::cerr << "make_requests: " << error.what() << '\n';
  return 1;
}
