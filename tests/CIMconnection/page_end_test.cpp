#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "CIMconnection/response_scan.h"
#include "support/guard_page.h"
#include "support/http_answer.h"
#include "support/sample_messages.h"

// Header lines that end where a page begins that nobody may touch.
namespace zuCIM {
namespace {

constexpr std::string_view samples[] = {
    "HTTP/1.1 200 OK\r\nContent-Type: application/xml\r\nContent-Length: 2048\r\n\r\n",
    "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 401 Unauthorized\r\nCIMStatusCode: 7\r\n\r\n",
    "HTTP/1.0 \t+200",
    "CIMStatusCode: \t-2147483649",
};

int number_of(const std::optional<HeaderVerdict>& verdict) {
  return verdict.value_or(HeaderVerdict{}).number;
}

void scan_prefixes(std::string_view sample) {
  for (std::size_t size = 0; size <= sample.size(); ++size) {
    const std::string_view prefix = sample.substr(0, size);
    const GuardedBytes guarded(prefix);
    const auto line = find_status_line(guarded.view());
    const auto code = find_cim_status_code(guarded.view());
    ASSERT_EQ(line.has_value(), prefix.find("HTTP/1.") != prefix.npos) << prefix;
    ASSERT_EQ(code.has_value(), prefix.find("CIMStatusCode:") != prefix.npos) << prefix;
    ASSERT_EQ(number_of(line), number_of(find_status_line(prefix)));
    ASSERT_EQ(number_of(code), number_of(find_cim_status_code(prefix)));
  }
}

TEST(HeaderAtAPageEnd, IsScannedWithoutAByteTooMuch) {
  for (const std::string_view sample : samples) scan_prefixes(sample);
}

// The scan takes any bytes, so it may as well run on into the message.
TEST(HeaderAtAPageEnd, AndTheMessageBehindItAreScannedWithoutAByteTooMuch) {
  const auto messages = sample_messages();
  ASSERT_GE(messages.size(), 20U);
  for (const std::string& message : messages)
    scan_prefixes(http_answer(message, "HTTP/1.1 404 Not Found", "CIMStatusCode: 6\r\n"));
}

TEST(NumberAtAPageEnd, IsReadWithoutAByteTooMuch) {
  constexpr std::string_view text = " \t-2147483648";
  for (std::size_t size = 0; size <= text.size(); ++size)
    EXPECT_EQ(decimal_number(GuardedBytes(text.substr(0, size)).view()),
              decimal_number(text.substr(0, size)));
}

}  // namespace
}  // namespace zuCIM
