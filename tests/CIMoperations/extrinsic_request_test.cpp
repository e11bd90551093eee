#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "CIMoperations/extrinsic_test.h"

// The requests of extrinsic methods.
namespace {

using namespace zuCIM;

constexpr std::uint32_t array_of = type::array_bit;

class ExtrinsicRequest : public ExtrinsicTest {
 protected:
  // Calls the method with one parameter and returns what was sent for it.
  std::string sent_for(const _paramvalue_& parameter) {
    serve({returning("0")});
    const _paramvalue_ parameters[] = {parameter, end_of_parameters};
    EXPECT_EQ(call(parameters), 0);
    return between("</LOCALINSTANCEPATH>\n", "</METHODCALL>", 0);
  }

  // The same with a parameter `p` of these values.
  std::string sent_for(std::uint32_t type, std::uint32_t count, const void* values) {
    return sent_for({"p", type, count, values});
  }
};

TEST_F(ExtrinsicRequest, IsSentAsAWholeMessage) {
  serve({returning("0")});
  const std::uint16_t number = 7;
  const bool flags[] = {true, false};
  const _paramvalue_ parameters[] = {{"Level", type::uint16, 1, &number},
                                     {"Flags", type::boolean | array_of, 2, flags},
                                     end_of_parameters};
  EXPECT_EQ(call(parameters), 0);
  expect_entry_trace("performExtrinsicMethod(\"Start\")");
  EXPECT_EQ(body(),
            "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
            "<MESSAGE ID=\"1001\" PROTOCOLVERSION=\"1.0\">\n"
            "<SIMPLEREQ>\n"
            "<METHODCALL NAME=\"Start\">\n"
            "<LOCALINSTANCEPATH>\n"
            "<LOCALNAMESPACEPATH>\n"
            "<NAMESPACE NAME=\"root\"/>\n"
            "<NAMESPACE NAME=\"cimv2\"/>\n"
            "</LOCALNAMESPACEPATH>\n"
            "<INSTANCENAME CLASSNAME=\"CIM_A\">\n"
            "<KEYBINDING NAME=\"Id\">\n"
            "<KEYVALUE>1</KEYVALUE>\n"
            "</KEYBINDING>\n"
            "</INSTANCENAME>\n"
            "</LOCALINSTANCEPATH>\n"
            "<PARAMVALUE NAME=\"Level\" PARAMTYPE=\"uint16\">\n"
            "<VALUE>7</VALUE>\n"
            "</PARAMVALUE>\n"
            "<PARAMVALUE NAME=\"Flags\" PARAMTYPE=\"boolean\">\n"
            "<VALUE.ARRAY>\n"
            "<VALUE>true</VALUE>\n"
            "<VALUE>false</VALUE>\n"
            "</VALUE.ARRAY>\n"
            "</PARAMVALUE>\n"
            "</METHODCALL>\n"
            "</SIMPLEREQ>\n"
            "</MESSAGE>\n"
            "</CIM>\n");
  EXPECT_EQ(tree_text(&name_), name_tree);
}

TEST_F(ExtrinsicRequest, NamesMethodAndNamespaceInTheHttpHeader) {
  serve({returning("0")});
  context_->setCurrentClass("CIM_A", "root/interop");
  call();
  const std::string request = server_->requests().at(0);
  EXPECT_NE(request.find("CIMMethod: Start\r\n"), std::string::npos);
  EXPECT_NE(request.find("CIMObject: root%2Finterop\r\n"), std::string::npos);
  EXPECT_STREQ(context_->methodName, "Start");
}

TEST_F(ExtrinsicRequest, MayHaveNoParameters) {
  serve({returning("0"), returning("0")});
  EXPECT_EQ(call(), 0);
  EXPECT_EQ(between("</LOCALINSTANCEPATH>\n", "</METHODCALL>", 0), "");
  EXPECT_EQ(call(nullptr), 0);
  EXPECT_EQ(between("</LOCALINSTANCEPATH>\n", "</METHODCALL>", 1), "");
}

TEST_F(ExtrinsicRequest, CountsItsMessages) {
  serve({returning("0"), returning("0")});
  call();
  call();
  EXPECT_NE(body(0).find("<MESSAGE ID=\"1001\""), std::string::npos);
  EXPECT_NE(body(1).find("<MESSAGE ID=\"1002\""), std::string::npos);
}

TEST_F(ExtrinsicRequest, NeedsACurrentClass) {
  serve({returning("0")});
  ASSERT_EQ(context_->initCurlHandle(), 0);
  context_->request = "old";
  context_->currentClass = nullptr;
  EXPECT_EQ(call(), 1001);
  expect_refusal("performExtrinsicMethod() pcls=NULL");
}

TEST_F(ExtrinsicRequest, NeedsAnInstance) {
  serve({returning("0")});
  ASSERT_EQ(context_->initCurlHandle(), 0);
  const _paramvalue_ none[] = {end_of_parameters};
  EXPECT_EQ(context_->performExtrinsicMethod("Start", nullptr, none), 1001);
  expect_refusal("performExtrinsicMethod() bad CIMelement: InstanceName");
}

TEST_F(ExtrinsicRequest, NeedsAnInstanceNameThatCanBeWritten) {
  serve({returning("0")});
  Tree broken("INSTANCENAME CLASSNAME=CIM_A\n");
  break_tree(broken);
  const _paramvalue_ none[] = {end_of_parameters};
  EXPECT_EQ(context_->performExtrinsicMethod("Start", &broken, none), 1001);
  expect_refusal("performExtrinsicMethod() bad CIMelement: InstanceName");
}

TEST_F(ExtrinsicRequest, NeedsAMethodName) {
  serve({returning("0")});
  const _paramvalue_ none[] = {end_of_parameters};
  EXPECT_EQ(context_->performExtrinsicMethod(nullptr, &name_, none), 1001);
  expect_refusal("performExtrinsicMethod() methodName=NULL");
}

TEST_F(ExtrinsicRequest, NeedsANamespace) {
  serve({returning("0")});
  CIMclass nameless;
  context_->currentClass = &nameless;
  EXPECT_EQ(call(), 1001);
  expect_refusal("addLocalNameSpacePath() missing parameter: ClassName/NameSpace");
}

TEST_F(ExtrinsicRequest, RefusesUnknownTypes) {
  for (const std::uint32_t type : {16U, 17U, 0xFFU, 0x200U, 0x110U, 0x203U, 0x80000000U, ~0U}) {
    serve({returning("0")});
    recorder_.clear();
    ASSERT_EQ(context_->initCurlHandle(), 0);
    const std::int32_t number = 1;
    const _paramvalue_ parameters[] = {
        {"good", type::sint32, 1, &number}, {"bad", type, 1, &number}, end_of_parameters};
    EXPECT_EQ(call(parameters), 1001);
    expect_refusal("performExtrinsicMethod() bad ParamType");
  }
}

TEST_F(ExtrinsicRequest, RefusesUnknownTypesEvenWithoutValues) {
  serve({returning("0")});
  const _paramvalue_ parameters[] = {{"bad", 16, 0, nullptr}, end_of_parameters};
  EXPECT_EQ(call(parameters), 1001);
  expect_refusal("performExtrinsicMethod() bad ParamType");
}

TEST_F(ExtrinsicRequest, KeepsItsRefusalWithoutTheBusyFlag) {
  serve({returning("0")});
  context_->ESXi_Occupied(false);
  const _paramvalue_ parameters[] = {{"bad", 16, 0, nullptr}, end_of_parameters};
  EXPECT_EQ(call(parameters), 1001);
  expect_refusal("performExtrinsicMethod() bad ParamType");
}

// Every type but references, alone and as an array.
TEST_F(ExtrinsicRequest, WritesEveryType) {
  const bool booleans[] = {false, true};
  const std::uint8_t uint8s[] = {255, 0};
  const std::int8_t sint8s[] = {-1, 127};
  const std::uint16_t uint16s[] = {65535, 0};
  const std::int16_t sint16s[] = {-1, 1};
  const std::uint32_t uint32s[] = {4294967295U, 0};
  const std::int32_t sint32s[] = {-1, 1};
  const std::uint64_t uint64s[] = {18446744073709551615ULL, 0};
  const std::int64_t sint64s[] = {-9223372036854775807LL - 1, 1};
  const float real32s[] = {-2.5F, 0.1F};
  const double real64s[] = {123456789.0, 1e10};
  const struct {
    std::uint32_t type;
    const void* values;
    std::string name, first, second;
  } cases[] = {
      {0, booleans, "boolean", "false", "true"},
      {1, "same", "string", "same", "same"},
      {2, "xy", "char16", "", ""},
      {3, uint8s, "uint8", "255", "0"},
      {4, sint8s, "sint8", "4294967295", "127"},
      {5, uint16s, "uint16", "65535", "0"},
      {6, sint16s, "sint16", "-1", "1"},
      {7, uint32s, "uint32", "4294967295", "0"},
      {8, sint32s, "sint32", "-1", "1"},
      {9, uint64s, "uint64", "18446744073709551615", "0"},
      {10, sint64s, "sint64", "-9223372036854775808", "1"},
      {11, "20200101000000.000000+000", "datetime", "", ""},
      {12, real32s, "real32", "-2.5", "0.1"},
      {13, real64s, "real64", "1.23457e+08", "1e+10"},
      {14, "any", "unknown", "", ""},
  };
  for (const auto& each : cases) {
    const std::string start = "<PARAMVALUE NAME=\"p\" PARAMTYPE=\"" + each.name + "\">\n";
    EXPECT_EQ(sent_for(each.type, 1, each.values),
              start + "<VALUE>" + each.first + "</VALUE>\n</PARAMVALUE>\n");
    EXPECT_EQ(sent_for(each.type | array_of, 2, each.values),
              start + "<VALUE.ARRAY>\n<VALUE>" + each.first + "</VALUE>\n<VALUE>" + each.second +
                  "</VALUE>\n</VALUE.ARRAY>\n</PARAMVALUE>\n");
  }
}

TEST_F(ExtrinsicRequest, LeavesOutAParameterWithNeitherValuesNorCount) {
  for (const std::uint32_t type : {1U, 7U, 15U, 1U | array_of, 7U | array_of, 15U | array_of})
    EXPECT_EQ(sent_for(type, 0, nullptr), "");
}

const std::string uint32_start = "<PARAMVALUE NAME=\"p\" PARAMTYPE=\"uint32\">\n";
const std::string reference_start = "<PARAMVALUE NAME=\"p\" PARAMTYPE=\"reference\">\n";
const std::string end = "</PARAMVALUE>\n";

TEST_F(ExtrinsicRequest, SendsOneValueWithoutTheArrayBit) {
  const std::uint32_t numbers[] = {1, 2, 3};
  for (const std::uint32_t count : {0U, 1U, 3U})
    EXPECT_EQ(sent_for(type::uint32, count, numbers), uint32_start + "<VALUE>1</VALUE>\n" + end);
}

TEST_F(ExtrinsicRequest, SendsAnEmptyValueForACountAlone) {
  for (const std::uint32_t count : {1U, 3U})
    EXPECT_EQ(sent_for(type::uint32, count, nullptr), uint32_start + "<VALUE></VALUE>\n" + end);
  EXPECT_EQ(sent_for(type::string, 1, nullptr),
            "<PARAMVALUE NAME=\"p\" PARAMTYPE=\"string\">\n<VALUE></VALUE>\n" + end);
}

TEST_F(ExtrinsicRequest, SendsAnEmptyArrayWithoutValuesOrCount) {
  const std::uint32_t number = 1;
  const std::string expected = uint32_start + "<VALUE.ARRAY>\n</VALUE.ARRAY>\n" + end;
  EXPECT_EQ(sent_for(type::uint32 | array_of, 3, nullptr), expected);
  EXPECT_EQ(sent_for(type::uint32 | array_of, 0, &number), expected);
}

TEST_F(ExtrinsicRequest, SendsAReference) {
  Tree other("INSTANCENAME CLASSNAME=CIM_B\n");
  const std::string reference =
      "<VALUE.REFERENCE>\n<INSTANCENAME CLASSNAME=\"CIM_B\"/>\n</VALUE.REFERENCE>\n";
  for (const std::uint32_t count : {0U, 1U, 2U})
    EXPECT_EQ(sent_for(type::reference, count, &other), reference_start + reference + end);
  EXPECT_EQ(sent_for(type::reference | array_of, 1, &other),
            reference_start + "<VALUE.REFARRAY>\n" + reference + "</VALUE.REFARRAY>\n" + end);
}

TEST_F(ExtrinsicRequest, SendsAnEmptyReferenceArrayWithoutValuesOrCount) {
  Tree other("INSTANCENAME CLASSNAME=CIM_B\n");
  const std::string expected = reference_start + "<VALUE.REFARRAY>\n</VALUE.REFARRAY>\n" + end;
  EXPECT_EQ(sent_for(type::reference | array_of, 2, nullptr), expected);
  EXPECT_EQ(sent_for(type::reference | array_of, 0, &other), expected);
}

TEST_F(ExtrinsicRequest, SendsAReferenceWithoutATreeEmpty) {
  EXPECT_EQ(sent_for(type::reference, 1, nullptr),
            reference_start + "<VALUE.REFERENCE>\n</VALUE.REFERENCE>\n" + end);
  EXPECT_EQ(recorder_.count(trace_level::error, "Src/CIMXMLparser", "GenerateCIMXML: this = NULL"),
            1);
}

TEST_F(ExtrinsicRequest, RefusesAReferenceThatCannotBeWritten) {
  serve({returning("0")});
  Tree broken("INSTANCENAME CLASSNAME=CIM_B\n");
  break_tree(broken);
  const _paramvalue_ parameters[] = {{"p", type::reference, 1, &broken}, end_of_parameters};
  EXPECT_EQ(call(parameters), 1001);
  expect_refusal("performExtrinsicMethod() bad CIMelement: reference");
}

TEST_F(ExtrinsicRequest, RefusesAnArrayOfSeveralReferences) {
  serve({returning("0")});
  Tree other("INSTANCENAME CLASSNAME=CIM_B\n");
  const _paramvalue_ parameters[] = {{"p", type::reference | array_of, 2, &other},
                                     end_of_parameters};
  EXPECT_EQ(call(parameters), 1001);
  EXPECT_EQ(context_->ChkCimStatus(), 0);
  EXPECT_EQ(server_->connection_count(), 0U);
  EXPECT_EQ(count_traces(trace_level::error,
                         "[127.0.0.2] performExtrinsicMethod: Sorry! VALUE_REFARRAY is not "
                         "implemented yet!"),
            1);
}

TEST_F(ExtrinsicRequest, EndsAtTheFirstParameterWithoutName) {
  serve({returning("0")});
  const bool yes = true;
  const _paramvalue_ parameters[] = {{"z", type::boolean, 1, &yes},
                                     {"skipped", type::boolean, 0, nullptr},
                                     {"a", type::boolean, 1, &yes},
                                     end_of_parameters,
                                     {"behind", type::boolean, 1, &yes}};
  call(parameters);
  EXPECT_EQ(between("</LOCALINSTANCEPATH>\n", "</METHODCALL>", 0),
            "<PARAMVALUE NAME=\"z\" PARAMTYPE=\"boolean\">\n<VALUE>true</VALUE>\n</PARAMVALUE>\n"
            "<PARAMVALUE NAME=\"a\" PARAMTYPE=\"boolean\">\n<VALUE>true</VALUE>\n</PARAMVALUE>\n");
}

}  // namespace
