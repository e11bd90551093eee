#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "CIMoperations/extrinsic_test.h"

// Operations whose arguments lie in the answer that their own request empties.
namespace {

using namespace zuCIM;

class HeldArguments : public OperationTest {
 protected:
  // Starts a server that gives `answers`, and makes an answer with all kinds of arguments.
  void serve_after_an_answer(const std::vector<std::string>& answers) {
    serve(answers);
    build_tree(context_->result,
               "CIM\n"
               " IRETURNVALUE\n"
               "  INSTANCENAME CLASSNAME=CIM_A\n"
               "   KEYBINDING NAME=Id\n"
               "    KEYVALUE [1]\n"
               "  INSTANCE CLASSNAME=CIM_A\n"
               "   PROPERTY NAME=Speed TYPE=uint32\n"
               "    VALUE [7]\n"
               "  CLASS NAME=CIM_New\n"
               "  METHOD NAME=Stop [some_text]\n");
    listed();
  }

  CIMelement* found(int kind) { return context_->result.findelement(kind, 0); }
  CIMelement* found_name() { return found(elem::INSTANCENAME); }
  const char* found_text() { return found(elem::METHOD)->value; }

  // Puts a name into the entry's list.
  void listed() {
    entry().instanceNames = new CIMelement;
    build_tree(*entry().instanceNames, listing);
  }

