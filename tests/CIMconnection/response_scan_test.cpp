#include "CIMconnection/response_scan.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

struct NumberCase {
  std::string_view text;
  int number;
};

TEST(DecimalNumber, IsReadAsStrtolReadsIt) {
  const NumberCase cases[] = {
      {"", 0},
      {"6", 6},
      {"007", 7},
      {" \t\r\n\v\f42 apples", 42},
      {"+5", 5},
      {"-5", -5},
      {"--5", 0},
      {"- 5", 0},
      {"six", 0},
      {"0x10", 0},
      {"2147483647", INT_MAX},
      {"2147483648", INT_MAX},
      {"-2147483648", INT_MIN},
      {"-2147483649", INT_MIN},
      {"99999999999999999999999999999999999999", INT_MAX},
      {"-99999999999999999999999999999999999999", INT_MIN},
      {std::string_view("1\0002", 3), 1},
      {"\xC3\xA4", 0},
      {"+", 0},
      {"   ", 0},
  };
  for (const NumberCase& entry : cases)
    EXPECT_EQ(decimal_number(entry.text), entry.number) << entry.text;
}

TEST(DecimalNumber, StaysInsideItsText) {
  const std::string text = "12345";
  EXPECT_EQ(decimal_number(std::string_view(text).substr(0, 2)), 12);
}

TEST(HttpStatus, IsCountedFromTenThousandAndStopsAtTheLargestInt) {
  EXPECT_EQ(http_status(404), 10404);
  EXPECT_EQ(http_status(-5), 9995);
  EXPECT_EQ(http_status(INT_MAX), INT_MAX);
  EXPECT_EQ(http_status(INT_MAX - 10000), INT_MAX);
  EXPECT_EQ(http_status(INT_MIN), INT_MIN + 10000);
}

struct StatusLineCase {
  std::string_view header;
  int number;
  std::string_view text;
};

TEST(StatusLine, IsTheFirstOneInTheHeader) {
  const StatusLineCase cases[] = {
      {"HTTP/1.1 200 OK\r\nA: b\r\n", 200, "HTTP/1.1 200 OK"},
      {"HTTP/1.0 404 Not Found\r\n", 404, "HTTP/1.0 404 Not Found"},
      {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\n", 100, "HTTP/1.1 100 Continue"},
      {"Junk: 1\r\nHTTP/1.1 500 Oops\n", 500, "HTTP/1.1 500 Oops"},
      {"HTTP/1.1   \t 401 No", 401, "HTTP/1.1   "},
      {"HTTP/1.\r\n\r\n503", 503, "HTTP/1."},
      {"HTTP/1.", 0, "HTTP/1."},
      {"HTTP/1.1", 0, "HTTP/1.1"},
      {"HTTP/1.1 ", 0, "HTTP/1.1 "},
      {"HTTP/1.1 OK", 0, "HTTP/1.1 OK"},
      {"HTTP/1.1 99999999999 Big", INT_MAX, "HTTP/1.1 99999999999 Big"},
      {"HTTP/1.1 200 gr\xC3\xBC\xC3\x9F", 200, "HTTP/1.1 200 gr\xC3\xBC\xC3\x9F"},
      {std::string_view("HTTP/1.1 \000200 OK", 16), 0, "HTTP/1.1 "},
      {"HTTP/1.1 500\x1F tail", 500, "HTTP/1.1 500"},
  };
  for (const StatusLineCase& entry : cases) {
    const auto found = find_status_line(entry.header);
    ASSERT_TRUE(found) << entry.header;
    EXPECT_EQ(found->number, entry.number) << entry.header;
    EXPECT_EQ(found->text, entry.text) << entry.header;
  }
}

TEST(StatusLine, IsAbsentWithoutItsBeginning) {
  for (const std::string_view header : {"", "HTTP", "HTTP/1", "http/1.1 200 OK", "HTTP/2 200"})
    EXPECT_FALSE(find_status_line(header)) << header;
}

TEST(CimStatusCode, IsTheNumberAndTheRestOfTheHeader) {
  const auto found = find_cim_status_code("HTTP/1.1 200 OK\r\nCIMStatusCode: 7\r\nA: b\r\n\r\n");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->number, 7);
  EXPECT_EQ(found->text, "CIMStatusCode: 7\r\nA: b\r\n\r\n");
}

