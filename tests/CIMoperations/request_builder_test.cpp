#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "CIMoperations/tree_text.h"
#include "support/trace_recorder.h"
#include "zuCIM.h"

namespace {

using namespace zuCIM;

constexpr const char* source = "Src/CIMoperations";

class RequestBuilder : public testing::Test {
 protected:
  RequestBuilder() {
    container_.host = "myhost";
    container_.setCurrentClass("CIM_Namespace", "");
  }

  // The text that `append` adds to the request.
  template <class Append>
  std::string text_of(Append append) {
    container_.request = "before|";
    append();
    EXPECT_EQ(container_.request.substr(0, 7), "before|");
    return container_.request.substr(7);
  }

  void expect_rejected(const std::string& text) {
    EXPECT_EQ(container_.cimStatus, status::failure);
    EXPECT_EQ(container_.ChkCimStatus(), 1001);
    EXPECT_EQ(container_.request, "");
    EXPECT_EQ(recorder_.count(trace_level::warning, source, "[myhost] " + text), 1) << text;
    EXPECT_EQ(recorder_.lines().size(), 1U);
  }

  CIMcontainer container_;
  TraceRecorder recorder_;
};

TEST_F(RequestBuilder, WritesTheFirstRequestOfAContextInFourteenLines) {
  container_.beginIntrinsicMethod(imethod::EnumerateInstanceNames);
  container_.addClassNameParam(1);
  for (const int element : {elem::IMETHODCALL, elem::SIMPLEREQ, elem::MESSAGE, elem::CIM})
    container_.endElement(element);
  EXPECT_EQ(container_.request,
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
  EXPECT_EQ(container_.cimStatus, 0);
  EXPECT_TRUE(recorder_.lines().empty());
}

TEST_F(RequestBuilder, NumbersTheMessagesOfAContext) {
  container_.addCIMXMLheader();
  EXPECT_NE(container_.request.find("<MESSAGE ID=\"1001\""), std::string::npos);
  container_.addCIMXMLheader();
  EXPECT_NE(container_.request.find("<MESSAGE ID=\"1002\""), std::string::npos);
  EXPECT_EQ(container_.messageId, 1002);
}

TEST_F(RequestBuilder, SurvivesTheLastMessageNumber) {
  container_.messageId = std::numeric_limits<std::int32_t>::max();
  container_.addCIMXMLheader();
  EXPECT_EQ(container_.messageId, std::numeric_limits<std::int32_t>::min());
  EXPECT_NE(container_.request.find("<MESSAGE ID=\"-2147483648\""), std::string::npos);
}

TEST_F(RequestBuilder, HeaderStartsANewRequestAndClearsEarlierErrors) {
  container_.request = "old";
  container_.responseHeader = "old";
  container_.responseBody = "old";
  container_.result.name = known_cim_elements[elem::CIM];
  container_.cimStatus = 1001;
  container_.addCIMXMLheader();
  EXPECT_EQ(container_.request,
            "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
            "<MESSAGE ID=\"1001\" PROTOCOLVERSION=\"1.0\">\n");
  EXPECT_EQ(container_.responseHeader, "");
  EXPECT_EQ(container_.responseBody, "");
  EXPECT_EQ(container_.result.name, nullptr);
  EXPECT_EQ(container_.cimStatus, 0);
}

TEST_F(RequestBuilder, IntrinsicMethodSetsTheMethodName) {
  for (int id = 0; id < imethod::count; ++id) {
    container_.beginIntrinsicMethod(id);
    EXPECT_EQ(container_.methodName, known_cim_imethods[id]);
    const std::string line =
        std::string("<SIMPLEREQ>\n<IMETHODCALL NAME=\"") + known_cim_imethods[id] + "\">\n";
    EXPECT_NE(container_.request.find(line), std::string::npos) << line;
  }
}

TEST_F(RequestBuilder, MethodIdOutsideTheTableIsTheUnknownMethod) {
  for (const int id : {-1, static_cast<int>(imethod::count), 1000}) {
    container_.beginIntrinsicMethod(id);
    EXPECT_EQ(container_.methodName, known_cim_imethods[imethod::unknown]) << id;
  }
}

TEST_F(RequestBuilder, BeginsElementsWithTheTailOfTheCaller) {
  EXPECT_EQ(text_of([this] { container_.beginElement(elem::CIM, nullptr); }), "<CIM");
  EXPECT_EQ(text_of([this] { container_.beginElement(elem::CIM, ">"); }), "<CIM>");
  EXPECT_EQ(text_of([this] { container_.beginElement(elem::VALUE_REFARRAY, ">\n"); }),
            "<VALUE.REFARRAY>\n");
  EXPECT_EQ(text_of([this] { container_.beginElement(elem::VALUE, ""); }), "<VALUE");
}

TEST_F(RequestBuilder, EndsElements) {
  EXPECT_EQ(text_of([this] { container_.endElement(elem::VALUE_NAMEDINSTANCE); }),
            "</VALUE.NAMEDINSTANCE>\n");
  EXPECT_EQ(text_of([this] { container_.endElement(0); }), "</?xml>\n");
  EXPECT_EQ(text_of([this] { container_.endElement(-1); }), "/>\n");
  EXPECT_EQ(text_of([this] { container_.endElement(std::numeric_limits<int>::min()); }), "/>\n");
}

TEST_F(RequestBuilder, ElementIdOutsideTheTableIsTheUnknownElement) {
  const int largest = std::numeric_limits<int>::max();
  EXPECT_EQ(text_of([this] { container_.beginElement(-1, ">"); }), "<unknown>");
  EXPECT_EQ(text_of([this] { container_.beginElement(elem::COUNT, ">"); }), "<unknown>");
  EXPECT_EQ(text_of([=, this] { container_.beginElement(largest, ">"); }), "<unknown>");
  EXPECT_EQ(text_of([this] { container_.endElement(elem::COUNT); }), "</unknown>\n");
}

TEST_F(RequestBuilder, AddsAttributesWithoutEscaping) {
  EXPECT_EQ(text_of([this] { container_.addAttribute(attr::NAME, "a&<\"'", "/>\n"); }),
            " NAME=\"a&<\"'\"/>\n");
  EXPECT_EQ(text_of([this] { container_.addAttribute(attr::EMBEDDEDOBJECT, "x", nullptr); }),
            " EmbeddedObject=\"x\"");
}

TEST_F(RequestBuilder, LeavesOutWhatIsNoAttributeButWritesItsTail) {
  EXPECT_EQ(text_of([this] { container_.addAttribute(33, "x", ">"); }), ">");
  EXPECT_EQ(text_of([this] { container_.addAttribute(34, "x", ">"); }), ">");
  EXPECT_EQ(text_of([this] { container_.addAttribute(-1, "x", ">"); }), ">");
  EXPECT_EQ(text_of([this] { container_.addAttribute(attr::NAME, "", ">"); }), ">");
  EXPECT_EQ(text_of([this] { container_.addAttribute(attr::NAME, nullptr, ">"); }), ">");
  EXPECT_EQ(text_of([this] { container_.addAttribute(attr::NAME, nullptr, nullptr); }), "");
  EXPECT_EQ(container_.cimStatus, 0);
  EXPECT_TRUE(recorder_.lines().empty());
}

TEST_F(RequestBuilder, AddsValues) {
  EXPECT_EQ(text_of([this] { container_.addValue("a < b"); }), "<VALUE>a < b</VALUE>\n");
  EXPECT_EQ(text_of([this] { container_.addValue(""); }), "");
  EXPECT_EQ(text_of([this] { container_.addValue(nullptr); }), "");
}

struct NamespaceCase {
  const char* name_space;
  const char* lines;
};

TEST_F(RequestBuilder, SplitsANamespaceAtItsFirstSlash) {
  const NamespaceCase cases[] = {
      {"root/cimv2", "<NAMESPACE NAME=\"root\"/>\n<NAMESPACE NAME=\"cimv2\"/>\n"},
      {"interop", "<NAMESPACE NAME=\"interop\"/>\n"},
      {"root/", "<NAMESPACE NAME=\"root\"/>\n"},
      {"root/a/b", "<NAMESPACE NAME=\"root\"/>\n<NAMESPACE NAME=\"a/b\"/>\n"},
      {"/a", "<NAMESPACE/>\n<NAMESPACE NAME=\"a\"/>\n"},
      {"/", "<NAMESPACE/>\n"},
      {"a//b", "<NAMESPACE NAME=\"a\"/>\n<NAMESPACE NAME=\"/b\"/>\n"},
  };
  for (const NamespaceCase& each : cases) {
    CIMclass* const entry = container_.setCurrentClass("A", each.name_space);
    EXPECT_EQ(text_of([this] { container_.addLocalNameSpacePath(); }),
              std::string("<LOCALNAMESPACEPATH>\n") + each.lines + "</LOCALNAMESPACEPATH>\n");
    EXPECT_STREQ(entry->nameSpace, each.name_space);
  }
}

TEST_F(RequestBuilder, RejectsARequestWithoutCurrentClass) {
  container_.currentClass = nullptr;
  container_.request = "begun";
  container_.addLocalNameSpacePath();
  expect_rejected("addLocalNameSpacePath() missing parameter: ClassName/NameSpace");
}

TEST_F(RequestBuilder, RejectsARequestWithoutNamespace) {
  CIMclass entry;
  container_.currentClass = &entry;
  container_.beginIntrinsicMethod(imethod::GetClass);
  expect_rejected("addLocalNameSpacePath() missing parameter: ClassName/NameSpace");
}

TEST_F(RequestBuilder, LaterPiecesStillGoIntoARejectedRequest) {
  container_.currentClass = nullptr;
  container_.beginIntrinsicMethod(imethod::GetClass);
  container_.addOptionalParameter(0, 1);
  EXPECT_EQ(container_.request,
            "<IPARAMVALUE NAME=\"LocalOnly\"><VALUE>true</VALUE>\n</IPARAMVALUE>\n");
  EXPECT_EQ(container_.cimStatus, 1001);
}

TEST_F(RequestBuilder, AddsTheClassNameInOneLine) {
  for (const int required : {0, 1, 2, -1})
    EXPECT_EQ(
        text_of([=, this] { container_.addClassNameParam(required); }),
        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"CIM_Namespace\"/></IPARAMVALUE>\n");
}

TEST_F(RequestBuilder, OptionalClassNameMayBeMissing) {
  container_.currentClass = nullptr;
  for (const int required : {0, 2, -1})
    EXPECT_EQ(text_of([=, this] { container_.addClassNameParam(required); }), "");
  container_.setCurrentClass("", "root/cimv2");
  EXPECT_EQ(text_of([this] { container_.addClassNameParam(0); }), "");
  EXPECT_EQ(container_.cimStatus, 0);
  EXPECT_TRUE(recorder_.lines().empty());
}

TEST_F(RequestBuilder, RejectsARequiredClassNameThatIsMissing) {
  container_.currentClass = nullptr;
  container_.request = "begun";
  container_.addClassNameParam(1);
  expect_rejected("addClassNameParam() missing parameter: ClassName");
}

TEST_F(RequestBuilder, RejectsAClassWithoutName) {
  container_.setCurrentClass("", "root/cimv2");
  container_.request = "begun";
  container_.addClassNameParam(1);
  expect_rejected("addClassNameParam() missing parameter: ClassName");
}

TEST_F(RequestBuilder, AddsAnInstanceName) {
  CIMelement name;
  build_tree(name,
             "INSTANCENAME CLASSNAME=A\n"
             " KEYBINDING NAME=Id\n"
             "  KEYVALUE [7]\n");
  EXPECT_EQ(text_of([&] { container_.addInstanceNameParam(&name); }),
            "<IPARAMVALUE NAME=\"InstanceName\">\n"
            "<INSTANCENAME CLASSNAME=\"A\">\n"
            "<KEYBINDING NAME=\"Id\">\n"
            "<KEYVALUE>7</KEYVALUE>\n"
            "</KEYBINDING>\n"
            "</INSTANCENAME>\n"
            "</IPARAMVALUE>\n");
}

TEST_F(RequestBuilder, RejectsANullInstanceName) {
  container_.request = "begun";
  container_.addInstanceNameParam(nullptr);
  expect_rejected("addInstanceNameParam() InstanceName = NULL");
}

TEST_F(RequestBuilder, RejectsAnInstanceNameThatCannotBeWritten) {
  CIMelement root;
  build_tree(root,
             "CIM\n"
             " INSTANCENAME\n"
             " VALUE\n");
  CIMelement stranger;
  root.next->next->parent = &stranger;
  container_.request = "begun";
  container_.addInstanceNameParam(root.next);
  EXPECT_EQ(container_.cimStatus, 1001);
  EXPECT_EQ(container_.request, "");
  EXPECT_EQ(recorder_.count(trace_level::warning, source,
                            "[myhost] addInstanceNameParam() bad CIMelement: InstanceName"),
            1);
}

TEST_F(RequestBuilder, AddsBooleanParameters) {
  const char* const names[] = {"LocalOnly", "IncludeQualifiers", "IncludeClassOrigin",
                               "DeepInheritance"};
  for (int i = 0; i < 4; ++i) {
    const std::string begin = std::string("<IPARAMVALUE NAME=\"") + names[i] + "\"><VALUE>";
    const std::string end = "</VALUE>\n</IPARAMVALUE>\n";
    EXPECT_EQ(text_of([=, this] { container_.addOptionalParameter(i, 1); }), begin + "true" + end);
    EXPECT_EQ(text_of([=, this] { container_.addOptionalParameter(i, 0); }), begin + "false" + end);
  }
}

TEST_F(RequestBuilder, LeavesUnsetBooleanParametersOut) {
  for (const int value : {-1, 2, std::numeric_limits<int>::min()})
    EXPECT_EQ(text_of([=, this] { container_.addOptionalParameter(3, value); }), "");
  for (const int parameter : {-1, 4, std::numeric_limits<int>::max()})
    EXPECT_EQ(text_of([=, this] { container_.addOptionalParameter(parameter, 1); }), "");
  EXPECT_EQ(container_.cimStatus, 0);
}

TEST_F(RequestBuilder, AddsAPropertyList) {
  CIMarray names;
  for (const char* const name : {"Name", "", "SystemName"}) names.putargv(name, -1, 15);
  EXPECT_EQ(text_of([&] { container_.addOptionalPropertyList(&names); }),
            "<IPARAMVALUE NAME=\"PropertyList\">\n"
            "<VALUE.ARRAY>\n"
            "<VALUE>Name</VALUE>\n"
            "<VALUE>SystemName</VALUE>\n"
            "</VALUE.ARRAY>\n"
            "</IPARAMVALUE>\n");
}

TEST_F(RequestBuilder, EmptyPropertyListAsksForNoProperties) {
  const CIMarray names;
  EXPECT_EQ(text_of([&] { container_.addOptionalPropertyList(&names); }),
            "<IPARAMVALUE NAME=\"PropertyList\">\n"
            "<VALUE.ARRAY>\n"
            "</VALUE.ARRAY>\n"
            "</IPARAMVALUE>\n");
}

TEST_F(RequestBuilder, NullPropertyListIsLeftOut) {
  EXPECT_EQ(text_of([this] { container_.addOptionalPropertyList(nullptr); }), "");
}

TEST(CurrentClass, NullAndEmptyNamespaceMeanTheDefaultNamespace) {
  CIMcontainer container;
  CIMclass* const entry = container.setCurrentClass("CIM_A", nullptr);
  ASSERT_NE(entry, nullptr);
  EXPECT_STREQ(entry->nameSpace, "root/cimv2");
  EXPECT_STREQ(entry->className, "CIM_A");
  EXPECT_EQ(container.setCurrentClass("CIM_A", ""), entry);
  EXPECT_EQ(container.setCurrentClass("cim_a", "ROOT/CIMV2"), entry);
  EXPECT_EQ(container.currentClass, entry);
  EXPECT_EQ(entry->next, nullptr);
}

TEST(CurrentClass, AppendsAnEntryForANewPair) {
  CIMcontainer container;
  CIMclass* const first = container.setCurrentClass("CIM_A", "");
  CIMclass* const second = container.setCurrentClass("CIM_A", "root/interop");
  EXPECT_EQ(first, &container.classes);
  EXPECT_EQ(first->next, second);
  EXPECT_EQ(container.currentClass, second);
  EXPECT_EQ(container.setCurrentClass("CIM_A", ""), first);
  EXPECT_EQ(container.currentClass, first);
}

TEST(CurrentClass, NullClassNameNamesNoClass) {
  CIMcontainer container;
  CIMclass* const entry = container.setCurrentClass(nullptr, "");
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->className, nullptr);
  EXPECT_EQ(container.setCurrentClass(nullptr, ""), entry);
  EXPECT_EQ(container.setCurrentClass("", ""), entry);
}

}  // namespace
