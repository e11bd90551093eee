#include "support/hosts_table.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <netdb.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>

namespace {

struct NameEntry {
  int error = 0;
  int error_number = 0;
  std::vector<std::string> addresses;
};

struct Table {
  std::map<std::string, NameEntry> names;
  std::map<std::string, std::vector<ReverseAnswer>> reverse;
  std::optional<std::string> host_name;
  int host_name_error = 0;
  std::vector<std::string> resolved;
  std::vector<std::string> reversed;
};

// One answer of ours: the list and the addresses that it points to.
struct AddressList {
  std::vector<addrinfo> entries;
  std::vector<sockaddr_storage> addresses;
};

std::mutex table_mutex;
std::unique_ptr<Table> table;
std::list<AddressList> lists_handed_out;

// The function that would be called without this file.
template <class Function>
Function* real(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

// Fills `storage` and returns its length; 0 when `text` is no numeric address.
socklen_t parse_address(const std::string& text, in_port_t port, sockaddr_storage& storage) {
  storage = {};
  auto* const four = reinterpret_cast<sockaddr_in*>(&storage);
  auto* const six = reinterpret_cast<sockaddr_in6*>(&storage);
  if (text == HostsTable::foreign_family) {
    storage.ss_family = AF_UNIX;
    return sizeof(sockaddr);
  }
  if (::inet_pton(AF_INET, text.c_str(), &four->sin_addr) == 1) {
    four->sin_family = AF_INET;
    four->sin_port = port;
    return sizeof *four;
  }
  if (::inet_pton(AF_INET6, text.c_str(), &six->sin6_addr) != 1) return 0;
  six->sin6_family = AF_INET6;
  six->sin6_port = port;
  return sizeof *six;
}

bool is_numeric(const std::string& name) {
  sockaddr_storage ignored;
  return name != HostsTable::foreign_family && parse_address(name, 0, ignored) != 0;
}

// The address as text in its usual short form; empty for other families.
std::string address_text(const sockaddr* address) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (address->sa_family == AF_INET)
    ::inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(address)->sin_addr, text.data(),
                text.size());
  if (address->sa_family == AF_INET6)
    ::inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr, text.data(),
                text.size());
  return text.data();
}

bool is_wanted(const addrinfo* hints, sa_family_t family) {
  return hints == nullptr || hints->ai_family == AF_UNSPEC || hints->ai_family == family;
}

// One list entry; its address is attached when the list is complete.
addrinfo make_entry(const addrinfo* hints, sa_family_t family, socklen_t length) {
  addrinfo entry{};
  entry.ai_family = family;
  entry.ai_socktype =
      hints != nullptr && hints->ai_socktype != 0 ? hints->ai_socktype : SOCK_STREAM;
  entry.ai_protocol = hints != nullptr ? hints->ai_protocol : 0;
  entry.ai_addrlen = length;
  return entry;
}

AddressList make_list(const NameEntry& name, const char* service, const addrinfo* hints) {
  const unsigned long port = service != nullptr ? std::strtoul(service, nullptr, 10) : 0;
  AddressList list;
  for (const std::string& text : name.addresses) {
    sockaddr_storage address;
    const socklen_t length = parse_address(text, htons(static_cast<std::uint16_t>(port)), address);
    if (length == 0) throw std::invalid_argument("no numeric address: " + text);
    if (!is_wanted(hints, address.ss_family)) continue;
    list.addresses.push_back(address);
    list.entries.push_back(make_entry(hints, address.ss_family, length));
  }
  return list;
}

// Keeps the list until it is freed and returns its first entry; null for an empty one.
addrinfo* hand_out(AddressList list) {
  if (list.entries.empty()) return nullptr;
  AddressList& kept = lists_handed_out.emplace_back(std::move(list));
  for (std::size_t i = 0; i < kept.entries.size(); ++i) {
    kept.entries[i].ai_addr = reinterpret_cast<sockaddr*>(&kept.addresses[i]);
    kept.entries[i].ai_next = i + 1 < kept.entries.size() ? &kept.entries[i + 1] : nullptr;
  }
  return kept.entries.data();
}

int resolve(const char* name, const char* service, const addrinfo* hints, addrinfo** result) {
  table->resolved.emplace_back(name);
  const auto found = table->names.find(name);
  if (found == table->names.end()) return EAI_NONAME;
  const NameEntry& entry = found->second;
  if (entry.error != 0) {
    errno = entry.error_number;
    return entry.error;
  }
  *result = hand_out(make_list(entry, service, hints));
  return 0;
}

ReverseAnswer look_up_reverse(const std::string& address) {
  table->reversed.push_back(address);
  const auto found = table->reverse.find(address);
  if (found == table->reverse.end()) return ReverseAnswer::name(address);
  std::vector<ReverseAnswer>& answers = found->second;
  ReverseAnswer answer = answers.front();
  if (answers.size() > 1) answers.erase(answers.begin());
  return answer;
}

