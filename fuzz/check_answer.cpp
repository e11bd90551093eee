#include "check_answer.h"

#include <cstdint>
#include <string>

#include "BRQ/Time.h"
#include "CIMconnection/response_scan.h"
#include "CIMoperations/server_context.h"
#include "answer_server.h"
#include "failure.h"
#include "zuCIM.h"

namespace {

using namespace zuCIM;

// Small enough for the fuzzer to exceed them.
constexpr std::size_t largest_body = 16384;
constexpr std::size_t largest_header = 1024;

// Time stands still, and pauses take none.
constexpr BRQ::Misc::Clock still_clock{[]() -> std::uint32_t { return 1000; }, [](unsigned) {}};

AnswerServer& server() {
  static auto& only_one = *new AnswerServer;
  return only_one;
}

// An HTTP message of the rest of the input: the body in one piece, as a chunk, as the header lines
// before a good body, or the bytes as they are.
std::string answer_of(ByteSource& input) {
  const char form = static_cast<char>(input.byte());
  std::string bytes(input.rest());
  switch (form) {
    case 'b':
      return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(bytes.size()) + "\r\n\r\n" +
             bytes;
    case 'm':
      return "HTTP/1.1 200 OK\r\n\r\n" + return_value(bytes);
    case 'h':
      return "HTTP/1.1 200 OK\r\n" + bytes + "\r\n\r\n" + return_value("<VALUE>1</VALUE>");
    default:
      return bytes;
  }
}

// Everything in a list can be read and written.
void check_list(CIMelement* list) {
  std::string text;
  if (list != nullptr) list->GenerateCIMXML(text);
  for (CIMelement* node = list; node != nullptr; node = node->next) {
    if (node->value != nullptr) text += node->value;
    char* attribute = nullptr;
    for (unsigned i = 0; node->attr_get(i, &attribute) != attr::UNKNOWN; ++i) text += attribute;
  }
}

void check_exchange(CIMcontainer& context) {
  context.addCIMXMLheader();
  context.request += "</CIM>\n";
  const int outcome = context.sendRequest_recvResponse("Any", "root%2Fcimv2");
  require(outcome == context.ChkCimStatus(), "the outcome is the status");
  require(context.responseBody.size() <= largest_body, "the body is limited");
  require(context.responseHeader.size() <= largest_header, "the header lines are limited");
  check_list(&context.result);
  if (outcome != status::success) return;
  require(context.result.name == known_cim_elements[elem::CIM], "success brings a document");
  require(find_error_element(context.result) == nullptr, "success brings no ERROR");
  const auto line = find_status_line(context.responseHeader);
  require(!line || line->number == 200, "success is HTTP's, too");
}

void check_names(CIMcontainer& context) {
  const CIMelement* const first = context.Imethod_EnumerateInstanceNames();
  require(first == nullptr || context.ChkCimStatus() == 0, "a failure brings no names");
}

void check_instances(CIMcontainer& context) {
  const auto first = context.Imethod_EnumerateInstances(1, 0, -1, 0, nullptr);
  require(first == 0 || context.ChkCimStatus() == 0, "a failure brings no instances");
}

void check_class(CIMcontainer& context) {
  const int outcome = context.Imethod_GetClass(0, 1, 0, nullptr);
  require(outcome == context.ChkCimStatus() || outcome == status::failure, "the outcome");
}

void fill_name(CIMelement& name) {
  name.name = known_cim_elements[elem::INSTANCENAME];
  name.attr_put(attr::CLASSNAME, "CIM_A");
}

void check_instance(CIMcontainer& context) {
  CIMelement name;
  fill_name(name);
  const auto instance = context.Imethod_GetInstance(&name, 0, nullptr);
  require(instance == 0 || context.ChkCimStatus() == 0, "a failure brings no instance");
}

void check_new_instance(CIMcontainer& context) {
  const _properties_ properties[] = {{"Name", type::string, 1, "a", nullptr},
                                     {nullptr, 0, 0, nullptr, nullptr}};
  const auto name = context.Imethod_CreateInstance(properties);
  require(name == 0 || context.ChkCimStatus() == 0, "a failure brings no name");
}

void check_method(CIMcontainer& context) {
  CIMelement name;
  fill_name(name);
  const int outcome = context.performExtrinsicMethod("Stop", &name, nullptr);
  require(outcome == context.ChkCimStatus(), "the outcome is the status");
}

void check_namespaces(CIMcontainer& context) {
  CIMarray names;
  const int outcome = context.getNameSpace(names);
  require(outcome != 0 || names.argc > 0, "success brings a namespace");
}

void run_operation(char operation, CIMcontainer& context) {
  switch (operation) {
    case 'n':
      return check_names(context);
    case 'i':
      return check_instances(context);
    case 'c':
      return check_class(context);
    case 'g':
      return check_instance(context);
    case 'w':
      return check_new_instance(context);
    case 'x':
      return check_method(context);
    case 's':
      return check_namespaces(context);
    default:
      return check_exchange(context);
  }
}

}  // namespace

void check_answer(ByteSource input) {
  const char operation = static_cast<char>(input.byte());
  server().set_answer(answer_of(input));
  BRQ::Misc::set_clock(&still_clock);
  ServerContext context(AnswerServer::address, server().port());
  context.largestBody = largest_body;
  context.largestHeader = largest_header;
  context.SetExtraTimeOut(-1);
  run_operation(operation, context);
  check_list(context.currentClass->instanceNames);
  check_list(context.currentClass->instances);
  check_list(context.currentClass->methods);
}
