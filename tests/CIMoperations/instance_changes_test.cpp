#include <gtest/gtest.h>

#include <string>

#include "CIMoperations/operation_test.h"

// Deleting and modifying instances.
namespace {

using namespace zuCIM;

class InstanceChanges : public OperationTest {
 protected:
  // Puts names with the ids 1, 2, 3 into the entry's list and returns the n-th.
  CIMelement* listed_name(int n) {
    entry().kill_element(&entry().instanceNames);
    entry().instanceNames = new CIMelement;
    build_tree(*entry().instanceNames, listing);
    return entry().instanceNames->findelement(elem::INSTANCENAME, n - 1);
  }

  static std::string one_name(const std::string& id) {
    return " INSTANCENAME CLASSNAME=CIM_A\n  KEYBINDING NAME=Id\n   KEYVALUE [" + id + "]\n";
  }

  const std::string listing = "CIM\n" + one_name("1") + one_name("2") + one_name("3");
};

TEST_F(InstanceChanges, DeleteInstanceNamesTheInstance) {
  serve({void_answer});
  EXPECT_EQ(context_->Imethod_DeleteInstance(listed_name(1)), 0);
  expect_entry_trace("Imethod_DeleteInstance()");
  EXPECT_EQ(method(), "DeleteInstance");
  EXPECT_EQ(parameters(), instance_name_parameter);
}

TEST_F(InstanceChanges, DeleteInstanceEmptiesTheListWithItsFirstName) {
  serve({void_answer});
  EXPECT_EQ(context_->Imethod_DeleteInstance(listed_name(1)), 0);
  EXPECT_EQ(entry().instanceNames, nullptr);
}

TEST_F(InstanceChanges, DeleteInstanceTakesALaterNameOutOfTheList) {
  serve({void_answer, void_answer});
  EXPECT_EQ(context_->Imethod_DeleteInstance(listed_name(2)), 0);
  EXPECT_EQ(tree_text(entry().instanceNames), "CIM\n" + one_name("1") + one_name("3"));
  without_retries();
  CIMelement* const last = entry().instanceNames->findelement(elem::INSTANCENAME, 1);
  EXPECT_EQ(context_->Imethod_DeleteInstance(last), 0);
  EXPECT_EQ(tree_text(entry().instanceNames), "CIM\n" + one_name("1"));
}

TEST_F(InstanceChanges, DeleteInstanceTakesANameOutOfAnotherTree) {
  serve({void_answer});
  listed_name(1);
  Tree other("CIM\n INSTANCENAME CLASSNAME=CIM_B\n VALUE [kept]\n");
  EXPECT_EQ(context_->Imethod_DeleteInstance(other.next), 0);
  EXPECT_EQ(tree_text(&other), "CIM\n VALUE [kept]\n");
  EXPECT_EQ(tree_text(entry().instanceNames), listing);
}

TEST_F(InstanceChanges, DeleteInstanceFreesANameThatStandsAlone) {
  serve({void_answer});
  listed_name(1);
  auto* const alone = new CIMelement;
  build_tree(*alone, name_tree);
  EXPECT_EQ(context_->Imethod_DeleteInstance(alone), 0);
  EXPECT_EQ(tree_text(entry().instanceNames), listing);
}

TEST_F(InstanceChanges, DeleteInstanceFreesANameThatStandsAloneBesideNoList) {
  serve({void_answer});
  auto* const alone = new CIMelement;
  build_tree(*alone, name_tree);
  EXPECT_EQ(context_->Imethod_DeleteInstance(alone), 0);
  EXPECT_EQ(entry().instanceNames, nullptr);
}

TEST_F(InstanceChanges, DeleteInstanceEmptiesTheListAfterARefusal) {
  serve({error_answer});
  Tree name(name_tree);
  listed_name(1);
  entry().instances = new CIMelement;
  EXPECT_EQ(context_->Imethod_DeleteInstance(&name), 6);
  EXPECT_EQ(entry().instanceNames, nullptr);
  EXPECT_NE(entry().instances, nullptr);
  EXPECT_EQ(tree_text(&name), name_tree);
}

TEST_F(InstanceChanges, DeleteInstanceEmptiesTheListThatHoldsTheRefusedName) {
  serve({error_answer});
  EXPECT_EQ(context_->Imethod_DeleteInstance(listed_name(2)), 6);
  EXPECT_EQ(entry().instanceNames, nullptr);
}

TEST_F(InstanceChanges, DeleteInstanceEmptiesTheListWithoutAName) {
  serve({void_answer});
  listed_name(1);
  EXPECT_EQ(context_->Imethod_DeleteInstance(nullptr), 1001);
  expect_refusal("addInstanceNameParam() InstanceName = NULL");
  EXPECT_EQ(entry().instanceNames, nullptr);
}

TEST_F(InstanceChanges, DeleteInstanceWithoutACurrentClassLeavesItsArgument) {
  serve({void_answer});
  context_->currentClass = nullptr;
  Tree name(name_tree);
  EXPECT_EQ(context_->Imethod_DeleteInstance(&name), 1001);
  expect_refusal("addLocalNameSpacePath() missing parameter: ClassName/NameSpace");
  EXPECT_EQ(tree_text(&name), name_tree);
}

const std::string changed =
    "INSTANCE CLASSNAME=CIM_A\n"
    " PROPERTY NAME=Speed TYPE=uint32\n"
    "  VALUE [7]\n";
const std::string named_instance = "<VALUE.NAMEDINSTANCE>\n" + instance_name_parameter +
                                   "<INSTANCE CLASSNAME=\"CIM_A\">\n"
                                   "<PROPERTY NAME=\"Speed\" TYPE=\"uint32\">\n"
                                   "<VALUE>7</VALUE>\n"
                                   "</PROPERTY>\n"
                                   "</INSTANCE>\n"
                                   "</VALUE.NAMEDINSTANCE>\n";

TEST_F(InstanceChanges, ModifyInstanceSendsTheWholeMessage) {
  serve({void_answer});
  Tree name("INSTANCENAME CLASSNAME=CIM_A\n");
  Tree instance("INSTANCE CLASSNAME=CIM_A\n");
  const CIMarray names = name_list();
  EXPECT_EQ(context_->Imethod_ModifyInstance(&name, instance, &names), 0);
  expect_entry_trace("Imethod_ModifyInstance()");
  EXPECT_EQ(body(),
            "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
            "<MESSAGE ID=\"1001\" PROTOCOLVERSION=\"1.0\">\n"
            "<SIMPLEREQ>\n"
            "<IMETHODCALL NAME=\"ModifyInstance\">\n"
            "<LOCALNAMESPACEPATH>\n"
            "<NAMESPACE NAME=\"root\"/>\n"
            "<NAMESPACE NAME=\"cimv2\"/>\n"
            "</LOCALNAMESPACEPATH>\n"
            "<IPARAMVALUE NAME=\"PropertyList\">\n"
            "<VALUE.ARRAY>\n"
            "<VALUE>Name</VALUE>\n"
            "</VALUE.ARRAY>\n"
            "</IPARAMVALUE>\n"
            "<VALUE.NAMEDINSTANCE>\n"
            "<IPARAMVALUE NAME=\"InstanceName\">\n"
            "<INSTANCENAME CLASSNAME=\"CIM_A\"/>\n"
            "</IPARAMVALUE>\n"
            "<INSTANCE CLASSNAME=\"CIM_A\"/>\n"
            "</VALUE.NAMEDINSTANCE>\n"
            "</IMETHODCALL>\n"
            "</SIMPLEREQ>\n"
            "</MESSAGE>\n"
            "</CIM>\n");
}

TEST_F(InstanceChanges, ModifyInstanceSendsNameAndInstance) {
  serve({void_answer});
  Tree name(name_tree);
  Tree instance(changed);
  EXPECT_EQ(context_->Imethod_ModifyInstance(&name, instance, nullptr), 0);
  EXPECT_EQ(parameters(), named_instance);
  EXPECT_EQ(tree_text(&name), name_tree);
  EXPECT_EQ(tree_text(&instance), changed);
}

TEST_F(InstanceChanges, ModifyInstanceReturnsTheServersStatus) {
  serve({error_answer});
  Tree name(name_tree);
  Tree instance(changed);
  EXPECT_EQ(context_->Imethod_ModifyInstance(&name, instance, nullptr), 6);
}

TEST_F(InstanceChanges, ModifyInstanceNeedsAnInstance) {
  serve({void_answer});
  Tree name(name_tree);
  ASSERT_EQ(context_->initCurlHandle(), 0);
  EXPECT_EQ(context_->Imethod_ModifyInstance(&name, name, nullptr), 1001);
  expect_refusal("Imethod_ModifyInstance() missing modifiedinstance");
}

TEST_F(InstanceChanges, ModifyInstanceNeedsAnInstanceThatCanBeWritten) {
  serve({void_answer});
  Tree name(name_tree);
  Tree instance("INSTANCE CLASSNAME=CIM_A\n");
  break_tree(instance);
  EXPECT_EQ(context_->Imethod_ModifyInstance(&name, instance, nullptr), 1001);
  expect_refusal("Imethod_ModifyInstance() bad CIMelement: modifiedinstance");
}

TEST_F(InstanceChanges, ModifyInstanceNeedsAName) {
  serve({void_answer});
  Tree instance(changed);
  EXPECT_EQ(context_->Imethod_ModifyInstance(nullptr, instance, nullptr), 1001);
  expect_refusal("addInstanceNameParam() InstanceName = NULL");
}

TEST_F(InstanceChanges, ModifyInstanceNeedsACurrentClass) {
  serve({void_answer});
  context_->currentClass = nullptr;
  Tree name(name_tree);
  Tree instance(changed);
  EXPECT_EQ(context_->Imethod_ModifyInstance(&name, instance, nullptr), 1001);
  expect_refusal("addLocalNameSpacePath() missing parameter: ClassName/NameSpace");
}

}  // namespace
