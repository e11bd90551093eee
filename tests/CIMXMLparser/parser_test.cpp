#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "CIMXMLparser/attribute_list.h"
#include "support/failing_allocator.h"
#include "support/trace_recorder.h"
#include "zuCIM.h"

namespace {

using zuCIM::CIMelement;
using zuCIM::known_cim_elements;
namespace elem = zuCIM::elem;
namespace attr = zuCIM::attr;

const std::string declaration = "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n";

std::string document(const std::string& content) {
  return declaration + "<CIM CIMVERSION=\"2.0\">" + content + "</CIM>\n";
}

struct Parsed {
  explicit Parsed(const std::string& text) : status(root->ParseCIMXML(text)) {}

  CIMelement* find(int kind) const { return root->findelement(kind, 0); }

  std::unique_ptr<CIMelement> root = std::make_unique<CIMelement>();
  unsigned status;
};

std::string value_of(const CIMelement* node) {
  return node == nullptr ? "(no node)" : node->value == nullptr ? "(null)" : node->value;
}

TEST(ParseCimXml, AListingBecomesATreeInDocumentOrder) {
  const Parsed parsed(
      document("<INSTANCENAME CLASSNAME=\"CIM_Fan\">\n<KEYBINDING NAME=\"Id\">\n"
               "<KEYVALUE VALUETYPE=\"string\">7</KEYVALUE>\n</KEYBINDING>\n"
               "</INSTANCENAME>\n"));
  ASSERT_EQ(parsed.status, 0U);
  const CIMelement* cim = parsed.root.get();
  EXPECT_EQ(cim->name, known_cim_elements[elem::CIM]);
  EXPECT_EQ(cim->parent, nullptr);
  const CIMelement* instance_name = cim->next;
  ASSERT_NE(instance_name, nullptr);
  EXPECT_EQ(instance_name->name, known_cim_elements[elem::INSTANCENAME]);
  EXPECT_EQ(instance_name->parent, cim);
  const CIMelement* binding = instance_name->next;
  ASSERT_NE(binding, nullptr);
  EXPECT_EQ(binding->name, known_cim_elements[elem::KEYBINDING]);
  EXPECT_EQ(binding->parent, instance_name);
  const CIMelement* value = binding->next;
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->parent, binding);
  EXPECT_STREQ(value->value, "7");
  EXPECT_EQ(value->next, nullptr);
}

TEST(ParseCimXml, AttributesKeepTheirOrderAndTheirArraysHaveNoSlack) {
  const Parsed parsed(document("<PROPERTY NAME=\"a\"  TYPE=\"string\" \n CLASSORIGIN=\"X\" />"));
  ASSERT_EQ(parsed.status, 0U);
  CIMelement* property = parsed.find(elem::PROPERTY);
  ASSERT_NE(property, nullptr);
  char* text = nullptr;
  EXPECT_EQ(property->attr_get(0, &text), attr::NAME);
  EXPECT_STREQ(text, "a");
  EXPECT_EQ(property->attr_get(1, &text), attr::TYPE);
  EXPECT_EQ(property->attr_get(2, &text), attr::CLASSORIGIN);
  EXPECT_STREQ(text, "X");
  EXPECT_EQ(property->attributes->argc, 3U);
  EXPECT_EQ(property->attributes->maxargc, 3U);
  EXPECT_EQ(property->value, nullptr);
}

struct ValueCase {
  const char* title;
  const char* content;
  const char* value;
};

class ValueText : public ::testing::TestWithParam<ValueCase> {};

TEST_P(ValueText, IsStoredAsItStands) {
  TraceRecorder traces;
  const Parsed parsed(document(GetParam().content));
  EXPECT_EQ(parsed.status, 0U);
  EXPECT_EQ(value_of(parsed.find(elem::VALUE)), GetParam().value);
  EXPECT_TRUE(traces.texts().empty());
}

