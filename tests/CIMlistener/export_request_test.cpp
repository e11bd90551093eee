#include "CIMlistener/export_request.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>

#include "CIMlistener/export_samples.h"
#include "support/guard_page.h"
#include "support/sample_messages.h"

namespace {

using zuCIM::announced_length;
using zuCIM::message_id;
using zuCIM::start_of_body;

constexpr std::size_t longest = std::numeric_limits<std::size_t>::max();

struct LengthCase {
  std::string_view text;
  std::size_t length;
};

TEST(ExportRequest, TheLengthIsTheNumberAfterItsName) {
  constexpr LengthCase cases[] = {
      {"Content-Length: 12\r\n\r\n", 12},
      {"content-length:12", 12},
      {"CONTENT-LENGTH: \t 12;", 12},
      {"a\nb: c\ncOnTeNt-LeNgTh: 0000000737\n", 737},
      {"Content-Length: 5\r\nContent-Length: 6", 5},
      {"X-Content-Length: 5\r\nContent-Length: 6", 5},
      {"Content-Length: 000000000000000000000000000000000000000000000000000000042", 42},
      {"Content-Length: +3", 3},
      {"Content-Length: 7.5", 7},
  };
  for (const LengthCase& each : cases) EXPECT_EQ(announced_length(each.text), each.length);
}

TEST(ExportRequest, ALengthThatIsMissingOrBelowOneIsZero) {
  for (const std::string_view text :
       {"", "\r\n", "Content-Length", "Content-Length 5", "Content-Length :5", "Content-Length:",
        "Content-Length: ", "Content-Length: 0", "Content-Length: 0000000000000000000000000000",
        "Content-Length: -1", "Content-Length: -999999999999999999999999999999999999999",
        "Content-Length: x5", "Content-Length: \r\n5", "Content-Length: +-5", "Content-Length: ++5",
        "Content-Length: \r\nContent-Length: 5", "Transfer-Encoding: chunked"})
    EXPECT_EQ(announced_length(text), 0U) << text;
}

TEST(ExportRequest, AnAbsurdLengthIsTheLargest) {
  for (const std::string_view text :
       {"Content-Length: 1000000000000000000000000000000", "Content-Length: 18446744073709551616",
        "Content-Length: 000000000000000000099999999999999999999999999"})
    EXPECT_EQ(announced_length(text), longest) << text;
  EXPECT_EQ(announced_length("Content-Length: " + std::to_string(longest)), longest);
}

TEST(ExportRequest, TheBodyStartsWithTheDeclarationInAnyCase) {
  EXPECT_EQ(start_of_body("POST\n\n<?xml?><CIM/>"), "<?xml?><CIM/>");
  EXPECT_EQ(start_of_body("POST\n\n<?XmL?>"), "<?XmL?>");
  EXPECT_EQ(start_of_body("X: <?xml\n\n<?xml"), "<?xml\n\n<?xml");
  for (const std::string_view text : {"", "<", "<?xm", "POST\n\n<CIM/>", "< ?xml", "xml?>"})
    EXPECT_EQ(start_of_body(text), "") << text;
}

struct IdCase {
  std::string_view text;
  int id;
};

TEST(ExportRequest, TheMessageIdIsTheNumberOfTheFirstMessage) {
  constexpr IdCase cases[] = {
      {"<?xml?><CIM><MESSAGE ID=\"1042\" PROTOCOLVERSION=\"1.0\">", 1042},
      {"<MESSAGE ID=\"1", 1},
      {"<MESSAGE ID=\" 17\"", 17},
      {"<MESSAGE ID=\"7x\"", 7},
      {"<MESSAGE ID=\"0000000000000000000000000000000000000000000000000000000008\"", 8},
      {"<MESSAGE ID=\"2147483647\"", 2147483647},
      {"<MESSAGE ID=\"5\"><MESSAGE ID=\"6\"", 5},
      {"<MESSAGE ID=\"\"><MESSAGE ID=\"6\"", 1},
  };
  for (const IdCase& each : cases) EXPECT_EQ(message_id(each.text), each.id) << each.text;
}

TEST(ExportRequest, AMessageIdThatIsMissingOrBelowOneIsOne) {
  for (const std::string_view text :
       {"", "<?xml?><CIM/>", "<MESSAGE ID=", "<MESSAGE ID=\"", "<MESSAGE ID=\"\"",
        "<MESSAGE ID=\"0\"", "<MESSAGE ID=\"-5\"", "<MESSAGE ID=\"-1000000000000000000000000000\"",
        "<MESSAGE ID=\"x9\"", "<message id=\"9\"", "<MESSAGE  ID=\"9\"", "<MESSAGE ID='9'",
        "<MESSAGE PROTOCOLVERSION=\"1.0\" ID=\"9\""})
    EXPECT_EQ(message_id(text), 1) << text;
}

TEST(ExportRequest, AnAbsurdMessageIdIsTheLargest) {
  EXPECT_EQ(message_id("<MESSAGE ID=\"2147483648\""), 2147483647);
  EXPECT_EQ(message_id("<MESSAGE ID=\"1000000000000000000000000000000\""), 2147483647);
}

// Every prefix ends at a page that nobody may touch..
void check_prefixes(const std::string& body) {
  const std::string request = export_request_with(body);
  const std::size_t body_at = request.size() - body.size();
  const std::size_t length_at = request.find(std::to_string(body.size()));
  const int whole_id = message_id(body);
  for (std::size_t size = 0; size <= request.size(); ++size) {
    const GuardedBytes prefix(std::string_view(request).substr(0, size));
    ASSERT_EQ(announced_length(prefix.view()) != 0, size > length_at) << prefix.view();
    ASSERT_EQ(start_of_body(prefix.view()).size(), size < body_at + 5 ? 0 : size - body_at);
    const int id = message_id(prefix.view());
    ASSERT_TRUE(id >= 1 && id <= whole_id) << prefix.view();
  }
}

TEST(ExportRequest, NothingBehindTheTextIsRead) {
  check_prefixes(export_request_body("1042"));
}

// Any message may be what a sender posts.
TEST(ExportRequest, NothingBehindASampleIsRead) {
  const auto samples = sample_messages();
  ASSERT_GE(samples.size(), 20U);
  for (const std::string& sample : samples) check_prefixes(sample);
}

}  // namespace
