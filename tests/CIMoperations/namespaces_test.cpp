#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CIMoperations/operation_test.h"

namespace {

using namespace zuCIM;

// An instance of CIM_Namespace whose key `key` has this value.
std::string named_instance(const std::string& key, const std::string& value) {
  return "<VALUE.NAMEDINSTANCE>\n"
         "<INSTANCENAME CLASSNAME=\"CIM_Namespace\">\n"
         "<KEYBINDING NAME=\"CreationClassName\"><KEYVALUE>x</KEYVALUE></KEYBINDING>\n"
         "<KEYBINDING NAME=\"" +
         key + "\"><KEYVALUE>" + value +
         "</KEYVALUE></KEYBINDING>\n"
         "</INSTANCENAME>\n"
         "<INSTANCE CLASSNAME=\"CIM_Namespace\"/>\n"
         "</VALUE.NAMEDINSTANCE>\n";
}

std::string namespace_of(const std::string& name) {
  return named_instance("Name", name);
}

class Namespaces : public OperationTest {
 protected:
  std::vector<std::string> found() const {
    std::vector<std::string> texts;
    for (unsigned i = 0; i < names_.argc; ++i)
      texts.emplace_back(static_cast<const char*>(names_.argv[i]));
    return texts;
  }

  // An entry of the context's own chain with results, as text.
  std::string own_chain() {
    std::string text;
    for (const CIMclass* each = &context_->classes; each != nullptr; each = each->next)
      text += std::string(each->className) + "@" + each->nameSpace + "\n" +
              tree_text(each->instanceNames) + tree_text(each->instances);
    return text;
  }