INSTANTIATE_TEST_SUITE_P(
    ParseCimXml, ValueText,
    ::testing::Values(
        ValueCase{"leading blanks go, trailing ones stay", "<VALUE> abc </VALUE>", "abc "},
        ValueCase{"references stay", "<VALUE>a &amp; b &#228;</VALUE>", "a &amp; b &#228;"},
        ValueCase{"blanks only", "<VALUE> \n\t </VALUE>", "(null)"},
        ValueCase{"no content", "<VALUE></VALUE>", "(null)"},
        ValueCase{"closed at once", "<VALUE/>", "(null)"},
        ValueCase{"closed after a blank", "<VALUE />", "(null)"},
        ValueCase{"leading umlaut", "<VALUE>\xc3\xa4\xc3\xb6rger \xc3\xa4</VALUE>",
                  "rger \xc3\xa4"},
        ValueCase{"balanced quotes", "<VALUE>say \"hi</VALUE>\" now</VALUE>",
                  "say \"hi</VALUE>\" now"},
        ValueCase{"pair of apostrophes", "<VALUE>it''s</VALUE>", "it''s"},
        ValueCase{"two apostrophes hide what is between", "<VALUE>it's </VALUE> it's</VALUE>",
                  "it's </VALUE> it's"},
        ValueCase{"text before elements", "<VALUE>a<CLASS></CLASS>b</VALUE>", "a<CLASS></CLASS>b"},
        ValueCase{"nested look-alike in text", "<VALUE>a<VALUE >b</VALUE>c</VALUE>",
                  "a<VALUE >b</VALUE>c"},
        ValueCase{"comment in text", "<VALUE>a<!-- it's </VALUE> -->b</VALUE>",
                  "a<!-- it's </VALUE> -->b"},
        ValueCase{"character data is dropped", "<VALUE><![CDATA[abc]]></VALUE>", "(null)"},
        ValueCase{"comment is dropped", "<VALUE><!-- abc --></VALUE>", "(null)"}),
    [](const auto& test) { return "Case" + std::to_string(test.index); });

struct BrokenCase {
  const char* content;
  unsigned level;
  const char* message;
};

class BrokenMessage : public ::testing::TestWithParam<BrokenCase> {};

TEST_P(BrokenMessage, EndsTheParseWithOneTrace) {
  TraceRecorder traces;
  const Parsed parsed(declaration + "<CIM >" + GetParam().content);
  EXPECT_EQ(parsed.status, 1001U);
  EXPECT_EQ(traces.count(GetParam().level, "Src/CIMXMLparser", GetParam().message), 1)
      << ::testing::PrintToString(traces.texts());
  EXPECT_EQ(traces.texts().size(), 1U);
}

constexpr unsigned error_level = 0x40000000;

INSTANTIATE_TEST_SUITE_P(
    ParseCimXml, BrokenMessage,
    ::testing::Values(
        BrokenCase{"<VALUE><!-- x</VALUE></CIM>", 4,
                   "findNextElement: Missing correspending keyword </CIM>"},
        BrokenCase{"<VALUE></VALUE></CIM><!-- x", error_level, "findNextElement: missing '-->'"},
        BrokenCase{"<VALUE></VALUE></CIM><![CDATA[ x", error_level,
                   "findNextElement: missing ']]>'"},
        BrokenCase{"<VALUE></VALUE>text</CIM>", error_level,
                   "findNextElement: missing '<' sign at begin."},
        BrokenCase{"<VALUE></VALUE>x!</CIM>", error_level,
                   "findNextElement: missing '<' sign at begin."},
        BrokenCase{"</CIM> x", error_level, "findNextElement: missing '<' sign at begin."},
        BrokenCase{"<value>x</value></CIM>", error_level,
                   "findNextElement: Unknown CIM Elementname"},
        BrokenCase{"<unknown/></CIM>", error_level, "findNextElement: Unknown CIM Elementname"},
        BrokenCase{
            "<VALUEVALUEVALUEVALUEVALUEVALUEVALUEVALUEVALUEVALUEVALUEVALUEVALUEVALUE/></CIM>",
            error_level, "findNextElement: Unknown CIM Elementname"},
        BrokenCase{"<!DOCTYPE a></CIM>", error_level, "findNextElement: Unknown CIM Elementname"},
        BrokenCase{"<![CDATA[a]]><!-- b --></CIM>", error_level,
                   "findNextElement: Unknown CIM Elementname"},
        BrokenCase{"<VALUE NAME=\"a\"</CIM>", error_level,
                   "findNextElement: missing according '>' sign!"},
        BrokenCase{"<VALUE>x</CIM>", 4, "findNextElement: Missing correspending keyword </VALUE>"},
        BrokenCase{"<VALUE>x</VALUE >y</CIM>", 4,
                   "findNextElement: Missing correspending keyword </VALUE>"},
        BrokenCase{"<VALUE>it's</VALUE></CIM>", 4,
                   "findNextElement: Missing correspending keyword </CIM>"},
        BrokenCase{"<VALUE>6\" wide</VALUE></CIM>", 4,
                   "findNextElement: Missing correspending keyword </CIM>"},
        BrokenCase{"<INSTANCENAME ><INSTANCENAME /></INSTANCENAME></CIM>", 4,
                   "findNextElement: Missing correspending keyword </INSTANCENAME>"},
        BrokenCase{"<CLASS ><CLASS\n></CLASS></CLASS></CIM>", 4,
                   "findNextElement: Missing correspending keyword </CLASS>"},
        BrokenCase{"<CLASS><VALUE></CLASS></VALUE></CIM>", 4,
                   "findNextElement: Missing correspending keyword </VALUE>"}),
    [](const auto& test) { return "Case" + std::to_string(test.index); });