TEST(CimStatusCode, MayBeMalformed) {
  const NumberCase cases[] = {
      {"CIMStatusCode:", 0},     {"CIMStatusCode:0", 0},
      {"CIMStatusCode:nine", 0}, {"CIMStatusCode:-3\r\n", -3},
      {"CIMStatusCode:5x", 5},   {"CIMStatusCode: 1 CIMStatusCode: 2", 1},
  };
  for (const NumberCase& entry : cases) {
    const auto found = find_cim_status_code(entry.text);
    ASSERT_TRUE(found) << entry.text;
    EXPECT_EQ(found->number, entry.number) << entry.text;
  }
  EXPECT_FALSE(find_cim_status_code("cimstatuscode: 5"));
  EXPECT_FALSE(find_cim_status_code("CIMStatusCode"));
}

TEST(HeaderScans, TakeEveryPrefixOfAHeader) {
  const std::string header = "HTTP/1.1 401 Unauthorized\r\nCIMStatusCode: 12\r\n\r\n";
  for (std::size_t length = 0; length <= header.size(); ++length) {
    // A block of exactly this size, so that a read past its end is seen by the sanitizer.
    const std::string prefix(header, 0, length);
    const std::vector<char> exact(prefix.begin(), prefix.end());
    const std::string_view text(exact.data(), exact.size());
    EXPECT_EQ(find_status_line(text).has_value(), length >= 7);
    EXPECT_EQ(find_cim_status_code(text).has_value(), length >= 41);
  }
}

// A document of a root and one element below it.
struct Document {
  CIMelement root;
  CIMelement* child;

  Document() {
    root.name = known_cim_elements[elem::CIM];
    child = root.makeNextElement();
    child->name = known_cim_elements[elem::ERROR];
  }
};

TEST(ErrorElement, IsFoundInDocumentOrder) {
  Document document;
  CIMelement* const second = document.root.makeNextElement();
  second->name = known_cim_elements[elem::ERROR];
  EXPECT_EQ(find_error_element(document.root), document.child);
  document.child->name = known_cim_elements[elem::VALUE];
  EXPECT_EQ(find_error_element(document.root), second);
}

TEST(ErrorElement, MayBeTheRoot) {
  CIMelement root;
  EXPECT_EQ(find_error_element(root), nullptr);
  root.name = known_cim_elements[elem::ERROR];
  EXPECT_EQ(find_error_element(root), &root);
}

TEST(ErrorElement, IsAbsentFromOtherDocuments) {
  Document document;
  document.child->name = known_cim_elements[elem::VALUE];
  EXPECT_EQ(find_error_element(document.root), nullptr);
}

struct Attribute {
  int id;
  const char* text;
};
struct ErrorCase {
  std::vector<Attribute> attributes;
  int code;
  std::string text;
};

TEST(ErrorElement, IsReadByThePositionOfItsAttributes) {
  const std::string none = "No Description found in response";
  const ErrorCase cases[] = {
      {{}, 1001, none},
      {{{attr::CODE, "6"}}, 6, none},
      {{{attr::CODE, "6"}, {attr::DESCRIPTION, "x"}}, 6, "x"},
      {{{attr::CODE, "6"}, {attr::DESCRIPTION, ""}}, 6, ""},
      {{{attr::CODE, "0"}, {attr::DESCRIPTION, "x"}}, 1001, "x"},
      {{{attr::CODE, "-4"}, {attr::DESCRIPTION, "x"}}, 1001, "x"},
      {{{attr::CODE, ""}, {attr::DESCRIPTION, "x"}}, 1001, "x"},
      {{{attr::CODE, "none"}}, 1001, none},
      {{{attr::CODE, " 5 "}}, 5, none},
      {{{attr::CODE, "99999999999"}}, INT_MAX, none},
      {{{attr::DESCRIPTION, "x"}, {attr::CODE, "6"}}, 1001, none},
      {{{attr::DESCRIPTION, "x"}}, 1001, none},
      {{{attr::NAME, "n"}, {attr::DESCRIPTION, "x"}}, 1001, "x"},
      {{{attr::CODE, "6"}, {attr::NAME, "n"}, {attr::DESCRIPTION, "x"}}, 6, none},
      {{{attr::UNKNOWN, "?"}, {attr::CODE, "6"}}, 1001, none},
      {{{attr::CODE, "6"}, {attr::CODE, "7"}}, 6, none},
  };
  for (const ErrorCase& entry : cases) {
    Document document;
    for (const Attribute& attribute : entry.attributes)
      document.child->attr_put(attribute.id, attribute.text);
    const ErrorVerdict verdict = read_error_element(*document.child);
    EXPECT_EQ(verdict.code, entry.code);
    EXPECT_EQ(verdict.text, entry.text);
  }
}

}  // namespace
}  // namespace zuCIM