int copy_text(const std::string& text, char* target, std::size_t size, int error_if_short) {
  if (text.size() >= size) return error_if_short;
  std::memcpy(target, text.c_str(), text.size() + 1);
  return 0;
}

// Which addresses a lookup is about, in one spelling.
std::string normalised(const std::string& address) {
  sockaddr_storage storage;
  if (!is_numeric(address)) throw std::invalid_argument("no numeric address: " + address);
  parse_address(address, 0, storage);
  return address_text(reinterpret_cast<const sockaddr*>(&storage));
}

bool free_own_list(const addrinfo* list) {
  const std::lock_guard<std::mutex> guard(table_mutex);
  return lists_handed_out.remove_if(
             [list](const AddressList& own) { return own.entries.data() == list; }) != 0;
}

}  // namespace

HostsTable::HostsTable() {
  const std::lock_guard<std::mutex> guard(table_mutex);
  if (table != nullptr) throw std::logic_error("there is a HostsTable already");
  table = std::make_unique<Table>();
}

HostsTable::~HostsTable() {
  const std::lock_guard<std::mutex> guard(table_mutex);
  table.reset();
}

HostsTable& HostsTable::add(const std::string& name, const std::vector<std::string>& addresses) {
  const std::lock_guard<std::mutex> guard(table_mutex);
  table->names[name] = NameEntry{.addresses = addresses};
  return *this;
}

HostsTable& HostsTable::add_failure(const std::string& name, int error, int error_number) {
  const std::lock_guard<std::mutex> guard(table_mutex);
  table->names[name] = NameEntry{.error = error, .error_number = error_number, .addresses = {}};
  return *this;
}

HostsTable& HostsTable::add_reverse(const std::string& address,
                                    const std::vector<ReverseAnswer>& answers) {
  const std::lock_guard<std::mutex> guard(table_mutex);
  table->reverse[normalised(address)] = answers;
  return *this;
}

HostsTable& HostsTable::set_host_name(const std::string& name) {
  const std::lock_guard<std::mutex> guard(table_mutex);
  table->host_name = name;
  table->host_name_error = 0;
  return *this;
}

HostsTable& HostsTable::set_host_name_failure(int error_number) {
  const std::lock_guard<std::mutex> guard(table_mutex);
  table->host_name_error = error_number;
  return *this;
}

std::vector<std::string> HostsTable::resolved_names() const {
  const std::lock_guard<std::mutex> guard(table_mutex);
  return table->resolved;
}

std::vector<std::string> HostsTable::reversed_addresses() const {
  const std::lock_guard<std::mutex> guard(table_mutex);
  return table->reversed;
}

// The resolver's functions, defined in the program and so found before the C library's by every
// library of the process. Without a table they pass the call on.
#pragma GCC visibility push(default)
extern "C" {

int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** result) {
  {
    const std::lock_guard<std::mutex> guard(table_mutex);
    if (table != nullptr && name != nullptr && (table->names.contains(name) || !is_numeric(name)))
      return resolve(name, service, hints, result);
  }
  return real<decltype(getaddrinfo)>("getaddrinfo")(name, service, hints, result);
}

void freeaddrinfo(addrinfo* list) noexcept {
  if (list == nullptr || free_own_list(list)) return;
  real<decltype(freeaddrinfo)>("freeaddrinfo")(list);
}

int getnameinfo(const sockaddr* address, socklen_t length, char* host, socklen_t host_size,
                char* service, socklen_t service_size, int flags) {
  {
    const std::lock_guard<std::mutex> guard(table_mutex);
    const bool wants_name = host != nullptr && (flags & NI_NUMERICHOST) == 0;
    if (const std::string text = address_text(address);
        table != nullptr && wants_name && !text.empty()) {
      const ReverseAnswer answer = look_up_reverse(text);
      return answer.error != 0 ? answer.error
                               : copy_text(answer.text, host, host_size, EAI_OVERFLOW);
    }
  }
  return real<decltype(getnameinfo)>("getnameinfo")(address, length, host, host_size, service,
                                                    service_size, flags);
}

int gethostname(char* name, std::size_t size) noexcept {
  {
    const std::lock_guard<std::mutex> guard(table_mutex);
    if (table != nullptr && table->host_name_error != 0) {
      errno = table->host_name_error;
      return -1;
    }
    if (table != nullptr && table->host_name) {
      const int error = copy_text(*table->host_name, name, size, ENAMETOOLONG);
      if (error != 0) errno = error;
      return error == 0 ? 0 : -1;
    }
  }
  return real<decltype(gethostname)>("gethostname")(name, size);
}

}  // extern "C"
#pragma GCC visibility pop