struct WarningCase {
  const char* tag;
  const char* message;
};

class BadAttribute : public ::testing::TestWithParam<WarningCase> {};

TEST_P(BadAttribute, IsTracedAndEndsTheListButNotTheParse) {
  TraceRecorder traces;
  const Parsed parsed(document(GetParam().tag + std::string("<CLASS/>")));
  EXPECT_EQ(parsed.status, 0U);
  EXPECT_EQ(traces.count(zuCIM::trace_level::warning, "Src/CIMXMLparser", GetParam().message), 1)
      << ::testing::PrintToString(traces.texts());
  EXPECT_EQ(traces.texts().size(), 1U);
  EXPECT_NE(parsed.find(elem::CLASS), nullptr);
  EXPECT_EQ(parsed.find(elem::VALUE)->attr_find(attr::CLASSNAME), nullptr);
}

INSTANTIATE_TEST_SUITE_P(ParseCimXml, BadAttribute,
                         ::testing::Values(WarningCase{"<VALUE NAME=\"a\" rest/>",
                                                       "ParseAttribute: missing '='"},
                                           WarningCase{"<VALUE //>", "ParseAttribute: missing '='"},
                                           WarningCase{"<VALUE TYPE=a CLASSNAME=\"b\"/>",
                                                       "ParseAttribute: 1. missing '\"'"},
                                           WarningCase{"<VALUE TYPE='a' CLASSNAME=\"b\"/>",
                                                       "ParseAttribute: 1. missing '\"'"}),
                         [](const auto& test) { return "Case" + std::to_string(test.index); });

// The search for the end of a tag already asks for closed quotes, so only the list itself can meet
// a value that is never closed.
TEST(ParseAttributeList, AValueThatIsNeverClosedIsTracedAndEndsTheList) {
  TraceRecorder traces;
  CIMelement node;
  zuCIM::codec::TreeBuilder builder(node, "");
  EXPECT_TRUE(zuCIM::codec::parse_attribute_list("TYPE=\"x\" NAME=\"a", node, builder));
  EXPECT_EQ(traces.count(4, "Src/CIMXMLparser", "ParseAttribute: 2. missing '\"'"), 1);
  EXPECT_STREQ(node.attr_find(attr::TYPE), "x");
  EXPECT_EQ(node.attr_find(attr::NAME), nullptr);
}

TEST(ParseCimXml, AnUnknownAttributeIsTracedAndKept) {
  TraceRecorder traces;
  const Parsed parsed(document("<PROPERTY Name=\"a\" TYPE=\"string\"/>"));
  EXPECT_EQ(parsed.status, 0U);
  EXPECT_EQ(traces.count(4, "Src/CIMXMLparser", "ParseAttribute: unknown CIM Attribute: Name"), 1);
  CIMelement* property = parsed.find(elem::PROPERTY);
  EXPECT_STREQ(property->attr_find(attr::UNKNOWN), "a");
  EXPECT_STREQ(property->attr_find(attr::TYPE), "string");
}

