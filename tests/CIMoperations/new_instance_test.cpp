#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "CIMoperations/operation_test.h"

// Creating instances from the caller's array of properties.
namespace {

using namespace zuCIM;

constexpr std::uint32_t array_of = type::array_bit;
constexpr _properties_ end_of_properties{nullptr, 0, 0, nullptr, nullptr};

const std::string created_answer = return_value(
    "<INSTANCENAME CLASSNAME=\"CIM_A\">\n"
    "<KEYBINDING NAME=\"Id\"><KEYVALUE>1</KEYVALUE></KEYBINDING>\n"
    "</INSTANCENAME>\n");

class NewInstance : public OperationTest {
 protected:
  // Creates an instance with one property and returns what was sent inside the INSTANCE element.
  std::string sent_for(const _properties_& property) {
    serve({created_answer});
    const _properties_ properties[] = {property, end_of_properties};
    EXPECT_NE(context_->Imethod_CreateInstance(properties), 0);
    EXPECT_EQ(context_->ChkCimStatus(), 0);
    return between("<INSTANCE CLASSNAME=\"CIM_A\">\n", "</INSTANCE>\n", 0);
  }

  // The same with a property `p` of these values.
  std::string sent_for(std::uint32_t type, std::uint32_t count, const void* values) {
    return sent_for({"p", type, count, values, nullptr});
  }

