#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "CIMoperations/extrinsic_test.h"
#include "support/failing_allocator.h"

// Every operation while memory is short.
namespace {

using namespace zuCIM;

constexpr std::uint64_t large_number = 18446744073709551615ULL;
// Long enough for its copies to need memory.
const std::string long_text(100, 'x');
const std::string long_names = "INSTANCENAME CLASSNAME=" + long_text + "\n";

// What the operations are given. Made while memory is at hand.
struct Arguments {
  Arguments() { names.putargv(long_text.c_str(), -1, 15); }

  Tree name{"CIM\n " + long_names};
  Tree reference{long_names};
  Tree instance{"INSTANCE CLASSNAME=CIM_A\n"};
  Tree definition{"CLASS NAME=CIM_A\n"};
  CIMarray names;
  CIMarray namespaces;
  _properties_ properties[4] = {{"number", type::uint64, 1, &large_number, nullptr},
                                {"text", type::string, 1, long_text.c_str(), nullptr},
                                {"reference", type::reference, 1, "CIM_A", &reference},
                                {nullptr, 0, 0, nullptr, nullptr}};
  _paramvalue_ parameters[4] = {{"number", type::uint64, 1, &large_number},
                                {"text", type::string, 1, long_text.c_str()},
                                {"reference", type::reference, 1, &reference},
                                end_of_parameters};
};

struct Operation {
  const char* name;
  // The answer of the server.
  std::string answer;
  // Runs the operation; true when it says that it succeeded.
  std::function<bool(CIMcontainer&, Arguments&)> run;
};

const std::string one_name = return_value("<INSTANCENAME CLASSNAME=\"CIM_A\"/>\n");
const std::string one_namespace = return_value(
    "<VALUE.NAMEDINSTANCE>\n"
    "<INSTANCENAME CLASSNAME=\"CIM_Namespace\">\n"
    "<KEYBINDING NAME=\"Name\"><KEYVALUE>root/a</KEYVALUE></KEYBINDING>\n"
    "</INSTANCENAME>\n"
    "<INSTANCE CLASSNAME=\"CIM_Namespace\"/>\n"
    "</VALUE.NAMEDINSTANCE>\n");

const Operation operations[] = {
    {"GetClass", return_value("<CLASS NAME=\"CIM_A\">\n</CLASS>\n"),
     [](CIMcontainer& c, Arguments& a) { return c.Imethod_GetClass(1, 0, 1, &a.names) == 0; }},
    {"GetInstance", return_value("<INSTANCE CLASSNAME=\"CIM_A\"/>\n"),
     [](CIMcontainer& c, Arguments& a) {
       return c.Imethod_GetInstance(a.name.next, 1, &a.names) != 0;
     }},
    {"DeleteClass", void_answer,
     [](CIMcontainer& c, Arguments&) { return c.Imethod_DeleteClass() == 0; }},
    {"DeleteInstance", void_answer,
     [](CIMcontainer& c, Arguments& a) { return c.Imethod_DeleteInstance(a.name.next) == 0; }},
    {"CreateClass", void_answer,
     [](CIMcontainer& c, Arguments& a) { return c.Imethod_CreateClass(a.definition) == 0; }},
    {"CreateInstance", one_name,
     [](CIMcontainer& c, Arguments& a) { return c.Imethod_CreateInstance(a.properties) != 0; }},
    {"ModifyClass", void_answer,
     [](CIMcontainer& c, Arguments& a) { return c.Imethod_ModifyClass(a.definition) == 0; }},
    {"ModifyInstance", void_answer,
     [](CIMcontainer& c, Arguments& a) {
       return c.Imethod_ModifyInstance(a.name.next, a.instance, &a.names) == 0;
     }},
    {"EnumerateClasses", empty_answer,
     [](CIMcontainer& c, Arguments&) { return c.Imethod_EnumerateClasses(1, 0, 1, 0) == 0; }},
    {"EnumerateClassNames", empty_answer,
     [](CIMcontainer& c, Arguments&) { return c.Imethod_EnumerateClassNames(1) == 0; }},
    {"EnumerateInstances", one_namespace,
     [](CIMcontainer& c, Arguments& a) {
       return c.Imethod_EnumerateInstances(1, 0, 1, 0, &a.names) != 0;
     }},
    {"EnumerateInstanceNames", one_name,
     [](CIMcontainer& c, Arguments&) { return c.Imethod_EnumerateInstanceNames() != nullptr; }},
    {"ExecQuery", empty_answer,
     [](CIMcontainer& c, Arguments&) {
       return c.Imethod_ExecQuery("WQL", long_text.c_str()) == 0;
     }},
    {"GetProperty", empty_answer,
     [](CIMcontainer& c, Arguments& a) {
       return c.Imethod_GetProperty(a.name.next, long_text.c_str()) == 0;
     }},
    {"SetProperty", void_answer,
     [](CIMcontainer& c, Arguments& a) {
       return c.Imethod_SetProperty(a.name.next, long_text.c_str(), long_text.c_str()) == 0;
     }},
    {"performExtrinsicMethod", returning("0"),
     [](CIMcontainer& c, Arguments& a) {
       return c.performExtrinsicMethod("Start", a.name.next, a.parameters) == 0;
     }},
    {"getNameSpace", one_namespace,
     [](CIMcontainer& c, Arguments& a) { return c.getNameSpace(a.namespaces) == 0; }},
};

// This machine's address is not known, so that a complete request ends with its own status before
// libcurl is asked for anything.
TEST(OperationMemory, IsShortWhileARequestIsWritten) {
  const TraceRecorder recorder(0);
  for (const Operation& operation : operations) {
    const unsigned count = for_each_failing_allocation([&](AllocationFailure& failure) {
      Arguments arguments;
      ServerContext context("127.0.0.2", "1");
      context.skipIpCheck = false;
      failure.arm();
      const bool success = operation.run(context, arguments);
      failure.disarm();
      EXPECT_FALSE(success);
      EXPECT_EQ(context.ChkCimStatus(), failure.happened() ? 1001 : 5004) << operation.name;
      EXPECT_EQ(context.request, "") << operation.name;
    });
    EXPECT_GT(count, 0U) << operation.name;
  }
}

// A request goes out whole or not at all, and what is left is in order whatever fails.
TEST(OperationMemory, IsShortDuringAWholeExchange) {
  const TraceRecorder recorder(0);
  for (const Operation& operation : operations) {
    ScriptedServer server(
        Scripts{{{script::ReadRequest{}, script::Send{last_http_answer(operation.answer)}}}, true});
    for_each_failing_allocation(
        [&](AllocationFailure& failure) {
          Arguments arguments;
          ServerContext context(server.address(), server.port_text());
          context.SetExtraTimeOut(-1);
          failure.arm();
          const bool success = operation.run(context, arguments);
          failure.disarm();
          EXPECT_TRUE(success || failure.happened()) << operation.name;
          EXPECT_TRUE(!success || context.ChkCimStatus() == 0) << operation.name;
        },
        AllocationKind::cpp);
    const std::vector<std::string> requests = server.requests();
    ASSERT_FALSE(requests.empty()) << operation.name;
    for (const std::string& request : requests)
      EXPECT_EQ(body_of(request), body_of(requests.back())) << operation.name;
  }
}

}  // namespace
