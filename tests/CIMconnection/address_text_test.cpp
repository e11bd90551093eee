#include "CIMconnection/address_text.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

namespace zuCIM {
namespace {

std::string ipv4(const char* text) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  EXPECT_EQ(inet_pton(AF_INET, text, &address.sin_addr), 1);
  return usable_address_text(reinterpret_cast<const sockaddr&>(address));
}

std::string ipv6(const char* text) {
  sockaddr_in6 address{};
  address.sin6_family = AF_INET6;
  EXPECT_EQ(inet_pton(AF_INET6, text, &address.sin6_addr), 1);
  return usable_address_text(reinterpret_cast<const sockaddr&>(address));
}

TEST(AddressText, HasFourNumbersForIpv4) {
  EXPECT_EQ(ipv4("10.1.2.255"), "10.1.2.255");
  EXPECT_EQ(ipv4("0.0.0.0"), "0.0.0.0");
}

TEST(AddressText, PassesOverOneLoopbackAddressOnly) {
  EXPECT_EQ(ipv4("127.0.0.1"), "");
  EXPECT_EQ(ipv4("127.0.1.1"), "127.0.1.1");
  EXPECT_EQ(ipv4("127.0.0.2"), "127.0.0.2");
  EXPECT_EQ(ipv6("::1"), "");
  EXPECT_EQ(ipv6("::2"), "0:0:0:0:0:0:0:2");
}

TEST(AddressText, WritesEveryGroupOfIpv6Out) {
  EXPECT_EQ(ipv6("2001:db8::5"), "2001:db8:0:0:0:0:0:5");
  EXPECT_EQ(ipv6("FE80::00AB:cdef"), "fe80:0:0:0:0:0:ab:cdef");
}

TEST(AddressText, IsEmptyForOtherFamilies) {
  sockaddr address{};
  address.sa_family = AF_UNIX;
  EXPECT_EQ(usable_address_text(address), "");
}

}  // namespace
}  // namespace zuCIM