  void expect_bad_type(std::uint32_t type) {
    serve({created_answer});
    recorder_.clear();
    ASSERT_EQ(context_->initCurlHandle(), 0);
    const std::int32_t number = 1;
    const _properties_ properties[] = {{"good", type::sint32, 1, &number, nullptr},
                                       {"bad", type, 1, &number, nullptr},
                                       end_of_properties};
    EXPECT_EQ(context_->Imethod_CreateInstance(properties), 0) << type;
    expect_refusal("Imethod_CreateInstance() bad Type");
  }
};

TEST_F(NewInstance, IsSentAsAWholeMessage) {
  serve({created_answer});
  const std::uint16_t numbers[] = {1, 65535};
  const _properties_ properties[] = {{"Id", type::string, 1, "one", nullptr},
                                     {"List", type::uint16 | array_of, 2, numbers, nullptr},
                                     end_of_properties};
  context_->Imethod_CreateInstance(properties);
  expect_entry_trace("Imethod_CreateInstance()");
  EXPECT_EQ(body(),
            "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
            "<MESSAGE ID=\"1001\" PROTOCOLVERSION=\"1.0\">\n"
            "<SIMPLEREQ>\n"
            "<IMETHODCALL NAME=\"CreateInstance\">\n"
            "<LOCALNAMESPACEPATH>\n"
            "<NAMESPACE NAME=\"root\"/>\n"
            "<NAMESPACE NAME=\"cimv2\"/>\n"
            "</LOCALNAMESPACEPATH>\n"
            "<IPARAMVALUE NAME=\"NewInstance\">\n"
            "<INSTANCE CLASSNAME=\"CIM_A\">\n"
            "<PROPERTY NAME=\"Id\" TYPE=\"string\">\n"
            "<VALUE>one</VALUE>\n"
            "</PROPERTY>\n"
            "<PROPERTY.ARRAY NAME=\"List\" TYPE=\"uint16\">\n"
            "<VALUE.ARRAY>\n"
            "<VALUE>1</VALUE>\n"
            "<VALUE>65535</VALUE>\n"
            "</VALUE.ARRAY>\n"
            "</PROPERTY.ARRAY>\n"
            "</INSTANCE>\n"
            "</IPARAMVALUE>\n"
            "</IMETHODCALL>\n"
            "</SIMPLEREQ>\n"
            "</MESSAGE>\n"
            "</CIM>\n");
}

TEST_F(NewInstance, MovesItsNameIntoTheList) {
  serve({created_answer, created_answer});
  const _properties_ none[] = {end_of_properties};
  const std::string one_name =
      " INSTANCENAME CLASSNAME=CIM_A\n  KEYBINDING NAME=Id\n   KEYVALUE [1]\n";
  const std::intptr_t first = context_->Imethod_CreateInstance(none);
  EXPECT_EQ(first, reinterpret_cast<std::intptr_t>(entry().instanceNames->next));
  EXPECT_EQ(tree_text(entry().instanceNames), "CIM\n" + one_name);
  without_retries();
  const std::intptr_t second = context_->Imethod_CreateInstance(none);
  EXPECT_EQ(second, reinterpret_cast<std::intptr_t>(
                        entry().instanceNames->findelement(elem::INSTANCENAME, 1)));
  EXPECT_EQ(tree_text(entry().instanceNames), "CIM\n" + one_name + one_name);
}

TEST_F(NewInstance, EmptiesTheListOfNamesAfterAFailure) {
  serve({error_answer});
  const _properties_ none[] = {end_of_properties};
  entry().instanceNames = new CIMelement;
  entry().instances = new CIMelement;
  EXPECT_EQ(context_->Imethod_CreateInstance(none), 0);
  EXPECT_EQ(context_->ChkCimStatus(), 6);
  EXPECT_EQ(entry().instanceNames, nullptr);
  EXPECT_NE(entry().instances, nullptr);
}

TEST_F(NewInstance, LeavesTheListOfNamesWhenItsPropertiesAreRefused) {
  serve({created_answer});
  entry().instanceNames = new CIMelement;
  const _properties_ properties[] = {{"bad", 16, 1, "", nullptr}, end_of_properties};
  EXPECT_EQ(context_->Imethod_CreateInstance(properties), 0);
  EXPECT_EQ(context_->Imethod_CreateInstance(nullptr), 0);
  EXPECT_NE(entry().instanceNames, nullptr);
}

TEST_F(NewInstance, HasNoNameWhenTheAnswerHasNone) {
  serve({empty_answer});
  const _properties_ none[] = {end_of_properties};
  EXPECT_EQ(context_->Imethod_CreateInstance(none), 0);
  EXPECT_EQ(context_->ChkCimStatus(), 0);
  EXPECT_EQ(count_traces(trace_level::error,
                         "[127.0.0.2] ExtractInstanceNames() missing INSTANCENAME-subelement"),
            1);
}

TEST_F(NewInstance, MayHaveNoProperties) {
  serve({created_answer});
  const _properties_ none[] = {end_of_properties};
  EXPECT_NE(context_->Imethod_CreateInstance(none), 0);
  EXPECT_EQ(method(), "CreateInstance");
  EXPECT_EQ(parameters(),
            "<IPARAMVALUE NAME=\"NewInstance\">\n"
            "<INSTANCE CLASSNAME=\"CIM_A\">\n"
            "</INSTANCE>\n"
            "</IPARAMVALUE>\n");
}

TEST_F(NewInstance, NeedsAnArrayOfProperties) {
  serve({created_answer});
  ASSERT_EQ(context_->initCurlHandle(), 0);
  EXPECT_EQ(context_->Imethod_CreateInstance(nullptr), 0);
  expect_refusal("Imethod_CreateInstance() missing NewInstance definition");
}

TEST_F(NewInstance, NeedsACurrentClass) {
  serve({created_answer});
  context_->currentClass = nullptr;
  const _properties_ none[] = {end_of_properties};
  EXPECT_EQ(context_->Imethod_CreateInstance(none), 0);
  expect_refusal("addLocalNameSpacePath() missing parameter: ClassName/NameSpace");
}

TEST_F(NewInstance, RefusesUnknownTypes) {
  for (const std::uint32_t type : {16U, 17U, 0xFFU, 0x200U, 0x110U, 0x203U, 0x80000000U, ~0U})
    expect_bad_type(type);
}

// Every type but the two that have no text form, alone and as an array.
TEST_F(NewInstance, WritesEveryType) {
  const bool booleans[] = {true, false};
  const std::uint8_t uint8s[] = {0, 255};
  const std::int8_t sint8s[] = {127, -1};
  const std::uint16_t uint16s[] = {0, 65535};
  const std::int16_t sint16s[] = {-32768, 32767};
  const std::uint32_t uint32s[] = {0, 4294967295U};
  const std::int32_t sint32s[] = {-2147483647 - 1, 2147483647};
  const std::uint64_t uint64s[] = {0, 18446744073709551615ULL};
  const std::int64_t sint64s[] = {-9223372036854775807LL - 1, 9223372036854775807LL};
  const float real32s[] = {0.1F, -2.5F};
  const double real64s[] = {1e10, 123456789.0};
  const struct {
    std::uint32_t type;
    const void* values;
    std::string name, first, second;
  } cases[] = {
      {0, booleans, "boolean", "true", "false"},
      {1, "same", "string", "same", "same"},
      {2, "xy", "char16", "", ""},
      {3, uint8s, "uint8", "0", "255"},
      {4, sint8s, "sint8", "127", "4294967295"},
      {5, uint16s, "uint16", "0", "65535"},
      {6, sint16s, "sint16", "-32768", "32767"},
      {7, uint32s, "uint32", "0", "4294967295"},
      {8, sint32s, "sint32", "-2147483648", "2147483647"},
      {9, uint64s, "uint64", "0", "18446744073709551615"},
      {10, sint64s, "sint64", "-9223372036854775808", "9223372036854775807"},
      {11, "20200101000000.000000+000", "datetime", "", ""},
      {12, real32s, "real32", "0.1", "-2.5"},
      {13, real64s, "real64", "1e+10", "1.23457e+08"},
      {14, "any", "unknown", "", ""},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(sent_for(each.type, 1, each.values), "<PROPERTY NAME=\"p\" TYPE=\"" + each.name +
                                                       "\">\n<VALUE>" + each.first +
                                                       "</VALUE>\n</PROPERTY>\n");
    EXPECT_EQ(sent_for(each.type | array_of, 2, each.values),
              "<PROPERTY.ARRAY NAME=\"p\" TYPE=\"" + each.name + "\">\n<VALUE.ARRAY>\n<VALUE>" +
                  each.first + "</VALUE>\n<VALUE>" + each.second +
                  "</VALUE>\n</VALUE.ARRAY>\n</PROPERTY.ARRAY>\n");
  }
}

TEST_F(NewInstance, TracesTypesWithoutTextForm) {
  sent_for(type::datetime | array_of, 2, "20200101000000.000000+000");
  EXPECT_EQ(count_traces(trace_level::error, "ValueToString: Unknown type of value specified"), 2);
}

TEST_F(NewInstance, LeavesOutAPropertyWithNeitherValuesNorCount) {
  for (const std::uint32_t type : {1U, 7U, 15U, 1U | array_of, 7U | array_of, 15U | array_of})
    EXPECT_EQ(sent_for(type, 0, nullptr), "");
}

TEST_F(NewInstance, SendsAPropertyWithoutValueForACountAlone) {
  EXPECT_EQ(sent_for(type::uint32, 1, nullptr),
            "<PROPERTY NAME=\"p\" TYPE=\"uint32\">\n</PROPERTY>\n");
  EXPECT_EQ(sent_for(type::uint32, 3, nullptr),
            "<PROPERTY NAME=\"p\" TYPE=\"uint32\">\n</PROPERTY>\n");
  EXPECT_EQ(sent_for(type::uint32 | array_of, 3, nullptr),
            "<PROPERTY.ARRAY NAME=\"p\" TYPE=\"uint32\">\n<VALUE.ARRAY>\n</VALUE.ARRAY>\n"
            "</PROPERTY.ARRAY>\n");
}

TEST_F(NewInstance, SendsAPropertyWithoutValueForValuesWithoutCount) {
  const std::uint32_t number = 7;
  EXPECT_EQ(sent_for(type::uint32, 0, &number),
            "<PROPERTY NAME=\"p\" TYPE=\"uint32\">\n</PROPERTY>\n");
  EXPECT_EQ(sent_for(type::uint32 | array_of, 0, &number),
            "<PROPERTY.ARRAY NAME=\"p\" TYPE=\"uint32\">\n<VALUE.ARRAY>\n</VALUE.ARRAY>\n"
            "</PROPERTY.ARRAY>\n");
}

TEST_F(NewInstance, SendsOneValueWithoutTheArrayBit) {
  const std::uint32_t numbers[] = {1, 2, 3};
  EXPECT_EQ(sent_for(type::uint32, 3, numbers),
            "<PROPERTY NAME=\"p\" TYPE=\"uint32\">\n<VALUE>1</VALUE>\n</PROPERTY>\n");
}

TEST_F(NewInstance, SendsAnEmptyStringAsAnEmptyValue) {
  EXPECT_EQ(sent_for(type::string, 1, ""),
            "<PROPERTY NAME=\"p\" TYPE=\"string\">\n<VALUE></VALUE>\n</PROPERTY>\n");
}

TEST_F(NewInstance, SendsTextsAsTheyAre) {
  EXPECT_EQ(sent_for(type::string, 1, "a &lt; \"b\""),
            "<PROPERTY NAME=\"p\" TYPE=\"string\">\n<VALUE>a &lt; \"b\"</VALUE>\n</PROPERTY>\n");
}

TEST_F(NewInstance, SendsReferences) {
  Tree name(name_tree);
  EXPECT_EQ(sent_for({"p", type::reference, 1, "CIM_R", &name}),
            "<PROPERTY.REFERENCE NAME=\"p\" REFERENCECLASS=\"CIM_R\">\n<VALUE.REFERENCE>\n" +
                name_text + "</VALUE.REFERENCE>\n</PROPERTY.REFERENCE>\n");
  EXPECT_EQ(tree_text(&name), name_tree);
}

TEST_F(NewInstance, SendsOneReferenceWithoutTheArrayBit) {
  Tree name(name_tree);
  EXPECT_EQ(sent_for({"p", type::reference, 3, "CIM_R", &name}),
            sent_for({"p", type::reference, 1, "CIM_R", &name}));
}

TEST_F(NewInstance, RepeatsTheReferenceOfAnArray) {
  Tree name(name_tree);
  const std::string reference = "<VALUE.REFERENCE>\n" + name_text + "</VALUE.REFERENCE>\n";
  EXPECT_EQ(sent_for({"p", type::reference | array_of, 2, "CIM_R", &name}),
            "<PROPERTY.REFERENCE NAME=\"p\" REFERENCECLASS=\"CIM_R\">\n" + reference + reference +
                "</PROPERTY.REFERENCE>\n");
}

TEST_F(NewInstance, SendsNoReferenceWithoutItsClass) {
  Tree name(name_tree);
  EXPECT_EQ(sent_for({"p", type::reference, 1, nullptr, &name}),
            "<PROPERTY.REFERENCE NAME=\"p\">\n</PROPERTY.REFERENCE>\n");
}

TEST_F(NewInstance, SendsNoReferenceWithoutACount) {
  Tree name(name_tree);
  EXPECT_EQ(sent_for({"p", type::reference, 0, "CIM_R", &name}),
            "<PROPERTY.REFERENCE NAME=\"p\" REFERENCECLASS=\"CIM_R\">\n</PROPERTY.REFERENCE>\n");
}

TEST_F(NewInstance, SendsAReferenceWithoutATreeEmpty) {
  EXPECT_EQ(sent_for({"p", type::reference, 1, "CIM_R", nullptr}),
            "<PROPERTY.REFERENCE NAME=\"p\" REFERENCECLASS=\"CIM_R\">\n<VALUE.REFERENCE>\n"
            "</VALUE.REFERENCE>\n</PROPERTY.REFERENCE>\n");
  EXPECT_EQ(recorder_.count(trace_level::error, "Src/CIMXMLparser", "GenerateCIMXML: this = NULL"),
            1);
}

TEST_F(NewInstance, RefusesAReferenceThatCannotBeWritten) {
  serve({created_answer});
  Tree name("INSTANCENAME CLASSNAME=CIM_A\n");
  break_tree(name);
  const _properties_ properties[] = {{"p", type::reference, 1, "CIM_R", &name}, end_of_properties};
  EXPECT_EQ(context_->Imethod_CreateInstance(properties), 0);
  expect_refusal("Imethod_CreateInstance() bad CIMelement: reference");
}

TEST_F(NewInstance, TakesAReferenceFromTheListOfNames) {
  serve({created_answer});
  entry().instanceNames = new CIMelement;
  build_tree(*entry().instanceNames, "CIM\n INSTANCENAME CLASSNAME=CIM_B\n");
  const _properties_ properties[] = {
      {"p", type::reference, 1, "CIM_B", entry().instanceNames->next}, end_of_properties};
  EXPECT_NE(context_->Imethod_CreateInstance(properties), 0);
  EXPECT_NE(parameters().find("<INSTANCENAME CLASSNAME=\"CIM_B\"/>"), std::string::npos);
}

TEST_F(NewInstance, KeepsTheOrderOfItsProperties) {
  serve({created_answer});
  const bool yes = true;
  const _properties_ properties[] = {{"z", type::boolean, 1, &yes, nullptr},
                                     {"skipped", type::boolean, 0, nullptr, nullptr},
                                     {"a", type::boolean, 1, nullptr, nullptr},
                                     end_of_properties,
                                     {"behind", type::boolean, 1, &yes, nullptr}};
  context_->Imethod_CreateInstance(properties);
  EXPECT_EQ(between("<INSTANCE CLASSNAME=\"CIM_A\">\n", "</INSTANCE>\n", 0),
            "<PROPERTY NAME=\"z\" TYPE=\"boolean\">\n<VALUE>true</VALUE>\n</PROPERTY>\n"
            "<PROPERTY NAME=\"a\" TYPE=\"boolean\">\n</PROPERTY>\n");
}

}  // namespace
