#include <gtest/gtest.h>

#include <string>

#include "CIMoperations/operation_test.h"

namespace {

using namespace zuCIM;

class Intrinsic : public OperationTest {};

const std::string class_answer = return_value(
    "<CLASS NAME=\"CIM_A\">\n"
    "<PROPERTY NAME=\"Id\" TYPE=\"string\">\n"
    "<QUALIFIER NAME=\"Key\" TYPE=\"boolean\"><VALUE>TRUE</VALUE></QUALIFIER>\n"
    "</PROPERTY>\n"
    "<METHOD NAME=\"Start\" TYPE=\"uint32\">\n"
    "<PARAMETER NAME=\"p\" TYPE=\"uint16\"/>\n"
    "</METHOD>\n"
    "</CLASS>\n");

const std::string instance_answer = return_value(
    "<INSTANCE CLASSNAME=\"CIM_A\">\n"
    "<PROPERTY NAME=\"Id\" TYPE=\"string\"><VALUE>1</VALUE></PROPERTY>\n"
    "</INSTANCE>\n");

const std::string names_answer = return_value(
    "<INSTANCENAME CLASSNAME=\"CIM_A\">\n"
    "<KEYBINDING NAME=\"Id\"><KEYVALUE>1</KEYVALUE></KEYBINDING>\n"
    "</INSTANCENAME>\n"
    "<INSTANCENAME CLASSNAME=\"CIM_A\">\n"
    "<KEYBINDING NAME=\"Id\"><KEYVALUE>2</KEYVALUE></KEYBINDING>\n"
    "</INSTANCENAME>\n");

const std::string instances_answer = return_value(
    "<VALUE.NAMEDINSTANCE>\n"
    "<INSTANCENAME CLASSNAME=\"CIM_A\"/>\n"
    "<INSTANCE CLASSNAME=\"CIM_A\"/>\n"
    "</VALUE.NAMEDINSTANCE>\n");

TEST_F(Intrinsic, GetClassReadsTheDefinition) {
  serve({class_answer});
  EXPECT_EQ(context_->Imethod_GetClass(-1, -1, -1, nullptr), 0);
  expect_entry_trace("Imethod_GetClass()");
  EXPECT_EQ(method(), "GetClass");
  EXPECT_EQ(parameters(), class_name_parameter);
  EXPECT_EQ(tree_text(entry().instances),
            "INSTANCE CLASSNAME=CIM_A\n PROPERTY NAME=Id TYPE=string [Key]\n");
  EXPECT_EQ(tree_text(entry().methods),
            "CIM\n"
            " METHOD NAME=Start TYPE=uint32\n"
            "  PARAMETER NAME=p TYPE=uint16\n");
}

TEST_F(Intrinsic, GetClassWritesItsParametersInOrder) {
  serve({class_answer});
  const CIMarray names = name_list();
  context_->Imethod_GetClass(0, 1, 0, &names);
  EXPECT_EQ(parameters(), class_name_parameter + boolean_parameter("LocalOnly", "false") +
                              boolean_parameter("IncludeQualifiers", "true") +
                              boolean_parameter("IncludeClassOrigin", "false") +
                              property_list_parameter);
}

TEST_F(Intrinsic, GetClassReturnsTheStatusOfAFailedExchange) {
  serve({class_answer, error_answer});
  context_->Imethod_GetClass(-1, -1, -1, nullptr);
  context_->SetExtraTimeOut(-1);
  EXPECT_EQ(context_->Imethod_GetClass(-1, -1, -1, nullptr), 6);
  EXPECT_EQ(context_->ChkCimStatus(), 6);
  // The definition that was read before stays.
  EXPECT_NE(entry().instances, nullptr);
  EXPECT_NE(entry().methods, nullptr);
}

TEST_F(Intrinsic, GetClassReturns1001ForAnAnswerWithoutTheClass) {
  serve({empty_answer});
  EXPECT_EQ(context_->Imethod_GetClass(-1, -1, -1, nullptr), 1001);
  EXPECT_EQ(context_->ChkCimStatus(), 0);
}

TEST_F(Intrinsic, GetInstanceReadsOneInstance) {
  serve({instance_answer});
  CIMelement name;
  build_tree(name, "INSTANCENAME CLASSNAME=CIM_A\n KEYBINDING NAME=Id\n  KEYVALUE [1]\n");
  const std::intptr_t found = context_->Imethod_GetInstance(&name, -1, nullptr);
  expect_entry_trace("Imethod_GetInstance()");
  EXPECT_EQ(method(), "GetInstance");
  EXPECT_EQ(parameters(),
            "<IPARAMVALUE NAME=\"InstanceName\">\n"
            "<INSTANCENAME CLASSNAME=\"CIM_A\">\n"
            "<KEYBINDING NAME=\"Id\">\n"
            "<KEYVALUE>1</KEYVALUE>\n"
            "</KEYBINDING>\n"
            "</INSTANCENAME>\n"
            "</IPARAMVALUE>\n");
  EXPECT_EQ(found, reinterpret_cast<std::intptr_t>(entry().instances->next));
  EXPECT_EQ(tree_text(entry().instances),
            "CIM\n"
            " INSTANCE CLASSNAME=CIM_A\n"
            "  PROPERTY NAME=Id TYPE=string\n"
            "   VALUE [1]\n");
}

TEST_F(Intrinsic, GetInstanceWritesItsParametersInOrder) {
  serve({instance_answer});
  CIMelement name;
  build_tree(name, "INSTANCENAME CLASSNAME=CIM_A\n");
  const CIMarray names = name_list();
  context_->Imethod_GetInstance(&name, 1, &names);
  EXPECT_EQ(parameters(),
            "<IPARAMVALUE NAME=\"InstanceName\">\n"
            "<INSTANCENAME CLASSNAME=\"CIM_A\"/>\n"
            "</IPARAMVALUE>\n" +
                boolean_parameter("IncludeClassOrigin", "true") + property_list_parameter);
}

TEST_F(Intrinsic, GetInstanceReplacesTheInstanceBefore) {
  serve({instance_answer, instance_answer, error_answer});
  CIMelement name;
  build_tree(name, "INSTANCENAME CLASSNAME=CIM_A\n");
  context_->Imethod_GetInstance(&name, -1, nullptr);
  context_->SetExtraTimeOut(-1);
  EXPECT_NE(context_->Imethod_GetInstance(&name, -1, nullptr), 0);
  EXPECT_EQ(entry().instances->findelement(elem::INSTANCE, 1), nullptr);
  context_->SetExtraTimeOut(-1);
  EXPECT_EQ(context_->Imethod_GetInstance(&name, -1, nullptr), 0);
  EXPECT_EQ(context_->ChkCimStatus(), 6);
  EXPECT_EQ(entry().instances, nullptr);
}

TEST_F(Intrinsic, GetInstanceTakesANameFromTheListItEmpties) {
  serve({instance_answer});
  entry().instances = new CIMelement;
  build_tree(*entry().instances, "CIM\n INSTANCE\n  INSTANCENAME CLASSNAME=CIM_B\n");
  CIMelement* const name = entry().instances->next->next;
  EXPECT_NE(context_->Imethod_GetInstance(name, -1, nullptr), 0);
  EXPECT_NE(parameters().find("<INSTANCENAME CLASSNAME=\"CIM_B\"/>"), std::string::npos);
}

TEST_F(Intrinsic, GetInstanceSendsNothingWithoutAName) {
  serve({instance_answer});
  entry().instances = new CIMelement;
  EXPECT_EQ(context_->Imethod_GetInstance(nullptr, -1, nullptr), 0);
  EXPECT_EQ(context_->ChkCimStatus(), 1001);
  EXPECT_EQ(entry().instances, nullptr);
  EXPECT_EQ(server_->connection_count(), 0U);
}

TEST_F(Intrinsic, EnumerateInstancesReadsNamesAndInstances) {
  serve({instances_answer});
  entry().instanceNames = new CIMelement;
  entry().instances = new CIMelement;
  const std::intptr_t first = context_->Imethod_EnumerateInstances(-1, -1, -1, -1, nullptr);
  expect_entry_trace("Imethod_EnumerateInstances()");
  EXPECT_EQ(method(), "EnumerateInstances");
  EXPECT_EQ(parameters(), class_name_parameter);
  EXPECT_EQ(first, reinterpret_cast<std::intptr_t>(entry().instanceNames->next));
  EXPECT_EQ(tree_text(entry().instanceNames), "CIM\n INSTANCENAME CLASSNAME=CIM_A\n");
  EXPECT_EQ(tree_text(entry().instances), "CIM\n INSTANCE CLASSNAME=CIM_A\n");
}

TEST_F(Intrinsic, EnumerateInstancesWritesItsParametersInOrder) {
  serve({instances_answer});
  const CIMarray names = name_list();
  context_->Imethod_EnumerateInstances(1, 0, 1, 0, &names);
  EXPECT_EQ(parameters(), boolean_parameter("LocalOnly", "true") +
                              boolean_parameter("IncludeQualifiers", "false") +
                              boolean_parameter("IncludeClassOrigin", "true") +
                              boolean_parameter("DeepInheritance", "false") + class_name_parameter +
                              property_list_parameter);
}

TEST_F(Intrinsic, EnumerateInstancesMayFindNone) {
  serve({instances_answer, empty_answer});
  context_->Imethod_EnumerateInstances(-1, -1, -1, -1, nullptr);
  context_->SetExtraTimeOut(-1);
  EXPECT_EQ(context_->Imethod_EnumerateInstances(-1, -1, -1, -1, nullptr), 0);
  EXPECT_EQ(context_->ChkCimStatus(), 0);
  EXPECT_EQ(entry().instanceNames, nullptr);
  EXPECT_EQ(entry().instances, nullptr);
}

TEST_F(Intrinsic, EnumerateInstancesEmptiesBothListsBeforeItFails) {
  serve({error_answer});
  entry().instanceNames = new CIMelement;
  entry().instances = new CIMelement;
  EXPECT_EQ(context_->Imethod_EnumerateInstances(-1, -1, -1, -1, nullptr), 0);
  EXPECT_EQ(context_->ChkCimStatus(), 6);
  EXPECT_EQ(entry().instanceNames, nullptr);
  EXPECT_EQ(entry().instances, nullptr);
}

TEST_F(Intrinsic, EnumerateInstanceNamesReadsTheNames) {
  serve({names_answer, names_answer});
  context_->Imethod_EnumerateInstanceNames();
  context_->SetExtraTimeOut(-1);
  CIMelement* const first = context_->Imethod_EnumerateInstanceNames();
  EXPECT_EQ(method(), "EnumerateInstanceNames");
  EXPECT_EQ(parameters(), class_name_parameter);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first, entry().instanceNames->next);
  EXPECT_EQ(tree_text(entry().instanceNames),
            "CIM\n"
            " INSTANCENAME CLASSNAME=CIM_A\n"
            "  KEYBINDING NAME=Id\n"
            "   KEYVALUE [1]\n"
            " INSTANCENAME CLASSNAME=CIM_A\n"
            "  KEYBINDING NAME=Id\n"
            "   KEYVALUE [2]\n");
}

