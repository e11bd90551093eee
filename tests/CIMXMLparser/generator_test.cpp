#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "support/failing_allocator.h"
#include "support/trace_recorder.h"
#include "zuCIM.h"

namespace {

using zuCIM::CIMelement;
using zuCIM::known_cim_elements;
namespace elem = zuCIM::elem;
namespace attr = zuCIM::attr;

CIMelement* add(CIMelement& parent, int kind, const char* value = nullptr) {
  CIMelement* node = parent.makeNextElement();
  node->name = known_cim_elements[kind];
  if (value != nullptr) node->value = strdup(value);
  return node;
}

struct Generated {
  explicit Generated(CIMelement* node, const std::string& before = "") : text(before) {
    status = node->GenerateCIMXML(text);
  }
  std::string text;
  unsigned status;
};

TEST(GenerateCimXml, ALeafWithAnAttributeIsOneLine) {
  CIMelement name;
  add(name, elem::INSTANCENAME)->attr_put(attr::CLASSNAME, "CIM_Fan");
  const Generated generated(&name);
  EXPECT_EQ(generated.status, 0U);
  EXPECT_EQ(generated.text, "<INSTANCENAME CLASSNAME=\"CIM_Fan\"/>\n");
}

TEST(GenerateCimXml, AKeybindingWithItsValueIsThreeLines) {
  CIMelement binding;
  add(binding, elem::KEYBINDING)->attr_put(attr::NAME, "Id");
  add(binding, elem::KEYVALUE, "7");
  EXPECT_EQ(Generated(&binding).text,
            "<KEYBINDING NAME=\"Id\">\n<KEYVALUE>7</KEYVALUE>\n</KEYBINDING>\n");
}

TEST(GenerateCimXml, TheCimRootReplacesTheTextAndAnyOtherNodeAppends) {
  CIMelement cim;
  add(cim, elem::CIM)->attr_put(attr::CIMVERSION, "2.0");
  CIMelement* value = add(cim, elem::VALUE, "a");
  EXPECT_EQ(Generated(&cim, "old").text,
            "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n<CIM CIMVERSION=\"2.0\">\n"
            "<VALUE>a</VALUE>\n</CIM>\n");
  EXPECT_EQ(Generated(value, "old").text, "old<VALUE>a</VALUE>\n");
}

TEST(GenerateCimXml, OnlyTheSubtreeIsWritten) {
  CIMelement cim;
  add(cim, elem::CIM);
  CIMelement* first = add(cim, elem::KEYBINDING);
  add(*first, elem::KEYVALUE, "1");
  add(cim, elem::VALUE, "2");
  EXPECT_EQ(Generated(first).text, "<KEYBINDING>\n<KEYVALUE>1</KEYVALUE>\n</KEYBINDING>\n");
}

TEST(GenerateCimXml, DeepEndsAreClosedInOrder) {
  CIMelement cim;
  add(cim, elem::CIM);
  CIMelement* message = add(cim, elem::MESSAGE);
  CIMelement* response = add(*message, elem::SIMPLERSP);
  add(*response, elem::VALUE);
  add(*message, elem::CLASS);
  EXPECT_EQ(Generated(message).text,
            "<MESSAGE>\n<SIMPLERSP>\n<VALUE/>\n</SIMPLERSP>\n<CLASS/>\n</MESSAGE>\n");
}

TEST(GenerateCimXml, TheLastChildBeforeAnElementTwoLevelsUpClosesItsParent) {
  CIMelement cim;
  add(cim, elem::CIM);
  CIMelement* message = add(cim, elem::MESSAGE);
  CIMelement* value = add(*message, elem::VALUE, "1");
  add(cim, elem::CLASS);
  EXPECT_EQ(Generated(value).text, "<VALUE>1</VALUE>\n</MESSAGE>\n");
}

TEST(GenerateCimXml, ANodeBeforeAnElementThreeLevelsUpRunsOnAndClosesForeignAncestors) {
  CIMelement cim;
  add(cim, elem::CIM);
  CIMelement* message = add(cim, elem::MESSAGE);
  CIMelement* response = add(*message, elem::SIMPLERSP);
  CIMelement* value = add(*response, elem::VALUE, "1");
  add(cim, elem::CLASS);
  EXPECT_EQ(Generated(value).text,
            "<VALUE>1</VALUE>\n</SIMPLERSP>\n</MESSAGE>\n<CLASS/>\n</CIM>\n");
}

TEST(GenerateCimXml, ANodeWithChildrenLosesItsOwnText) {
  TraceRecorder traces;
  CIMelement array;
  add(array, elem::VALUE_ARRAY, "lost");
  add(array, elem::VALUE, "kept");
  const Generated generated(&array);
  EXPECT_EQ(generated.status, 0U);
  EXPECT_EQ(generated.text, "<VALUE.ARRAY>\n<VALUE>kept</VALUE>\n</VALUE.ARRAY>\n");
  EXPECT_EQ(
      traces.count(0x40000000, "Src/CIMXMLparser", "GenerateCIMXML: (#PCDATA) not allowed here!"),
      1);
}

TEST(GenerateCimXml, AttributesEndAtTheFirstUnknownOne) {
  CIMelement property;
  add(property, elem::PROPERTY)->attr_put(attr::NAME, "a");
  property.attr_put(attr::UNKNOWN, "b");
  property.attr_put(attr::TYPE, "string");
  EXPECT_EQ(Generated(&property).text, "<PROPERTY NAME=\"a\"/>\n");
}

TEST(GenerateCimXml, TextsAreNotEscaped) {
  CIMelement value;
  add(value, elem::VALUE, "a & <b> \"c\"")->attr_put(attr::NAME, "x&\"y");
  EXPECT_EQ(Generated(&value).text, "<VALUE NAME=\"x&\"y\">a & <b> \"c\"</VALUE>\n");
}

TEST(GenerateCimXml, AnEmptyTextIsStillWrittenWithAnEndTag) {
  CIMelement value;
  add(value, elem::VALUE, "");
  EXPECT_EQ(Generated(&value).text, "<VALUE></VALUE>\n");
}

TEST(GenerateCimXml, ANullElementIsTracedAndFails) {
  TraceRecorder traces;
  CIMelement* none = nullptr;
  const Generated generated(none, "kept");
  EXPECT_EQ(generated.status, 1001U);
  EXPECT_EQ(generated.text, "kept");
  EXPECT_EQ(traces.count(0x40000000, "Src/CIMXMLparser", "GenerateCIMXML: this = NULL"), 1);
}

TEST(GenerateCimXml, AForeignParentIsBadDataAndKeepsWhatWasWritten) {
  TraceRecorder traces;
  CIMelement stranger;
  CIMelement name;
  add(name, elem::INSTANCENAME);
  CIMelement* first = add(name, elem::KEYBINDING);
  CIMelement* second = add(*first, elem::KEYVALUE, "1");
  CIMelement* third = add(name, elem::VALUE);
  third->parent = &stranger;
  const Generated generated(&name, "old");
  EXPECT_EQ(generated.status, 1001U);
  EXPECT_EQ(generated.text,
            "old<INSTANCENAME>\n<KEYBINDING>\n<KEYVALUE>1</KEYVALUE>\n</KEYBINDING>\n"
            "</INSTANCENAME>\n");
  EXPECT_EQ(
      traces.count(0x40000000, "Src/CIMXMLparser", "GenerateCIMXML: bad data in CIMelement found!"),
      1);
  EXPECT_NE(second, nullptr);
}

TEST(GenerateCimXml, WhatWasGeneratedParsesToTheSameText) {
  CIMelement cim;
  add(cim, elem::CIM)->attr_put(attr::CIMVERSION, "2.0");
  CIMelement* name = add(cim, elem::INSTANCENAME);
  name->attr_put(attr::CLASSNAME, "CIM_Fan");
  add(*add(*name, elem::KEYBINDING), elem::KEYVALUE, "1");
  const Generated first(&cim);
  CIMelement parsed;
  ASSERT_EQ(parsed.ParseCIMXML(first.text), 0U);
  EXPECT_EQ(Generated(&parsed).text, first.text);
}

TEST(GenerateCimXml, AMillionNestedElementsAreWritten) {
  const int depth = malloc_can_fail ? 1000000 : 50000;  // Sanitizers are slow.
  std::string text = "<?xml version=\"1.0\" ?><CIM A=\"\">";
  for (int i = 0; i < depth; ++i) text += "<VALUE>";
  for (int i = 0; i < depth; ++i) text += "</VALUE>";
  auto root = std::make_unique<CIMelement>();
  ASSERT_EQ(root->ParseCIMXML(text + "</CIM>"), 0U);
  const Generated generated(root.get());
  EXPECT_EQ(generated.status, 0U);
  EXPECT_EQ(generated.text.size(), 41U + 5U + 7U + 17U * (depth - 1) + 9U);
}

}  // namespace
