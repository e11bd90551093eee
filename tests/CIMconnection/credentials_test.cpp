#include "CIMconnection/credentials.h"

#include <gtest/gtest.h>

namespace zuCIM {
namespace {

std::string credentials_of(const char* user, const char* password) {
  CIMconnection connection;
  connection.user = user;
  connection.password = password;
  return wire_credentials(connection);
}

TEST(Credentials, AreInBase64) {
  EXPECT_EQ(credentials_of("", ""), "Og==");
  EXPECT_EQ(credentials_of("u", ""), "dTo=");
  EXPECT_EQ(credentials_of("u", "p"), "dTpw");
  EXPECT_EQ(credentials_of("reader", "open-sesame"), "cmVhZGVyOm9wZW4tc2VzYW1l");
  EXPECT_EQ(credentials_of("\xFB\xFF", "\xFF"), "+/86/w==");
}

TEST(Credentials, AreHiddenWhereverTheyComeBack) {
  EXPECT_EQ(without_echo("a dTpw b dTpwdTpw", "dTpw"), "a *** b ******");
  EXPECT_EQ(without_echo("dTp", "dTpw"), "dTp");
  EXPECT_EQ(without_echo("", "dTpw"), "");
  EXPECT_EQ(without_echo("a", ""), "a");
}

}  // namespace
}  // namespace zuCIM