TEST(ParseCimXml, EveryElementNameIsKnown) {
  for (int id = 1; id < elem::UNKNOWN; ++id) {
    const std::string name = known_cim_elements[id];
    const Parsed parsed(document("<" + name + "/><" + name + " NAME=\"a\"></" + name + ">"));
    EXPECT_EQ(parsed.status, 0U) << name;
    const CIMelement* first = parsed.root->next;
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->name, known_cim_elements[id]);
  }
}

TEST(ParseCimXml, EveryAttributeNameIsKnown) {
  for (int id = 0; id < attr::UNKNOWN; ++id) {
    TraceRecorder traces;
    const Parsed parsed(
        document(std::string("<VALUE ") + zuCIM::known_cim_attributes[id] + "=\"a\"/>"));
    EXPECT_STREQ(parsed.find(elem::VALUE)->attr_find(id), "a") << id;
    EXPECT_TRUE(traces.texts().empty());
  }
}

TEST(ParseCimXml, TheNameUnknownAndALowerCaseNameAreUnknown) {
  for (const std::string name : {"unknown", "name"}) {
    TraceRecorder traces;
    const Parsed parsed(document("<VALUE " + name + "=\"a\"/>"));
    EXPECT_STREQ(parsed.find(elem::VALUE)->attr_find(attr::UNKNOWN), "a");
    EXPECT_EQ(parsed.find(elem::VALUE)->attr_find(attr::NAME), nullptr);
    EXPECT_EQ(traces.count(4, "Src/CIMXMLparser", "ParseAttribute: unknown CIM Attribute: " + name),
              1);
  }
}

TEST(ParseCimXml, AnInnerDeclarationIsAnEmptyElement) {
  const Parsed parsed(document("<?xml NAME=\"a\"?><VALUE>1</VALUE>"));
  EXPECT_EQ(parsed.status, 0U);
  const CIMelement* inner = parsed.root->next;
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(inner->name, known_cim_elements[elem::XML_DECLARATION]);
  EXPECT_EQ(inner->attributes->argc, 1U);
  EXPECT_EQ(value_of(inner->next), "1");
}

TEST(ParseCimXml, CommentsThenCharacterDataMayStandBeforeAnElement) {
  const Parsed parsed(document("<!-- a --> <!-- b --><![CDATA[c]]> <![CDATA[d]]><VALUE>1</VALUE>"));
  EXPECT_EQ(parsed.status, 0U);
  EXPECT_EQ(value_of(parsed.find(elem::VALUE)), "1");
}

TEST(ParseCimXml, ACommentDoesNotEndWithItsOwnOpening) {
  EXPECT_EQ(Parsed(document("<!--><VALUE>1</VALUE>")).status, 1001U);
  EXPECT_EQ(Parsed(document("<!--><VALUE>1</VALUE>-->")).status, 0U);
  EXPECT_EQ(Parsed(document("<!----><VALUE>1</VALUE>")).status, 0U);
}

TEST(ParseCimXml, TextBehindACommentIsNoElement) {
  EXPECT_EQ(Parsed(document("<VALUE><!-- c -->abc</VALUE>")).status, 1001U);
}

TEST(ParseCimXml, AfterAnErrorTheRootHoldsWhatWasBuiltBeforeIt) {
  const Parsed parsed(document("<CLASS NAME=\"a\"><VALUE>1</VALUE><unknown/></CLASS>"));
  EXPECT_EQ(parsed.status, 1001U);
  EXPECT_EQ(parsed.root->name, known_cim_elements[elem::CIM]);
  EXPECT_NE(parsed.find(elem::CLASS), nullptr);
  EXPECT_EQ(value_of(parsed.find(elem::VALUE)), "1");
}

TEST(ParseCimXml, DifferentRootsMayBeParsedByDifferentThreads) {
  const std::string text = document("<VALUE NAME=\"a\">1</VALUE><!-- exact -->");
  std::vector<std::thread> threads;
  std::atomic<int> complete{0};
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      for (int round = 0; round < 100; ++round) complete += Parsed(text).status == 0 ? 1 : 0;
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(complete, 400);
}