  const std::string listing = "CIM\n INSTANCENAME CLASSNAME=CIM_B\n";
};

const std::string instance_text =
    "<INSTANCE CLASSNAME=\"CIM_A\">\n"
    "<PROPERTY NAME=\"Speed\" TYPE=\"uint32\">\n"
    "<VALUE>7</VALUE>\n"
    "</PROPERTY>\n"
    "</INSTANCE>\n";
const std::string property_name_parameter =
    "<IPARAMVALUE NAME=\"PropertyName\">\n<VALUE>some_text</VALUE>\n</IPARAMVALUE>\n";

std::string class_parameter(const std::string& name) {
  return "<IPARAMVALUE NAME=\"" + name + "\">\n<CLASS NAME=\"CIM_New\"/>\n</IPARAMVALUE>\n";
}

TEST_F(HeldArguments, GetInstanceTakesItsName) {
  serve_after_an_answer({return_value("<INSTANCE CLASSNAME=\"CIM_A\"/>\n")});
  EXPECT_NE(context_->Imethod_GetInstance(found_name(), -1, nullptr), 0);
  EXPECT_EQ(parameters(), instance_name_parameter);
}

TEST_F(HeldArguments, ClassesAreTaken) {
  serve_after_an_answer({void_answer});
  EXPECT_EQ(context_->Imethod_CreateClass(*found(elem::CLASS)), 0);
  EXPECT_EQ(parameters(), class_parameter("NewClass"));
  serve_after_an_answer({void_answer});
  EXPECT_EQ(context_->Imethod_ModifyClass(*found(elem::CLASS)), 0);
  EXPECT_EQ(parameters(), class_parameter("ModifiedClass"));
}

TEST_F(HeldArguments, CreateInstanceTakesTextsAndReferences) {
  serve_after_an_answer({return_value("<INSTANCENAME CLASSNAME=\"CIM_A\"/>\n")});
  const _properties_ properties[] = {{found_text(), type::string, 1, found_text(), nullptr},
                                     {"Reference", type::reference, 1, found_text(), found_name()},
                                     {nullptr, 0, 0, nullptr, nullptr}};
  EXPECT_NE(context_->Imethod_CreateInstance(properties), 0);
  EXPECT_EQ(parameters(),
            "<IPARAMVALUE NAME=\"NewInstance\">\n"
            "<INSTANCE CLASSNAME=\"CIM_A\">\n"
            "<PROPERTY NAME=\"some_text\" TYPE=\"string\">\n"
            "<VALUE>some_text</VALUE>\n"
            "</PROPERTY>\n"
            "<PROPERTY.REFERENCE NAME=\"Reference\" REFERENCECLASS=\"some_text\">\n"
            "<VALUE.REFERENCE>\n" +
                name_text +
                "</VALUE.REFERENCE>\n"
                "</PROPERTY.REFERENCE>\n"
                "</INSTANCE>\n"
                "</IPARAMVALUE>\n");
}

TEST_F(HeldArguments, ModifyInstanceTakesNameAndInstance) {
  serve_after_an_answer({void_answer});
  EXPECT_EQ(context_->Imethod_ModifyInstance(found_name(), *found(elem::INSTANCE), nullptr), 0);
  EXPECT_EQ(parameters(), "<VALUE.NAMEDINSTANCE>\n" + instance_name_parameter + instance_text +
                              "</VALUE.NAMEDINSTANCE>\n");
}

TEST_F(HeldArguments, ExecQueryTakesItsTexts) {
  serve_after_an_answer({empty_answer});
  EXPECT_EQ(context_->Imethod_ExecQuery(found_text(), found_text()), 0);
  EXPECT_EQ(parameters(),
            "<IPARAMVALUE NAME=\"QueryLanguage\"><VALUE>some_text</VALUE>\n</IPARAMVALUE>\n"
            "<IPARAMVALUE NAME=\"Query\"><VALUE>select * from some_text</VALUE>\n"
            "</IPARAMVALUE>\n");
}

TEST_F(HeldArguments, GetPropertyTakesNameAndText) {
  serve_after_an_answer({empty_answer});
  EXPECT_EQ(context_->Imethod_GetProperty(found_name(), found_text()), 0);
  EXPECT_EQ(parameters(), property_name_parameter + instance_name_parameter);
}

TEST_F(HeldArguments, SetPropertyTakesNameAndTexts) {
  serve_after_an_answer({void_answer});
  EXPECT_EQ(context_->Imethod_SetProperty(found_name(), found_text(), found_text()), 0);
  EXPECT_EQ(parameters(), property_name_parameter +
                              "<IPARAMVALUE NAME=\"NewValue\">\n<VALUE>some_text</VALUE>\n"
                              "</IPARAMVALUE>\n" +
                              instance_name_parameter);
}

// The name went with the answer that it was part of.
TEST_F(HeldArguments, DeleteInstanceFreesItsNameOnlyOnce) {
  serve_after_an_answer({void_answer});
  EXPECT_EQ(context_->Imethod_DeleteInstance(found_name()), 0);
  EXPECT_EQ(parameters(), instance_name_parameter);
  EXPECT_EQ(tree_text(entry().instanceNames), listing);
}

TEST_F(HeldArguments, DeleteInstanceEmptiesTheListOfNamesAfterARefusal) {
  serve_after_an_answer({error_answer});
  EXPECT_EQ(context_->Imethod_DeleteInstance(found_name()), 6);
  EXPECT_EQ(entry().instanceNames, nullptr);
}

const std::string call_text =
    "<METHODCALL NAME=\"Stop\">\n"
    "<LOCALINSTANCEPATH>\n"
    "<LOCALNAMESPACEPATH>\n"
    "<NAMESPACE NAME=\"root\"/>\n"
    "<NAMESPACE NAME=\"cimv2\"/>\n"
    "</LOCALNAMESPACEPATH>\n" +
    name_text +
    "</LOCALINSTANCEPATH>\n"
    "<PARAMVALUE NAME=\"some_text\" PARAMTYPE=\"string\">\n"
    "<VALUE>some_text</VALUE>\n"
    "</PARAMVALUE>\n"
    "<PARAMVALUE NAME=\"Reference\" PARAMTYPE=\"reference\">\n"
    "<VALUE.REFERENCE>\n" +
    name_text +
    "</VALUE.REFERENCE>\n"
    "</PARAMVALUE>\n"
    "</METHODCALL>\n";

// The method's name is in use until the last try and its traces are over.
TEST_F(HeldArguments, MethodsAreCalledAndTriedAgain) {
  serve_after_an_answer({});
  serve_scripts({{{script::ReadRequest{}}, answering(returning("4"))}, false});
  build_tree(context_->result,
             "CIM\n"
             " INSTANCENAME CLASSNAME=CIM_A\n"
             "  KEYBINDING NAME=Id\n"
             "   KEYVALUE [1]\n"
             " METHOD NAME=Stop [some_text]\n");
  const _paramvalue_ given[] = {{found_text(), type::string, 1, found_text()},
                                {"Reference", type::reference, 1, found_name()},
                                end_of_parameters};
  const char* const name = found(elem::METHOD)->attr_find(attr::NAME);
  EXPECT_EQ(context_->performExtrinsicMethod(name, found_name(), given), 4);
  EXPECT_EQ(between("<SIMPLEREQ>\n", "</SIMPLEREQ>", 0), call_text);
  EXPECT_EQ(between("<SIMPLEREQ>\n", "</SIMPLEREQ>", 1), call_text);
  EXPECT_NE(server_->requests().at(1).find("CIMMethod: Stop\r\n"), std::string::npos);
  EXPECT_EQ(count_traces(trace_level::warning,
                         "[127.0.0.2] performExtrinsicMethod(\"Stop\") RETURNVALUE=4"),
            1);
  EXPECT_EQ(context_->methodName, nullptr);
}

TEST_F(HeldArguments, TheNameOfAMethodIsRememberedWhenItStandsElsewhere) {
  serve_after_an_answer({returning("0")});
  EXPECT_EQ(context_->performExtrinsicMethod("Stop", found_name(), nullptr), 0);
  EXPECT_STREQ(context_->methodName, "Stop");
}

// The answer is gone as soon as the next request was begun, even if that is refused and the context
// is not busy.
TEST_F(HeldArguments, ARefusedRequestEmptiesTheAnswer) {
  using Refused = std::function<int(ServerContext&, CIMelement&)>;
  const Refused operations[] = {
      [](ServerContext& c, CIMelement& e) { return c.Imethod_CreateClass(e); },
      [](ServerContext& c, CIMelement& e) { return c.Imethod_ModifyInstance(&e, e, nullptr); },
      [](ServerContext& c, CIMelement& e) { return c.Imethod_GetProperty(&e, ""); },
      [](ServerContext& c, CIMelement&) {
        return c.performExtrinsicMethod("Stop", nullptr, nullptr);
      }};
  for (const Refused& run : operations) {
    serve_after_an_answer({void_answer});
    context_->ESXi_Occupied(false);
    EXPECT_EQ(run(*context_, *found_name()), 1001);
    EXPECT_EQ(context_->result.name, nullptr);
    EXPECT_EQ(context_->result.next, nullptr);
    EXPECT_EQ(server_->connection_count(), 0U);
  }
}

// A document would take the place of the request.
TEST_F(HeldArguments, TheWholeAnswerIsNoInstanceName) {
  serve_after_an_answer({void_answer});
  EXPECT_EQ(context_->Imethod_DeleteInstance(&context_->result), 1001);
  expect_refusal("addInstanceNameParam() bad CIMelement: InstanceName");
  EXPECT_EQ(context_->performExtrinsicMethod("Stop", &context_->result, nullptr), 1001);
  expect_refusal("performExtrinsicMethod() bad CIMelement: InstanceName");
}

TEST_F(HeldArguments, AListOfNamesIsNoInstanceName) {
  serve_after_an_answer({void_answer});
  EXPECT_EQ(context_->Imethod_DeleteInstance(entry().instanceNames), 1001);
  expect_refusal("addInstanceNameParam() bad CIMelement: InstanceName");
  listed();
  EXPECT_EQ(context_->performExtrinsicMethod("Stop", entry().instanceNames, nullptr), 1001);
  expect_refusal("performExtrinsicMethod() bad CIMelement: InstanceName");
}

TEST_F(HeldArguments, AListOfNamesIsNoReference) {
  serve_after_an_answer({void_answer});
  const _properties_ properties[] = {{"r", type::reference, 1, "CIM_B", entry().instanceNames},
                                     {nullptr, 0, 0, nullptr, nullptr}};
  EXPECT_EQ(context_->Imethod_CreateInstance(properties), 0);
  expect_refusal("Imethod_CreateInstance() bad CIMelement: reference");
  Tree name(name_tree);
  const _paramvalue_ given[] = {{"r", type::reference, 1, entry().instanceNames},
                                end_of_parameters};
  EXPECT_EQ(context_->performExtrinsicMethod("Stop", &name, given), 1001);
  expect_refusal("performExtrinsicMethod() bad CIMelement: reference");
}

}  // namespace