TEST_F(Intrinsic, EnumerateInstanceNamesSendsFourteenLines) {
  serve({names_answer});
  context_->setCurrentClass("CIM_Namespace", nullptr);
  context_->Imethod_EnumerateInstanceNames();
  EXPECT_EQ(body_of(server_->requests().at(0)),
            "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
            "<MESSAGE ID=\"1001\" PROTOCOLVERSION=\"1.0\">\n"
            "<SIMPLEREQ>\n"
            "<IMETHODCALL NAME=\"EnumerateInstanceNames\">\n"
            "<LOCALNAMESPACEPATH>\n"
            "<NAMESPACE NAME=\"root\"/>\n"
            "<NAMESPACE NAME=\"cimv2\"/>\n"
            "</LOCALNAMESPACEPATH>\n"
            "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"CIM_Namespace\"/></IPARAMVALUE>\n"
            "</IMETHODCALL>\n"
            "</SIMPLEREQ>\n"
            "</MESSAGE>\n"
            "</CIM>\n");
}

TEST_F(Intrinsic, EnumerateInstanceNamesEmptiesTheListBeforeItFails) {
  serve({error_answer});
  entry().instanceNames = new CIMelement;
  entry().instances = new CIMelement;
  EXPECT_EQ(context_->Imethod_EnumerateInstanceNames(), nullptr);
  expect_entry_trace("Imethod_EnumerateInstanceNames()");
  EXPECT_EQ(context_->ChkCimStatus(), 6);
  EXPECT_EQ(entry().instanceNames, nullptr);
  EXPECT_NE(entry().instances, nullptr);
}