TEST(ParseCimXml, ABlankBeforeTheEqualsSignBelongsToTheName) {
  TraceRecorder traces;
  const Parsed parsed(document("<PROPERTY NAME =\"a\"/>"));
  EXPECT_EQ(traces.count(4, "Src/CIMXMLparser", "ParseAttribute: unknown CIM Attribute: NAME "), 1);
  EXPECT_EQ(parsed.find(elem::PROPERTY)->attr_find(attr::NAME), nullptr);
}

TEST(ParseCimXml, EmbeddedObjectIsKnownInAnyCase) {
  for (const char* name : {"EmbeddedObject", "EMBEDDEDOBJECT", "embeddedobject"}) {
    TraceRecorder traces;
    const Parsed parsed(document(std::string("<PROPERTY ") + name + "=\"object\"/>"));
    EXPECT_STREQ(parsed.find(elem::PROPERTY)->attr_find(32), "object") << name;
    EXPECT_TRUE(traces.texts().empty());
  }
}

TEST(ParseCimXml, AKeyvalueClosedAtOnceKeepsItsAttribute) {
  for (const char* tag :
       {"<KEYVALUE VALUETYPE=\"string\"/>", "<KEYVALUE VALUETYPE=\"string\" />"}) {
    const Parsed parsed(document(tag));
    ASSERT_EQ(parsed.status, 0U);
    CIMelement* value = parsed.find(elem::KEYVALUE);
    EXPECT_EQ(value->value, nullptr);
    EXPECT_EQ(value->attributes->argc, 1U);
  }
}

TEST(ParseCimXml, AQuotedTagEndDoesNotEndTheTag) {
  const Parsed parsed(
      document("<PROPERTY NAME=\"a>b</CIM>'\" TYPE=\"\"><VALUE>1</VALUE></PROPERTY>"));
  ASSERT_EQ(parsed.status, 0U);
  EXPECT_STREQ(parsed.find(elem::PROPERTY)->attr_find(attr::NAME), "a>b</CIM>'");
  EXPECT_STREQ(parsed.find(elem::PROPERTY)->attr_find(attr::TYPE), "");
}

TEST(ParseCimXml, NestedElementsOfOneNameEndAtTheirOwnTags) {
  const Parsed parsed(document(
      "<INSTANCENAME CLASSNAME=\"a\"><KEYBINDING NAME=\"r\"><VALUE.REFERENCE><INSTANCENAME "
      "CLASSNAME=\"b\"></INSTANCENAME></VALUE.REFERENCE></KEYBINDING></INSTANCENAME>"
      "<INSTANCENAME CLASSNAME=\"c\"/>"));
  ASSERT_EQ(parsed.status, 0U);
  CIMelement* second = parsed.root->findelement(elem::INSTANCENAME, 1);
  ASSERT_NE(second, nullptr);
  EXPECT_STREQ(second->attr_find(attr::CLASSNAME), "c");
  EXPECT_EQ(second->parent, parsed.root.get());
}

struct RefusedCase {
  const char* title;
  std::string text;
};

TEST(ParseCimXml, ATextWithoutDeclarationOrCimTagGivesAnEmptyRoot) {
  const RefusedCase cases[] = {
      {"nothing", ""},
      {"no declaration", "<CIM A=\"\"></CIM>"},
      {"line break behind the target", "<?xml\nversion=\"1.0\"?><CIM A=\"\"></CIM>"},
      {"no CIM tag", declaration + "<MESSAGE ></MESSAGE>"},
      {"CIM tag without a blank", declaration + "<CIM></CIM>"},
      {"CIM tag before the declaration", "<CIM ></CIM>" + declaration},
      {"CIM tag in a comment", declaration + "<!-- <CIM > --></CIM>"},
      {"stray quote in front", "'" + document("")},
      {"HTML", "<html><body>Not found</body></html>"},
      {"NUL in front", std::string(1, '\0') + document("")}};
  for (const RefusedCase& refused : cases) {
    const Parsed parsed(refused.text);
    EXPECT_EQ(parsed.status, 1001U) << refused.title;
    EXPECT_EQ(parsed.root->name, nullptr) << refused.title;
    EXPECT_EQ(parsed.root->next, nullptr) << refused.title;
  }
}

