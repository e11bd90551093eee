#include "support/hosts_table.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>

#include "support/scripted_server.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct FreeList {
  void operator()(addrinfo* list) const { freeaddrinfo(list); }
};
using List = std::unique_ptr<addrinfo, FreeList>;

// Resolves a name and gives the numbers of its addresses; the result goes to `error`.
std::vector<std::string> resolve(const char* name, int& error, const addrinfo* hints = nullptr) {
  addrinfo* raw = nullptr;
  error = getaddrinfo(name, nullptr, hints, &raw);
  const List list(error == 0 ? raw : nullptr);
  std::vector<std::string> result;
  for (const addrinfo* entry = list.get(); entry != nullptr; entry = entry->ai_next) {
    std::array<char, 100> text{"?"};
    if (entry->ai_family != AF_UNIX)
      getnameinfo(entry->ai_addr, entry->ai_addrlen, text.data(), text.size(), nullptr, 0,
                  NI_NUMERICHOST);
    result.emplace_back(text.data());
  }
  return result;
}

// The result of a reverse lookup and the name it gave.
std::pair<int, std::string> reverse(const char* address) {
  sockaddr_in name{};
  name.sin_family = AF_INET;
  inet_pton(AF_INET, address, &name.sin_addr);
  std::array<char, 1025> text{};
  const int error = getnameinfo(reinterpret_cast<const sockaddr*>(&name), sizeof name, text.data(),
                                text.size(), nullptr, 0, 0);
  return {error, text.data()};
}

TEST(HostsTable, GivesTheAddressesInTheirOrder) {
  HostsTable table;
  table.add("mixed.test", {"127.0.0.1", "2001:db8::5", HostsTable::foreign_family, "10.0.0.7"});
  int error = -1;
  EXPECT_THAT(resolve("mixed.test", error),
              ElementsAre("127.0.0.1", "2001:db8::5", "?", "10.0.0.7"));
  EXPECT_EQ(error, 0);
  EXPECT_THAT(table.resolved_names(), ElementsAre("mixed.test"));
}

TEST(HostsTable, HonoursTheWantedFamily) {
  HostsTable table;
  table.add("mixed.test", {"10.0.0.7", "2001:db8::5"});
  addrinfo hints{};
  hints.ai_family = AF_INET6;
  int error = -1;
  EXPECT_THAT(resolve("mixed.test", error, &hints), ElementsAre("2001:db8::5"));
}

TEST(HostsTable, KnowsNoOtherName) {
  const HostsTable table;
  int error = 0;
  EXPECT_THAT(resolve("localhost", error), IsEmpty());
  EXPECT_EQ(error, EAI_NONAME);
}

TEST(HostsTable, LetsNumbersStandForThemselves) {
  const HostsTable table;
  int error = -1;
  EXPECT_EQ(resolve("127.0.0.2", error).front(), "127.0.0.2");
  EXPECT_EQ(error, 0);
}

TEST(HostsTable, FailsAsTold) {
  HostsTable table;
  table.add_failure("broken.test", EAI_SYSTEM, EIO);
  int error = 0;
  errno = 0;
  resolve("broken.test", error);
  EXPECT_EQ(error, EAI_SYSTEM);
  EXPECT_EQ(errno, EIO);
}

TEST(HostsTable, GivesAnEmptyListWhenTold) {
  HostsTable table;
  table.add("nothing.test", {});
  int error = -1;
  EXPECT_THAT(resolve("nothing.test", error), IsEmpty());
  EXPECT_EQ(error, 0);
}

TEST(HostsTable, AnswersReverseLookupsOneAfterTheOther) {
  HostsTable table;
  table.add_reverse("10.0.0.7",
                    {ReverseAnswer::failure(EAI_AGAIN), ReverseAnswer::name("seven.test")});
  EXPECT_EQ(reverse("10.0.0.7").first, EAI_AGAIN);
  EXPECT_EQ(reverse("10.0.0.7").second, "seven.test");
  EXPECT_EQ(reverse("10.0.0.7").second, "seven.test");
  EXPECT_EQ(reverse("10.0.0.8"), std::make_pair(0, std::string("10.0.0.8")));
  EXPECT_THAT(table.reversed_addresses(),
              ElementsAre("10.0.0.7", "10.0.0.7", "10.0.0.7", "10.0.0.8"));
}

TEST(HostsTable, ChoosesTheNameOfThisMachine) {
  HostsTable table;
  table.set_host_name("chosen.test");
  std::array<char, 128> name{};
  EXPECT_EQ(gethostname(name.data(), name.size()), 0);
  EXPECT_STREQ(name.data(), "chosen.test");
  EXPECT_EQ(gethostname(name.data(), 11), -1);
  EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(HostsTable, MakesGethostnameFail) {
  HostsTable table;
  table.set_host_name_failure(EPERM);
  std::array<char, 128> name{};
  EXPECT_EQ(gethostname(name.data(), name.size()), -1);
  EXPECT_EQ(errno, EPERM);
}

TEST(HostsTable, LeavesTheSystemAloneWhenItIsGone) {
  { const HostsTable table; }
  int error = -1;
  EXPECT_EQ(resolve("127.0.0.3", error).front(), "127.0.0.3");
  std::array<char, 256> name{};
  EXPECT_EQ(gethostname(name.data(), name.size()), 0);
  EXPECT_STRNE(name.data(), "");
}

TEST(HostsTable, RefusesASecondTable) {
  const HostsTable table;
  EXPECT_THROW(HostsTable(), std::logic_error);
}

TEST(HostsTable, ServesLibcurlToo) {
  HostsTable table;
  const ScriptedServer server({script::ReadRequest{}, script::Send{http_answer("")}});
  table.add("cim.test", {server.address()});
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(),
                                                                 &curl_easy_cleanup);
  const std::string url = "http://cim.test:" + server.port_text() + "/";
  curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_PROXY, "");
  EXPECT_EQ(curl_easy_perform(curl.get()), CURLE_OK);
  EXPECT_THAT(table.resolved_names(), testing::Contains("cim.test"));
}

}  // namespace