TEST_F(Intrinsic, OperationsWithoutCurrentClassFailBeforeTheySend) {
  serve({class_answer});
  context_->currentClass = nullptr;
  CIMelement name;
  build_tree(name, "INSTANCENAME CLASSNAME=CIM_A\n");
  EXPECT_EQ(context_->Imethod_GetClass(-1, -1, -1, nullptr), 1001);
  EXPECT_EQ(context_->Imethod_GetInstance(&name, -1, nullptr), 0);
  EXPECT_EQ(context_->ChkCimStatus(), 1001);
  EXPECT_EQ(context_->Imethod_EnumerateInstances(-1, -1, -1, -1, nullptr), 0);
  EXPECT_EQ(context_->ChkCimStatus(), 1001);
  EXPECT_EQ(context_->Imethod_EnumerateInstanceNames(), nullptr);
  EXPECT_EQ(context_->ChkCimStatus(), 1001);
  EXPECT_EQ(server_->connection_count(), 0U);
}

TEST_F(Intrinsic, OperationsOnAClassWithoutNameFailBeforeTheySend) {
  serve({class_answer});
  context_->setCurrentClass("", "root/interop");
  EXPECT_EQ(context_->Imethod_GetClass(-1, -1, -1, nullptr), 1001);
  EXPECT_EQ(context_->Imethod_EnumerateInstances(-1, -1, -1, -1, nullptr), 0);
  EXPECT_EQ(context_->Imethod_EnumerateInstanceNames(), nullptr);
  EXPECT_EQ(context_->ChkCimStatus(), 1001);
  EXPECT_EQ(server_->connection_count(), 0U);
}

TEST_F(Intrinsic, ListsSurviveOperationsOnAnotherClass) {
  serve({names_answer, empty_answer});
  CIMelement* const first = context_->Imethod_EnumerateInstanceNames();
  CIMclass& before = entry();
  context_->setCurrentClass("CIM_B", "");
  context_->SetExtraTimeOut(-1);
  EXPECT_EQ(context_->Imethod_EnumerateInstanceNames(), nullptr);
  EXPECT_EQ(before.instanceNames->next, first);
}

}  // namespace
