#include <gtest/gtest.h>

#include <iterator>
#include <set>
#include <string>

#include "CIMoperations/operation_test.h"

// Single properties, the query, and the operations that are not implemented.
namespace {

using namespace zuCIM;

class Values : public OperationTest {};

std::string text_parameter(const std::string& name, const std::string& text) {
  return "<IPARAMVALUE NAME=\"" + name + "\">\n<VALUE>" + text + "</VALUE>\n</IPARAMVALUE>\n";
}

TEST_F(Values, ExecQuerySelectsAllPropertiesOfAClass) {
  serve({empty_answer});
  EXPECT_EQ(context_->Imethod_ExecQuery("WQL", "CIM_Namespace"), 0);
  expect_entry_trace("Imethod_ExecQuery()");
  EXPECT_EQ(method(), "ExecQuery");
  EXPECT_EQ(parameters(),
            "<IPARAMVALUE NAME=\"QueryLanguage\"><VALUE>WQL</VALUE>\n"
            "</IPARAMVALUE>\n"
            "<IPARAMVALUE NAME=\"Query\"><VALUE>select * from CIM_Namespace</VALUE>\n"
            "</IPARAMVALUE>\n");
}

TEST_F(Values, ExecQueryReturnsTheServersStatus) {
  serve({error_answer});
  EXPECT_EQ(context_->Imethod_ExecQuery("WQL", "CIM_Namespace"), 6);
}

TEST_F(Values, ExecQueryNeedsBothArguments) {
  const char* const arguments[][2] = {
      {nullptr, "CIM_A"}, {"", "CIM_A"}, {"WQL", nullptr}, {"WQL", ""}, {nullptr, nullptr}};
  for (const auto& [language, class_name] : arguments) {
    serve({empty_answer});
    recorder_.clear();
    ASSERT_EQ(context_->initCurlHandle(), 0);
    EXPECT_EQ(context_->Imethod_ExecQuery(language, class_name), 1001);
    expect_refusal("ExecQuery() missing QueryLanguage/Query");
  }
}

TEST_F(Values, GetPropertyNamesPropertyAndInstance) {
  serve({empty_answer});
  Tree name(name_tree);
  EXPECT_EQ(context_->Imethod_GetProperty(&name, "Speed"), 0);
  expect_entry_trace("Imethod_GetProperty()");
  EXPECT_EQ(method(), "GetProperty");
  EXPECT_EQ(parameters(), text_parameter("PropertyName", "Speed") + instance_name_parameter);
}

TEST_F(Values, GetPropertyReturnsTheServersStatus) {
  serve({error_answer});
  Tree name(name_tree);
  EXPECT_EQ(context_->Imethod_GetProperty(&name, "Speed"), 6);
}

TEST_F(Values, GetPropertyNeedsAPropertyName) {
  for (const char* const property : {static_cast<const char*>(nullptr), ""}) {
    serve({empty_answer});
    recorder_.clear();
    Tree name(name_tree);
    EXPECT_EQ(context_->Imethod_GetProperty(&name, property), 1001);
    expect_refusal("Imethod_GetProperty() missing PropertyName");
  }
}

TEST_F(Values, GetPropertyNeedsAnInstance) {
  serve({empty_answer});
  EXPECT_EQ(context_->Imethod_GetProperty(nullptr, "Speed"), 1001);
  expect_refusal("addInstanceNameParam() InstanceName = NULL");
}

TEST_F(Values, GetPropertyNeedsAnInstanceNameThatCanBeWritten) {
  serve({empty_answer});
  Tree name("INSTANCENAME CLASSNAME=CIM_A\n");
  break_tree(name);
  EXPECT_EQ(context_->Imethod_GetProperty(&name, "Speed"), 1001);
  expect_refusal("addInstanceNameParam() bad CIMelement: InstanceName");
}

TEST_F(Values, SetPropertyNamesPropertyValueAndInstance) {
  serve({void_answer});
  Tree name(name_tree);
  EXPECT_EQ(context_->Imethod_SetProperty(&name, "Speed", "7"), 0);
  expect_entry_trace("Imethod_SetProperty()");
  EXPECT_EQ(method(), "SetProperty");
  EXPECT_EQ(parameters(), text_parameter("PropertyName", "Speed") +
                              text_parameter("NewValue", "7") + instance_name_parameter);
}

TEST_F(Values, SetPropertyLeavesAnEmptyValueOut) {
  for (const char* const value : {static_cast<const char*>(nullptr), ""}) {
    serve({void_answer});
    Tree name(name_tree);
    EXPECT_EQ(context_->Imethod_SetProperty(&name, "Speed", value), 0);
    EXPECT_EQ(parameters(), text_parameter("PropertyName", "Speed") + instance_name_parameter);
  }
}

TEST_F(Values, SetPropertyReturnsTheServersStatus) {
  serve({error_answer});
  Tree name(name_tree);
  EXPECT_EQ(context_->Imethod_SetProperty(&name, "Speed", "7"), 6);
}

TEST_F(Values, SetPropertyNeedsAPropertyName) {
  for (const char* const property : {static_cast<const char*>(nullptr), ""}) {
    serve({void_answer});
    recorder_.clear();
    Tree name(name_tree);
    ASSERT_EQ(context_->initCurlHandle(), 0);
    EXPECT_EQ(context_->Imethod_SetProperty(&name, property, "7"), 1001);
    expect_refusal("Imethod_SetProperty() missing PropertyName");
  }
}

TEST_F(Values, SetPropertyNeedsAnInstance) {
  serve({void_answer});
  EXPECT_EQ(context_->Imethod_SetProperty(nullptr, "Speed", "7"), 1001);
  expect_refusal("addInstanceNameParam() InstanceName = NULL");
}

TEST_F(Values, FailBeforeTheySendWithoutACurrentClass) {
  serve({void_answer});
  context_->currentClass = nullptr;
  Tree name(name_tree);
  EXPECT_EQ(context_->Imethod_ExecQuery("WQL", "CIM_A"), 1001);
  EXPECT_EQ(context_->Imethod_GetProperty(&name, "Speed"), 1001);
  EXPECT_EQ(context_->Imethod_SetProperty(&name, "Speed", "7"), 1001);
  EXPECT_EQ(context_->ChkCimStatus(), 1001);
  EXPECT_EQ(context_->request, "");
  EXPECT_EQ(server_->connection_count(), 0U);
}

struct Unimplemented {
  int (CIMcontainer::*operation)() noexcept;
  const char* text;
};

const Unimplemented unimplemented[] = {
    {&CIMcontainer::Imethod_Associators, "Imethod_Associators: Noch nicht implementiert!"},
    {&CIMcontainer::Imethod_AssociatorNames, "Imethod_AssociatorNames: Noch nicht implementiert!"},
    {&CIMcontainer::Imethod_References, "Imethod_References: Noch nicht implementiert!"},
    {&CIMcontainer::Imethod_ReferenceNames, "Imethod_ReferenceNames: Noch nicht implementiert!"},
    {&CIMcontainer::Imethod_GetQualifier, "Imethod_GetQualifier: Noch nicht implementiert!"},
    {&CIMcontainer::Imethod_SetQualifier, "Imethod_SetQualifier: Noch nicht implementiert!"},
    {&CIMcontainer::Imethod_DeleteQualifier, "Imethod_DeleteQualifier: Noch nicht implementiert!"},
    {&CIMcontainer::Imethod_EnumerateQualifiers,
     "Imethod_EnumerateQualifiers: Noch nicht implementiert!"},
};

TEST_F(Values, UnimplementedOperationsReturn1001) {
  for (const auto& [operation, text] : unimplemented) {
    serve({empty_answer});
    recorder_.clear();
    EXPECT_EQ(((*context_).*operation)(), 1001);
    ASSERT_EQ(recorder_.lines().size(), 1U) << text;
    EXPECT_EQ(recorder_.count(0x40000000, operations_source, text), 1);
  }
}

TEST_F(Values, UnimplementedOperationsTraceTheirOwnLines) {
  serve({empty_answer});
  for (const auto& [operation, text] : unimplemented) ((*context_).*operation)();
  std::set<int> lines;
  for (const RecordedLine& line : recorder_.lines()) lines.insert(line.line);
  EXPECT_EQ(lines.size(), std::size(unimplemented));
}

TEST_F(Values, UnimplementedOperationsChangeNothing) {
  serve({return_value("<INSTANCENAME CLASSNAME=\"CIM_A\"/>\n"), empty_answer});
  ASSERT_EQ(context_->Imethod_EnumerateClassNames(-1), 0);
  const std::string request = context_->request;
  const std::string answer = tree_text(&context_->result);
  const char* const method = context_->methodName;
  void* const curl = context_->curl;
  for (const int status : {0, 6, 1001})
    for (const auto& [operation, text] : unimplemented) {
      context_->cimStatus = status;
      EXPECT_EQ(((*context_).*operation)(), 1001);
      EXPECT_EQ(context_->ChkCimStatus(), status) << text;
      EXPECT_EQ(context_->request, request);
      EXPECT_EQ(tree_text(&context_->result), answer);
      EXPECT_EQ(context_->methodName, method);
      EXPECT_EQ(context_->messageId, 1001);
      EXPECT_EQ(context_->curl, curl);
    }
  EXPECT_EQ(server_->requests().size(), 1U);
}

}  // namespace
