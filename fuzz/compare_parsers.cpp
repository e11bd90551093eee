#include "compare_parsers.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "BRQ/Trace.h"
#include "support/plain_parser.h"
#include "zuCIM/vocabulary.h"

namespace {

std::vector<PlainMessage> traced;

void record(const BRQ::TraceLine& line) {
  if (std::string(line.source) == "Src/CIMXMLparser") traced.push_back({line.level, line.text});
}

[[noreturn]] void report(const std::string& what) {
  std::fprintf(stderr, "parsers differ: %s\n", what.c_str());
  std::abort();
}

}  // namespace

void compare_parsers(const std::string& text) {
  static const bool listening =
      (BRQ::set_trace_sink(record), zuCIM::BRQ_MODULE_INFO_zuCIM.set_trace_mask(~0U), true);
  static_cast<void>(listening);
  traced.clear();
  zuCIM::CIMelement actual;
  zuCIM::CIMelement expected;
  std::vector<PlainMessage> messages;
  const unsigned status = actual.ParseCIMXML(text);
  if (status != plain_parse(text, expected, messages)) report("status");
  if (traced.size() != messages.size()) report("number of messages");
  for (std::size_t i = 0; i < traced.size(); ++i)
    if (!(traced[i] == messages[i])) report(traced[i].text + " / " + messages[i].text);
  const std::string difference = tree_difference(actual, expected);
  if (!difference.empty()) report(difference);
}