TEST(ParseCimXml, WhatFollowsTheCimElementDecides) {
  const struct {
    const char* tail;
    unsigned status;
  } cases[] = {{"", 0U},
               {" \n\t\xc3\xa4", 0U},
               {"x", 1001U},
               {"<!-- x -->", 1001U},
               {"<VALUE/>", 1001U},
               {"<VALUE></VALUE>", 1001U},
               {"<CIM ></CIM>", 0U}};
  for (const auto& one : cases)
    EXPECT_EQ(Parsed(declaration + "<CIM ></CIM>" + one.tail).status, one.status) << one.tail;
}

TEST(ParseCimXml, TheTextEndsAtItsFirstNul) {
  EXPECT_EQ(Parsed(document("") + std::string(1, '\0') + "junk").status, 0U);
  EXPECT_EQ(Parsed(document(std::string("<VALUE>a") + '\0' + "b</VALUE>")).status, 1001U);
}

TEST(ParseCimXml, ThePreviousTreeIsGoneEvenWhenParsingFails) {
  CIMelement root;
  ASSERT_EQ(root.ParseCIMXML(document("<VALUE>a</VALUE>")), 0U);
  EXPECT_EQ(root.ParseCIMXML("nonsense"), 1001U);
  EXPECT_EQ(root.name, nullptr);
  EXPECT_EQ(root.next, nullptr);
}

TEST(ParseCimXml, ATreeDoesNotReferToItsText) {
  auto text = std::make_unique<std::string>(document("<VALUE NAME=\"n\">abcdefghijklmnop</VALUE>"));
  const Parsed parsed(*text);
  text.reset();
  EXPECT_EQ(value_of(parsed.find(elem::VALUE)), "abcdefghijklmnop");
}

TEST(ParseCimXml, ANullElementIsAFailure) {
  CIMelement* none = nullptr;
  EXPECT_EQ(none->ParseCIMXML(document("")), 1001U);
}

std::string repeated(const std::string& text, int count) {
  std::string result;
  result.reserve(text.size() * static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

struct LargeCase {
  const char* title;
  std::string content;
  unsigned status;
};

// Each of these would take hours or the whole stack if the cost grew with depth or width.
TEST(ParseCimXml, AMillionElementsAreParsedOnAnyDepthAndWidth) {
  const int million = malloc_can_fail ? 1000000 : 50000;  // Sanitizers are slow.
  const LargeCase cases[] = {
      {"deep", repeated("<VALUE>", million) + repeated("</VALUE>", million), 0U},
      {"wide", repeated("<VALUE>a</VALUE>", million), 0U},
      {"deep behind a comment",
       "<!-- x -->" + repeated("<VALUE>", million) + repeated("</VALUE>", million), 0U},
      {"deep without ends", repeated("<VALUE>", million), 1001U},
      {"empty look-alikes", repeated("<VALUE >", million / 2) + repeated("<VALUE />", million / 2),
       1001U},
      {"stray quotes", repeated("<VALUE>'</VALUE>", million), 0U},
      {"comments", repeated("<!-- <VALUE> -->", million / 4), 0U},
      {"character data with quotes", repeated("<CLASS><![CDATA['']]></CLASS>", million / 4), 0U},
      {"character data with stray quotes", repeated("<CLASS><![CDATA[']]></CLASS>", million / 4),
       1001U},
      {"only opening brackets", repeated("<", million), 1001U},
      {"tags without an end", repeated("<VALUE", million), 1001U},
      {"brackets behind a tag", "<VALUE/>" + repeated("<a", million), 1001U},
      {"brackets in a tag", "<VALUE " + repeated("<a", million) + "/>", 0U},
      {"many attributes", "<VALUE " + repeated("NAME=\"a\" ", million / 4) + "/>", 0U},
      {"long name", "<" + repeated("A", million) + "/>", 1001U},
      {"quotes", "<!-- --><VALUE>" + repeated("\"\"''", million) + "</VALUE>", 0U},
      {"only openings of comments", repeated("<!--", million / 4), 1001U}};
  for (const LargeCase& large : cases)
    EXPECT_EQ(Parsed(document(large.content)).status, large.status) << large.title;
}

}  // namespace
