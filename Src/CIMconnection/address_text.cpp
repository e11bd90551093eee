#include "CIMconnection/address_text.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace zuCIM {
namespace {

std::string ipv4_text(const sockaddr_in& address) {
  const std::uint32_t number = ntohl(address.sin_addr.s_addr);
  if (number == INADDR_LOOPBACK) return {};
  std::array<char, INET_ADDRSTRLEN> text{};
  std::snprintf(text.data(), text.size(), "%u.%u.%u.%u", number >> 24, number >> 16 & 0xFF,
                number >> 8 & 0xFF, number & 0xFF);
  return text.data();
}

std::string ipv6_text(const sockaddr_in6& address) {
  if (IN6_IS_ADDR_LOOPBACK(&address.sin6_addr)) return {};
  std::array<std::uint16_t, 8> groups;
  std::memcpy(groups.data(), &address.sin6_addr, sizeof groups);
  for (std::uint16_t& group : groups) group = ntohs(group);
  std::array<char, INET6_ADDRSTRLEN> text{};
  std::snprintf(text.data(), text.size(), "%x:%x:%x:%x:%x:%x:%x:%x", groups[0], groups[1],
                groups[2], groups[3], groups[4], groups[5], groups[6], groups[7]);
  return text.data();
}

// A copy of the address, since the block it comes in need not be aligned for its family.
template <class Address>
Address as(const sockaddr& address) {
  Address copy;
  std::memcpy(&copy, &address, sizeof copy);
  return copy;
}

}  // namespace

std::string usable_address_text(const sockaddr& address) {
  if (address.sa_family == AF_INET) return ipv4_text(as<sockaddr_in>(address));
  if (address.sa_family == AF_INET6) return ipv6_text(as<sockaddr_in6>(address));
  return {};
}

}  // namespace zuCIM
