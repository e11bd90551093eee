#include <gtest/gtest.h>

#include <string_view>

#include "CIMconnection/response_scan.h"
#include "support/guard_page.h"

// Header lines that end where a page begins that nobody may touch.
namespace zuCIM {
namespace {

constexpr std::string_view samples[] = {
    "HTTP/1.1 200 OK\r\nContent-Type: application/xml\r\nContent-Length: 2048\r\n\r\n",
    "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 401 Unauthorized\r\nCIMStatusCode: 7\r\n\r\n",
    "HTTP/1.0 \t+200",
    "CIMStatusCode: \t-2147483649",
};

TEST(HeaderAtAPageEnd, IsScannedWithoutAByteTooMuch) {
  for (const std::string_view sample : samples)
    for (std::size_t size = 0; size <= sample.size(); ++size) {
      const std::string_view prefix = sample.substr(0, size);
      const GuardedBytes guarded(prefix);
      const auto line = find_status_line(guarded.view());
      const auto code = find_cim_status_code(guarded.view());
      EXPECT_EQ(line.has_value(), prefix.find("HTTP/1.") != prefix.npos) << prefix;
      EXPECT_EQ(code.has_value(), prefix.find("CIMStatusCode:") != prefix.npos) << prefix;
      EXPECT_EQ(line ? line->number : 0, find_status_line(prefix).value_or(HeaderVerdict{}).number);
    }
}

TEST(NumberAtAPageEnd, IsReadWithoutAByteTooMuch) {
  constexpr std::string_view text = " \t-2147483648";
  for (std::size_t size = 0; size <= text.size(); ++size)
    EXPECT_EQ(decimal_number(GuardedBytes(text.substr(0, size)).view()),
              decimal_number(text.substr(0, size)));
}

}  // namespace
}  // namespace zuCIM
