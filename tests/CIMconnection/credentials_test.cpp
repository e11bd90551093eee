#include "CIMconnection/credentials.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "support/trace_recorder.h"
#include "zuCIM/vocabulary.h"

namespace {

// What was wiped while a WipedTexts lived, in the order of wiping.
std::vector<std::string>* wiped = nullptr;

}  // namespace

// Serves the library instead of the C library's, and does the same.
extern "C" void explicit_bzero(void* bytes, std::size_t size) noexcept {
  if (wiped != nullptr) wiped->emplace_back(static_cast<const char*>(bytes), size);
  std::fill_n(static_cast<volatile char*>(bytes), size, '\0');
}

namespace zuCIM {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WipedTexts {
 public:
  WipedTexts() { wiped = &texts_; }
  ~WipedTexts() { wiped = nullptr; }
  WipedTexts(const WipedTexts&) = delete;
  WipedTexts& operator=(const WipedTexts&) = delete;

  const std::vector<std::string>& texts() const { return texts_; }

 private:
  std::vector<std::string> texts_;
};

void set_credentials(CIMconnection& connection, const char* user, const char* password) {
  connection.user = user;
  connection.password = password;
}

std::string credentials_of(const char* user, const char* password) {
  CIMconnection connection;
  set_credentials(connection, user, password);
  return std::string(wire_credentials(connection).view());
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

TEST(Credentials, AreWipedInBothForms) {
  CIMconnection connection;
  set_credentials(connection, "reader", "open-sesame");
  const WipedTexts wiped_texts;
  wire_credentials(connection);
  EXPECT_THAT(wiped_texts.texts(), ElementsAre("reader:open-sesame", "cmVhZGVyOm9wZW4tc2VzYW1l"));
}

// The record asks for them, and so does the dump of the exchange.
TEST(Credentials, AreWipedBehindEachTraceThatHidesThem) {
  CIMconnection connection;
  set_credentials(connection, "u", "p");
  const TraceRecorder recorder;
  const WipedTexts wiped_texts;
  connection.SetCimStatus_FL(1001, "any", "any.cpp", 1);
  EXPECT_EQ(recorder.texts(trace_level::warning).size(), 2U);
  EXPECT_THAT(wiped_texts.texts(), ElementsAre("u:p", "dTpw", "u:p", "dTpw"));
}

TEST(Credentials, APasswordIsWipedWhenItIsReplacedAndAtItsEnd) {
  const WipedTexts wiped_texts;
  {
    const _THR_SERVER_ first{"", "u", "first", "", "", "", ""};
    const _THR_SERVER_ second{"", "u", "second", "", "", "", ""};
    CIMconnection connection;
    connection.setHostUserPasswd(&first);
    connection.setHostUserPasswd(&second);
    EXPECT_THAT(wiped_texts.texts(), ElementsAre("", "first"));
  }
  EXPECT_THAT(wiped_texts.texts(), ElementsAre("", "first", "second"));
}

TEST(SecretText, IsWipedAtItsEnd) {
  const WipedTexts wiped_texts;
  {
    SecretText text(4);
    EXPECT_TRUE(text.empty());
    text.append("ab").append("").append("cd");
    EXPECT_EQ(text.view(), "abcd");
    EXPECT_FALSE(text.empty());
    EXPECT_THAT(wiped_texts.texts(), IsEmpty());
  }
  EXPECT_THAT(wiped_texts.texts(), ElementsAre("abcd"));
}

TEST(SecretText, IsWipedWhenItGrows) {
  const WipedTexts wiped_texts;
  SecretText text(2);
  text.append("ab").append("cd");
  EXPECT_THAT(wiped_texts.texts(), ElementsAre("ab"));
  EXPECT_EQ(text.view(), "abcd");
}

TEST(SecretText, LeavesNothingWhereItMovedFrom) {
  const WipedTexts wiped_texts;
  SecretText first(4);
  first.append("abcd");
  SecretText second(std::move(first));
  SecretText third(2);
  third.append("xy");
  third = std::move(second);
  EXPECT_EQ(third.view(), "abcd");
  EXPECT_THAT(wiped_texts.texts(), ElementsAre("xy"));
}

}  // namespace
}  // namespace zuCIM
