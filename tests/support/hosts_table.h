#pragma once

#include <map>
#include <string>
#include <vector>

// What a reverse lookup of an address answers.
struct ReverseAnswer {
  // A name.
  static ReverseAnswer name(const std::string& text) { return {0, text}; }
  // An error of getnameinfo, such as EAI_AGAIN.
  static ReverseAnswer failure(int error) { return {error, {}}; }

  int error;
  std::string text;
};

// Name resolution of this process as the test wants it. While a table lives, getaddrinfo,
// getnameinfo and gethostname answer from it, to the library and to libcurl alike, and no name
// server is ever asked. It starts empty:
//
// - A name that is not in the table is unknown (EAI_NONAME); a numeric address stands for itself.
// - An address without an entry for its reverse lookup gives its number.
// - The name of this machine is the real one.
//
// One table at a time. Fill it before other threads resolve names.
class HostsTable {
 public:
  HostsTable();
  ~HostsTable();
  HostsTable(const HostsTable&) = delete;
  HostsTable& operator=(const HostsTable&) = delete;

  // `name` has these addresses (IPv4 or IPv6), in this order. The text `foreign_family` makes an
  // entry of a family that is neither. No addresses: an empty list, found without an error.
  HostsTable& add(const std::string& name, const std::vector<std::string>& addresses);
  // Resolving `name` fails with this result of getaddrinfo and this `errno`.
  HostsTable& add_failure(const std::string& name, int error, int error_number = 0);
  // Reverse lookups of `address` give these answers, one after the other; the last one stays.
  HostsTable& add_reverse(const std::string& address, const std::vector<ReverseAnswer>& answers);
  // The name of this machine.
  HostsTable& set_host_name(const std::string& name);
  // gethostname fails with this `errno`.
  HostsTable& set_host_name_failure(int error_number);

  // The names that were resolved so far, in order.
  std::vector<std::string> resolved_names() const;
  // The addresses that were looked up in reverse so far, in order.
  std::vector<std::string> reversed_addresses() const;

  static constexpr const char* foreign_family = "foreign";
};
