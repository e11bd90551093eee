#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
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

// What a shortage can come to, and a piece of the trace that tells of it.
struct Verdict {
  int status;
  const char* told_by;
};

constexpr Verdict verdicts[] = {
    // The answer came, but its results found no place.
    {0, ": Exception raised: cannot alloc memory!"},
    // The header list could not be made: nothing was sent.
    {0, "ErrCode:0 No error"},
    // Of libcurl: no handle, no place for the address, none for the data, and any other one.
    {2, "ErrCode:2 Failed initialization"},
    {6, "ErrCode:6 Couldn't resolve host name"},
    {23, "ErrCode:23 Failed writing received data"},
    {27, "ErrCode:27 Out of memory"},
    {1001, ": Exception raised: std::bad_alloc"},
    // Nothing was sent, so that there is no return value.
    {1001, "ErrCode:0 No error"},
    // There is no entry for the class of namespaces.
    {1001, "() missing parameter: ClassName"},
    {5002, "ErrCode:5002 Can't parse the response"},
    // No namespace was extracted from the answer or found a place, or nothing was sent.
    {5005, ": Exception raised: cannot alloc memory!"},
    {5005, "putargv: Exception raised: cannot "},
    {5005, "ErrCode:0 No error"},
};

bool is_told(int status, const std::vector<std::string>& traces) {
  const std::string all = testing::PrintToString(traces);
  return std::any_of(std::begin(verdicts), std::end(verdicts), [&](const Verdict& verdict) {
    return verdict.status == status && all.find(verdict.told_by) != std::string::npos;
  });
}

bool run(const Operation& operation, CIMcontainer& context) {
  Arguments arguments;
  context.SetExtraTimeOut(-1);
  return operation.run(context, arguments);
}

// An operation, run while each of its allocations fails. A request goes out whole or not at all,
// and the context serves again as soon as there is memory.
class ShortOperation {
 public:
  explicit ShortOperation(const Operation& operation)
      : operation_(operation),
        scripts_{{{script::ReadRequest{}, script::Send{last_http_answer(operation.answer)}}},
                 true} {}

  void expect_a_verdict(AllocationKind kind) {
    for_each_failing_allocation([this](AllocationFailure& failure) { expect_a_verdict(failure); },
                                kind);
    const std::vector<std::string> requests = server_.requests();
    ASSERT_FALSE(requests.empty());
    for (const std::string& request : requests) EXPECT_EQ(request, requests.back());
  }

 private:
  void expect_a_verdict(AllocationFailure& failure) {
    const TraceRecorder recorder(trace_level::error | trace_level::warning);
    Arguments arguments;
    ServerContext context(server_.address(), server_.port_text());
    context.SetExtraTimeOut(-1);
    failure.arm();
    const bool success = operation_.run(context, arguments);
    failure.disarm();
    const int status = context.ChkCimStatus();
    if (success) {
      EXPECT_EQ(status, 0);
      return;
    }
    EXPECT_TRUE(failure.happened());
    EXPECT_TRUE(is_told(status, recorder.texts()))
        << status << testing::PrintToString(recorder.texts());
    // Another server, so that this one keeps only what came while memory was short.
    context.port = after_.port_text();
    EXPECT_TRUE(run(operation_, context)) << status;
    EXPECT_EQ(context.ChkCimStatus(), 0);
  }

  const Operation& operation_;
  const Scripts scripts_;
  ScriptedServer server_{scripts_};
  ScriptedServer after_{scripts_};
};

TEST(OperationMemory, IsShortDuringAWholeExchange) {
  for (const Operation& operation : operations) {
    SCOPED_TRACE(operation.name);
    ShortOperation(operation).expect_a_verdict(AllocationKind::cpp);
  }
}

// The server and what it keeps of the requests end with each run.
TEST(OperationMemory, LeaksNothing) {
  const TraceRecorder silent(0);
  const auto is_enumeration = [](const Operation& operation) {
    return std::string(operation.name) == "EnumerateInstances";
  };
  const Operation& operation =
      *std::find_if(std::begin(operations), std::end(operations), is_enumeration);
  EXPECT_TRUE(leaves_nothing(10, [&] {
    const ScriptedServer server(
        Scripts{{{script::ReadRequest{}, script::Send{last_http_answer(operation.answer)}}}, true});
    for_each_failing_allocation([&](AllocationFailure& failure) {
      Arguments arguments;
      ServerContext context(server.address(), server.port_text());
      context.SetExtraTimeOut(-1);
      failure.arm();
      operation.run(context, arguments);
      failure.disarm();
    });
  }));
}

// libcurl has made what it makes once in a process.
TEST(OperationMemory, IsShortInTheLibraryOfC) {
  for (const Operation& operation : operations) {
    SCOPED_TRACE(operation.name);
    const ScriptedServer server(
        Scripts{{{script::ReadRequest{}, script::Send{last_http_answer(operation.answer)}}}, true});
    ServerContext context(server.address(), server.port_text());
    ASSERT_TRUE(run(operation, context));
    ShortOperation(operation).expect_a_verdict(AllocationKind::c);
  }
}

}  // namespace
