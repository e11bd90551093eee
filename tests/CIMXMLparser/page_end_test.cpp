#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "CIMXMLparser/exact_parser.h"
#include "CIMXMLparser/quick_parser.h"
#include "CIMXMLparser/text.h"
#include "support/guard_page.h"
#include "support/sample_messages.h"
#include "zuCIM.h"

// Messages that end, with their NUL, where a page begins that nobody may touch.
namespace {

using namespace zuCIM;

struct Outcome {
  bool quick;
  bool exact;
};

// What both parsers make of a text; none of them gets as far without the start of a document.
Outcome parse_at_page_end(std::string_view text) {
  const GuardedText guarded(text);
  const std::string_view message(guarded.c_str(), text.size());
  const std::size_t declaration = codec::find_unquoted(message, "<?xml ", 0);
  const std::size_t begin = codec::find_unquoted(message, "<CIM ", declaration);
  if (declaration == codec::npos || begin == codec::npos) return {};
  CIMelement quick;
  CIMelement exact;
  return {codec::parse_quickly(message, begin, quick) == codec::QuickResult::complete,
          codec::parse_exactly(message, begin, exact) == elem::CIM};
}

void check_prefix(const std::string& prefix) {
  const Outcome outcome = parse_at_page_end(prefix);
  CIMelement root;
  EXPECT_EQ(root.ParseCIMXML(prefix) == 0, outcome.exact) << prefix;
  EXPECT_LE(outcome.quick, outcome.exact) << prefix;
}

TEST(MessageAtAPageEnd, IsParsedWithoutAByteTooMuch) {
  const auto samples = sample_messages();
  ASSERT_GE(samples.size(), 20U);
  for (const std::string& sample : samples) {
    EXPECT_TRUE(parse_at_page_end(sample).exact) << sample;
    for (std::size_t size = 0; size < sample.size(); ++size) check_prefix(sample.substr(0, size));
  }
}

// Comments, quotes and character data lead past the quick parser, and end open in a prefix.
TEST(MessageAtAPageEnd, MayBeOddAndEndAnywhere) {
  const std::string sample =
      "<?xml version='1.0' ?><!-- a --><CIM A=\"b\" >\n<!-- b --><![CDATA[c]]><VALUE A='d' "
      "TYPE=\"e>\"/><VALUE\n>f 'g' \"h\" <!-- i --></VALUE ><VALUE></VALUE></CIM>\n";
  for (std::size_t size = 0; size <= sample.size(); ++size) check_prefix(sample.substr(0, size));
}

}  // namespace
