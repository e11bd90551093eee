#include "CIMconnection/address_text.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstdint>
#include <cstring>

#include <boost/format.hpp>

namespace zuCIM {
namespace {

constexpr std::size_t ipv6_groups = 8;

std::string ipv4_text(const sockaddr_in& address) {
  const std::uint32_t number = ntohl(address.sin_addr.s_addr);
  if (number == INADDR_LOOPBACK) return {};
  return (boost::format("%d.%d.%d.%d") % (number >> 24) % (number >> 16 & 0xFF) %
          (number >> 8 & 0xFF) % (number & 0xFF))
      .str();
}

std::string ipv6_text(const sockaddr_in6& address) {
  if (IN6_IS_ADDR_LOOPBACK(&address.sin6_addr)) return {};
  std::uint16_t groups[ipv6_groups];
  std::memcpy(groups, &address.sin6_addr, sizeof groups);
  boost::format text("%x:%x:%x:%x:%x:%x:%x:%x");
  for (const std::uint16_t group : groups) text % ntohs(group);
  return text.str();
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
