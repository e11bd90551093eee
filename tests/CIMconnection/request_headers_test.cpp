#include "CIMconnection/request_headers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zuCIM {
namespace {

using testing::ElementsAre;

std::vector<std::string> lines_of(const curl_slist* list) {
  std::vector<std::string> lines;
  for (; list != nullptr; list = list->next) lines.emplace_back(list->data);
  return lines;
}

TEST(RequestHeaders, StandInTheOrderInWhichTheyAreSent) {
  EXPECT_THAT(lines_of(make_header_list("GetClass", "root/cimv2").get()),
              ElementsAre("Content-type: application/xml; charset=\"utf-8\"",
                          "Expect:", "CIMOperation: MethodCall", "CIMMethod: GetClass",
                          "CIMObject: root%2Fcimv2"));
}

TEST(RequestHeaders, TakeMissingTextsForEmptyOnes) {
  const std::vector<std::string> lines = lines_of(make_header_list(nullptr, nullptr).get());
  ASSERT_EQ(lines.size(), 5U);
  EXPECT_EQ(lines[3], "CIMMethod: ");
  EXPECT_EQ(lines[4], "CIMObject: ");
}

struct ObjectCase {
  const char* object;
  const char* escaped;
};

TEST(RequestHeaders, EscapeTheFirstSlashOfTheObjectOnly) {
  const ObjectCase cases[] = {
      {"root/cimv2", "root%2Fcimv2"},
      {"a/b/c", "a%2Fb/c"},
      {"plain", "plain"},
      {"ns/", "ns"},
      {"/", ""},
      {"/ns", "%2Fns"},
      {"a//", "a%2F/"},
      {"", ""},
      {nullptr, ""},
  };
  for (const ObjectCase& entry : cases)
    EXPECT_EQ(escaped_object(entry.object), entry.escaped)
        << (entry.object != nullptr ? entry.object : "null");
}

TEST(RequestHeaders, AreCopiedInOrder) {
  const HeaderList source = make_header_list("M", "a/b");
  const HeaderList copy = copy_header_list(source.get());
  EXPECT_NE(copy, source);
  EXPECT_EQ(lines_of(copy.get()), lines_of(source.get()));
  EXPECT_EQ(copy_header_list(nullptr), nullptr);
}

TEST(RequestHeaders, ReplaceTheListOfAConnection) {
  CIMconnection connection;
  replace_header_list(connection, make_header_list("A", "x"));
  replace_header_list(connection, make_header_list("B", "x"));
  EXPECT_EQ(lines_of(connection.headers)[3], "CIMMethod: B");
  replace_header_list(connection, nullptr);
  EXPECT_EQ(connection.headers, nullptr);
}

}  // namespace
}  // namespace zuCIM
