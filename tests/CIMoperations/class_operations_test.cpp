#include <gtest/gtest.h>

#include <string>

#include "CIMoperations/operation_test.h"

namespace {

using namespace zuCIM;

class ClassOperations : public OperationTest {
 protected:
  void choose_no_class() { context_->setCurrentClass("", ""); }
};

const std::string new_class =
    "CLASS NAME=CIM_B SUPERCLASS=CIM_A\n"
    " QUALIFIER NAME=Abstract TYPE=boolean\n"
    "  VALUE [TRUE]\n"
    " PROPERTY NAME=Id TYPE=string\n";
const std::string new_class_text =
    "<CLASS NAME=\"CIM_B\" SUPERCLASS=\"CIM_A\">\n"
    "<QUALIFIER NAME=\"Abstract\" TYPE=\"boolean\">\n"
    "<VALUE>TRUE</VALUE>\n"
    "</QUALIFIER>\n"
    "<PROPERTY NAME=\"Id\" TYPE=\"string\"/>\n"
    "</CLASS>\n";

TEST_F(ClassOperations, DeleteClassSendsTheWholeMessage) {
  serve({void_answer});
  context_->setCurrentClass("CIM_A", "root/interop/sub");
  EXPECT_EQ(context_->Imethod_DeleteClass(), 0);
  expect_entry_trace("Imethod_DeleteClass()");
  EXPECT_EQ(body(),
            "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
            "<MESSAGE ID=\"1001\" PROTOCOLVERSION=\"1.0\">\n"
            "<SIMPLEREQ>\n"
            "<IMETHODCALL NAME=\"DeleteClass\">\n"
            "<LOCALNAMESPACEPATH>\n"
            "<NAMESPACE NAME=\"root\"/>\n"
            "<NAMESPACE NAME=\"interop/sub\"/>\n"
            "</LOCALNAMESPACEPATH>\n"
            "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"CIM_A\"/></IPARAMVALUE>\n"
            "</IMETHODCALL>\n"
            "</SIMPLEREQ>\n"
            "</MESSAGE>\n"
            "</CIM>\n");
}

TEST_F(ClassOperations, DeleteClassNamesItselfInTheHttpHeader) {
  serve({void_answer});
  context_->Imethod_DeleteClass();
  const std::string request = server_->requests().at(0);
  EXPECT_NE(request.find("CIMMethod: DeleteClass\r\n"), std::string::npos);
  EXPECT_NE(request.find("CIMObject: root%2Fcimv2\r\n"), std::string::npos);
}

TEST_F(ClassOperations, DeleteClassReturnsTheServersStatus) {
  serve({error_answer});
  EXPECT_EQ(context_->Imethod_DeleteClass(), 6);
  EXPECT_EQ(context_->ChkCimStatus(), 6);
  EXPECT_EQ(context_->curl, nullptr);
}

TEST_F(ClassOperations, DeleteClassNeedsAClassName) {
  serve({void_answer});
  choose_no_class();
  EXPECT_EQ(context_->Imethod_DeleteClass(), 1001);
  expect_refusal("addClassNameParam() missing parameter: ClassName");
}

TEST_F(ClassOperations, CreateClassSendsTheDefinition) {
  serve({void_answer});
  Tree definition(new_class);
  EXPECT_EQ(context_->Imethod_CreateClass(definition), 0);
  expect_entry_trace("Imethod_CreateClass()");
  EXPECT_EQ(method(), "CreateClass");
  EXPECT_EQ(parameters(),
            "<IPARAMVALUE NAME=\"NewClass\">\n" + new_class_text + "</IPARAMVALUE>\n");
  EXPECT_EQ(tree_text(&definition), new_class);
}

TEST_F(ClassOperations, CreateClassReturnsTheServersStatus) {
  serve({error_answer});
  Tree definition(new_class);
  EXPECT_EQ(context_->Imethod_CreateClass(definition), 6);
}

TEST_F(ClassOperations, CreateClassNeedsAClass) {
  serve({void_answer});
  Tree definition("INSTANCE CLASSNAME=CIM_A\n");
  EXPECT_EQ(context_->Imethod_CreateClass(definition), 1001);
  expect_refusal("Imethod_CreateClass() missing NewClass definition");
}

TEST_F(ClassOperations, CreateClassNeedsMoreThanAnEmptyElement) {
  serve({void_answer});
  CIMelement definition;
  EXPECT_EQ(context_->Imethod_CreateClass(definition), 1001);
  expect_refusal("Imethod_CreateClass() missing NewClass definition");
}

TEST_F(ClassOperations, CreateClassNeedsAClassThatCanBeWritten) {
  serve({void_answer});
  Tree definition("CLASS NAME=CIM_B\n");
  break_tree(definition);
  ASSERT_EQ(context_->initCurlHandle(), 0);
  EXPECT_EQ(context_->Imethod_CreateClass(definition), 1001);
  expect_refusal("Imethod_CreateClass() bad CIMelement: newclass");
}

TEST_F(ClassOperations, ModifyClassSendsTheDefinition) {
  serve({void_answer});
  Tree definition(new_class);
  EXPECT_EQ(context_->Imethod_ModifyClass(definition), 0);
  expect_entry_trace("Imethod_ModifyClass()");
  EXPECT_EQ(method(), "ModifyClass");
  EXPECT_EQ(parameters(),
            "<IPARAMVALUE NAME=\"ModifiedClass\">\n" + new_class_text + "</IPARAMVALUE>\n");
}

TEST_F(ClassOperations, ModifyClassReturnsTheServersStatus) {
  serve({error_answer});
  Tree definition(new_class);
  EXPECT_EQ(context_->Imethod_ModifyClass(definition), 6);
}

TEST_F(ClassOperations, ModifyClassNeedsAClass) {
  serve({void_answer});
  Tree definition("METHOD NAME=m\n");
  ASSERT_EQ(context_->initCurlHandle(), 0);
  EXPECT_EQ(context_->Imethod_ModifyClass(definition), 1001);
  expect_refusal("Imethod_ModifyClass() missing ModifiedClass definition");
}

TEST_F(ClassOperations, ModifyClassNeedsAClassThatCanBeWritten) {
  serve({void_answer});
  Tree definition("CLASS NAME=CIM_B\n");
  break_tree(definition);
  EXPECT_EQ(context_->Imethod_ModifyClass(definition), 1001);
  expect_refusal("Imethod_ModifyClass() bad CIMelement: modifiedclass");
}

// A refusal on a context that is not busy keeps the status that tells about it.
TEST_F(ClassOperations, ARefusalKeepsItsStatusWithoutTheBusyFlag) {
  serve({void_answer});
  context_->ESXi_Occupied(false);
  CIMelement definition;
  EXPECT_EQ(context_->Imethod_CreateClass(definition), 1001);
  expect_refusal("Imethod_CreateClass() missing NewClass definition");
}

TEST_F(ClassOperations, EnumerateClassesSendsOnlyTheClassNameByDefault) {
  serve({empty_answer});
  EXPECT_EQ(context_->Imethod_EnumerateClasses(-1, -1, -1, -1), 0);
  expect_entry_trace("Imethod_EnumerateClasses()");
  EXPECT_EQ(method(), "EnumerateClasses");
  EXPECT_EQ(parameters(), class_name_parameter);
}

TEST_F(ClassOperations, EnumerateClassesWritesItsParametersInOrder) {
  serve({empty_answer, empty_answer});
  context_->Imethod_EnumerateClasses(0, 1, 0, 1);
  EXPECT_EQ(parameters(), boolean_parameter("LocalOnly", "false") +
                              boolean_parameter("IncludeQualifiers", "true") +
                              boolean_parameter("IncludeClassOrigin", "false") +
                              boolean_parameter("DeepInheritance", "true") + class_name_parameter);
  context_->Imethod_EnumerateClasses(1, 0, 1, 2);
  EXPECT_EQ(parameters(1), boolean_parameter("LocalOnly", "true") +
                               boolean_parameter("IncludeQualifiers", "false") +
                               boolean_parameter("IncludeClassOrigin", "true") +
                               class_name_parameter);
}

TEST_F(ClassOperations, EnumerateClassesNeedsNoClassName) {
  serve({empty_answer});
  choose_no_class();
  EXPECT_EQ(context_->Imethod_EnumerateClasses(-1, -1, -1, 1), 0);
  EXPECT_EQ(parameters(), boolean_parameter("DeepInheritance", "true"));
}

TEST_F(ClassOperations, EnumerateClassesReturnsTheServersStatus) {
  serve({error_answer});
  EXPECT_EQ(context_->Imethod_EnumerateClasses(-1, -1, -1, -1), 6);
  EXPECT_EQ(context_->result.next, nullptr);
}

TEST_F(ClassOperations, EnumerateClassNamesSendsOnlyTheClassNameByDefault) {
  serve({empty_answer});
  EXPECT_EQ(context_->Imethod_EnumerateClassNames(-1), 0);
  expect_entry_trace("Imethod_EnumerateClassNames()");
  EXPECT_EQ(method(), "EnumerateClassNames");
  EXPECT_EQ(parameters(), class_name_parameter);
}

TEST_F(ClassOperations, EnumerateClassNamesWritesItsParametersInOrder) {
  serve({empty_answer});
  context_->Imethod_EnumerateClassNames(1);
  EXPECT_EQ(parameters(), boolean_parameter("DeepInheritance", "true") + class_name_parameter);
}

TEST_F(ClassOperations, EnumerateClassNamesNeedsNoClassName) {
  serve({empty_answer});
  choose_no_class();
  EXPECT_EQ(context_->Imethod_EnumerateClassNames(-1), 0);
  EXPECT_EQ(parameters(), "");
}

TEST_F(ClassOperations, EnumerateClassNamesReturnsTheServersStatus) {
  serve({error_answer});
  EXPECT_EQ(context_->Imethod_EnumerateClassNames(-1), 6);
}

TEST_F(ClassOperations, FailBeforeTheySendWithoutACurrentClass) {
  serve({void_answer});
  context_->currentClass = nullptr;
  Tree definition(new_class);
  EXPECT_EQ(context_->Imethod_DeleteClass(), 1001);
  EXPECT_EQ(context_->Imethod_CreateClass(definition), 1001);
  EXPECT_EQ(context_->Imethod_ModifyClass(definition), 1001);
  EXPECT_EQ(context_->Imethod_EnumerateClasses(-1, -1, -1, -1), 1001);
  EXPECT_EQ(context_->Imethod_EnumerateClassNames(-1), 1001);
  EXPECT_EQ(context_->ChkCimStatus(), 1001);
  EXPECT_EQ(context_->request, "");
  EXPECT_EQ(server_->connection_count(), 0U);
  EXPECT_EQ(count_traces(trace_level::warning,
                         "[127.0.0.2] addLocalNameSpacePath() missing parameter: "
                         "ClassName/NameSpace"),
            5);
}

}  // namespace
