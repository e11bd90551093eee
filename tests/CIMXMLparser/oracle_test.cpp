#include <gtest/gtest.h>

#include <random>

#include "support/markup_pieces.h"
#include "support/plain_parser.h"
#include "support/trace_recorder.h"
#include "zuCIM.h"

namespace {

void expect_the_same(const std::string& text, TraceRecorder& traces) {
  traces.clear();
  zuCIM::CIMelement actual;
  zuCIM::CIMelement expected;
  std::vector<PlainMessage> messages;
  const unsigned status = actual.ParseCIMXML(text);
  ASSERT_EQ(status, plain_parse(text, expected, messages)) << text;
  std::vector<PlainMessage> traced;
  for (const RecordedLine& line : traces.lines())
    if (line.source == "Src/CIMXMLparser") traced.push_back({line.level, line.text});
  ASSERT_EQ(traced.size(), messages.size()) << text;
  for (std::size_t i = 0; i < traced.size(); ++i) {
    ASSERT_EQ(traced[i].text, messages[i].text) << text;
    ASSERT_EQ(traced[i].level, messages[i].level) << text;
  }
  ASSERT_EQ(tree_difference(actual, expected), "") << text;
}

TEST(ParserOracle, RandomSequencesOfMarkupAreParsedAsThePlainParserDoes) {
  TraceRecorder traces;
  std::mt19937 random(20240607);
  for (int round = 0; round < 20000 && !::testing::Test::HasFatalFailure(); ++round) {
    std::string text = "<?xml version=\"1.0\" ?><CIM >";
    const auto length = random() % 24;
    for (unsigned i = 0; i < length; ++i)
      text += markup_pieces[random() % std::size(markup_pieces)];
    if (random() % 2 == 0) text += "</CIM>";
    expect_the_same(text, traces);
  }
}

const char* const message =
    "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
    "<MESSAGE ID=\"1001\" PROTOCOLVERSION=\"1.0\">\n<SIMPLERSP>\n"
    "<IMETHODRESPONSE NAME=\"EnumerateInstances\">\n<IRETURNVALUE>\n<VALUE.NAMEDINSTANCE>\n"
    "<INSTANCENAME CLASSNAME=\"CIM_Fan\">\n<KEYBINDING NAME=\"DeviceID\">\n"
    "<KEYVALUE VALUETYPE=\"string\">fan &quot;1&quot;</KEYVALUE>\n</KEYBINDING>\n"
    "</INSTANCENAME>\n<INSTANCE CLASSNAME=\"CIM_Fan\" >\n"
    "<PROPERTY NAME=\"Caption\"  TYPE=\"string\">\n<VALUE>it's a fan's fan</VALUE>\n</PROPERTY>\n"
    "<PROPERTY.ARRAY NAME=\"States\" TYPE=\"uint16\"><VALUE.ARRAY><VALUE>2</VALUE><VALUE />"
    "</VALUE.ARRAY></PROPERTY.ARRAY>\n<PROPERTY NAME=\"Empty\" TYPE=\"datetime\"/>\n</INSTANCE>\n"
    "</VALUE.NAMEDINSTANCE>\n</IRETURNVALUE>\n</IMETHODRESPONSE>\n</SIMPLERSP>\n</MESSAGE>\n</"
    "CIM>\n";

TEST(ParserOracle, EveryPrefixOfAMessageIsParsedAsThePlainParserDoes) {
  TraceRecorder traces;
  const std::string text = message;
  for (std::size_t length = 0; length <= text.size(); ++length)
    expect_the_same(text.substr(0, length), traces);
}

TEST(ParserOracle, AMessageWithOneByteChangedIsParsedAsThePlainParserDoes) {
  TraceRecorder traces;
  for (const char replacement : {'\'', '"', '<', '>', '/', ' ', '!', '\n', '\xe4', '\0'})
    for (std::size_t position = 0; position < std::string(message).size(); ++position) {
      std::string text = message;
      text[position] = replacement;
      expect_the_same(text, traces);
      if (::testing::Test::HasFatalFailure()) return;
    }
}

}  // namespace