  CIMarray names_;
};

using Texts = std::vector<std::string>;

TEST_F(Namespaces, AreReadFromTheInteropNamespace) {
  serve({return_value(namespace_of("root/cimv2"))});
  EXPECT_EQ(context_->getNameSpace(names_), 0);
  expect_entry_trace("getNameSpace()");
  EXPECT_EQ(found(), Texts{"root/cimv2"});
  EXPECT_EQ(body(),
            "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
            "<MESSAGE ID=\"1001\" PROTOCOLVERSION=\"1.0\">\n"
            "<SIMPLEREQ>\n"
            "<IMETHODCALL NAME=\"EnumerateInstances\">\n"
            "<LOCALNAMESPACEPATH>\n"
            "<NAMESPACE NAME=\"root\"/>\n"
            "<NAMESPACE NAME=\"interop\"/>\n"
            "</LOCALNAMESPACEPATH>\n"
            "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"CIM_Namespace\"/></IPARAMVALUE>\n"
            "</IMETHODCALL>\n"
            "</SIMPLEREQ>\n"
            "</MESSAGE>\n"
            "</CIM>\n");
  EXPECT_NE(server_->requests().at(0).find("CIMObject: root%2Finterop\r\n"), std::string::npos);
}

TEST_F(Namespaces, KeepTheirOrderAndTheirDuplicates) {
  serve({return_value(namespace_of("root/z") + namespace_of("root/a") + namespace_of("ROOT/Z") +
                      namespace_of("root/z"))});
  EXPECT_EQ(context_->getNameSpace(names_), 0);
  EXPECT_EQ(found(), (Texts{"root/z", "root/a", "ROOT/Z", "root/z"}));
  EXPECT_EQ(names_.maxargc, 4U);
}

TEST_F(Namespaces, AreAppended) {
  serve({return_value(namespace_of("root/a") + namespace_of("root/b"))});
  names_.putargv("before", -1, 15);
  EXPECT_EQ(context_->getNameSpace(names_), 0);
  EXPECT_EQ(found(), (Texts{"before", "root/a", "root/b"}));
}

TEST_F(Namespaces, MayBeMany) {
  std::string instances;
  Texts expected;
  for (int i = 0; i < 2000; ++i) {
    expected.push_back("root/n" + std::to_string(i));
    instances += namespace_of(expected.back());
  }
  serve({return_value(instances)});
  EXPECT_EQ(context_->getNameSpace(names_), 0);
  EXPECT_EQ(found(), expected);
}

TEST_F(Namespaces, EndAtAnInstanceWithoutTheNameKey) {
  serve({return_value(namespace_of("root/a") + named_instance("Other", "root/b") +
                      namespace_of("root/c"))});
  EXPECT_EQ(context_->getNameSpace(names_), 5005);
  EXPECT_EQ(context_->ChkCimStatus(), 5005);
  EXPECT_EQ(found(), Texts{"root/a"});
  EXPECT_EQ(names_.maxargc, 1U);
  EXPECT_EQ(count_traces(trace_level::error, "[127.0.0.2] getNameSpace: KEYBINDING Name=\"\?\?\""),
            1);
}

TEST_F(Namespaces, LeaveTheArrayAloneWithoutAnyName) {
  serve({return_value(named_instance("Other", "root/b"))});
  names_.putargv("before", -1, 15);
  EXPECT_EQ(context_->getNameSpace(names_), 5005);
  EXPECT_EQ(found(), Texts{"before"});
  EXPECT_EQ(names_.maxargc, 16U);
}

TEST_F(Namespaces, FindTheNameKeyInAnyCase) {
  serve({return_value(named_instance("NAME", "root/a"))});
  EXPECT_EQ(context_->getNameSpace(names_), 0);
  EXPECT_EQ(found(), Texts{"root/a"});
}

TEST_F(Namespaces, AreNotFoundInAnEmptyAnswer) {
  serve({empty_answer});
  EXPECT_EQ(context_->getNameSpace(names_), 5005);
  EXPECT_EQ(context_->ChkCimStatus(), 5005);
  EXPECT_EQ(names_.argc, 0U);
  EXPECT_EQ(count_traces(trace_level::error,
                         "[127.0.0.2] getNameSpace: missing 'CIM_Namespace' or 'root/interop'"),
            1);
}

TEST_F(Namespaces, AreNotFoundInAMalformedAnswer) {
  serve(
      {return_value("<VALUE.NAMEDINSTANCE>\n<INSTANCENAME CLASSNAME=\"CIM_Namespace\"/>\n"
                    "</VALUE.NAMEDINSTANCE>\n")});
  EXPECT_EQ(context_->getNameSpace(names_), 5005);
}

TEST_F(Namespaces, ReturnTheServersStatus) {
  serve({method_answer("<ERROR CODE=\"3\" DESCRIPTION=\"CIM_ERR_INVALID_NAMESPACE\"/>\n")});
  names_.putargv("before", -1, 15);
  EXPECT_EQ(context_->getNameSpace(names_), 3);
  EXPECT_EQ(context_->ChkCimStatus(), 3);
  EXPECT_EQ(found(), Texts{"before"});
  EXPECT_EQ(names_.maxargc, 16U);
  EXPECT_EQ(count_traces(trace_level::error,
                         "[127.0.0.2] getNameSpace: missing 'CIM_Namespace' or 'root/interop'"),
            1);
}

TEST_F(Namespaces, ReturnTheStatusOfTheTransfer) {
  serve({"no XML"});
  EXPECT_EQ(context_->getNameSpace(names_), 5002);
}

TEST_F(Namespaces, NeedTheBusyFlag) {
  serve({empty_answer});
  context_->ESXi_Occupied(false);
  EXPECT_EQ(context_->getNameSpace(names_), 27);
  EXPECT_EQ(server_->connection_count(), 0U);
}

TEST_F(Namespaces, CannotGoIntoAnArrayOfOtherElements) {
  serve({return_value(namespace_of("root/a"))});
  const int record = 7;
  names_.putargv(&record, sizeof record, 0);
  EXPECT_EQ(context_->getNameSpace(names_), 5005);
  ASSERT_EQ(names_.argc, 1U);
  EXPECT_EQ(*static_cast<const int*>(names_.argv[0]), 7);
}

TEST_F(Namespaces, LeaveTheCurrentClassAsItWas) {
  serve({return_value(namespace_of("root/a")), error_answer, empty_answer});
  CIMclass* const before = context_->currentClass;
  for (const int status : {0, 6, 5005}) {
    without_retries();
    EXPECT_EQ(context_->getNameSpace(names_), status);
    EXPECT_EQ(context_->currentClass, before);
  }
}

TEST_F(Namespaces, NeedNoCurrentClass) {
  serve({return_value(namespace_of("root/a"))});
  context_->currentClass = nullptr;
  EXPECT_EQ(context_->getNameSpace(names_), 0);
  EXPECT_EQ(context_->currentClass, nullptr);
  EXPECT_EQ(found(), Texts{"root/a"});
}

TEST_F(Namespaces, LeaveTheContextsOwnClassesAlone) {
  serve({return_value(namespace_of("root/a")), error_answer});
  CIMclass* const same = context_->setCurrentClass("CIM_Namespace", "root/interop");
  same->instanceNames = new CIMelement;
  same->instances = new CIMelement;
  build_tree(*same->instanceNames, "CIM\n INSTANCENAME CLASSNAME=CIM_Namespace\n");
  build_tree(*same->instances, "CIM\n INSTANCE CLASSNAME=CIM_Namespace\n");
  const std::string before = own_chain();
  EXPECT_EQ(context_->getNameSpace(names_), 0);
  EXPECT_EQ(own_chain(), before);
  without_retries();
  EXPECT_EQ(context_->getNameSpace(names_), 6);
  EXPECT_EQ(own_chain(), before);
}

}  // namespace
