#include "CIMconnection/verbose_output.h"

#include <gtest/gtest.h>

#include "support/http_answer.h"
#include "wire/wire_client.h"

namespace zuCIM {
namespace {

// "reader:open-sesame" in Base64, as it goes over the wire.
constexpr const char* credentials = "cmVhZGVyOm9wZW4tc2VzYW1l";

class Talkative {
 public:
  Talkative() {
    do_cim_debug = 1;
    testing::internal::CaptureStderr();
  }
  ~Talkative() { do_cim_debug = 0; }
  std::string output() { return testing::internal::GetCapturedStderr(); }
};

TEST(VerboseOutput, ShowsTheConversationWithoutCredentials) {
  const ScriptedServer server(always_answer(http_answer(good_document)));
  WireClient client(server);
  Talkative talkative;
  EXPECT_EQ(client.exchange(), 0);
  const std::string output = talkative.output();
  EXPECT_NE(output.find("> POST /cimom"), std::string::npos);
  EXPECT_NE(output.find("Authorization: ***\r\n"), std::string::npos);
  EXPECT_NE(output.find("< HTTP/1.1 200 OK"), std::string::npos);
  EXPECT_NE(output.find("* "), std::string::npos);
  EXPECT_EQ(output.find(credentials), std::string::npos);
  EXPECT_EQ(output.find("open-sesame"), std::string::npos);
  ASSERT_FALSE(server.requests().empty());
  EXPECT_NE(server.requests().front().find(credentials), std::string::npos);
}

TEST(VerboseOutput, MasksEveryKindOfAuthorization) {
  EXPECT_EQ(without_credentials("Host: a\r\nauthorization: Basic x\r\nProxy-AUTHORIZATION: Basic "
                                "y\r\nAccept: */*\r\n\r\n"),
            "Host: a\r\nAuthorization: ***\r\nProxy-Authorization: ***\r\nAccept: */*\r\n\r\n");
  EXPECT_EQ(without_credentials("Authorization: Basic x"), "Authorization: ***\r\n");
  EXPECT_EQ(without_credentials("X-Authorization: y\n"), "X-Authorization: y\n");
  EXPECT_EQ(without_credentials(""), "");
}

}  // namespace
}  // namespace zuCIM
