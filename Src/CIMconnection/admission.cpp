#include <netdb.h>
#include <strings.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <memory>
#include <string>

#include "BRQ/Trace.h"
#include "CIMconnection/address_text.h"
#include "CIMconnection/registry.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMconnection";
constexpr std::size_t host_buffer_size = 1025;
constexpr std::size_t own_name_buffer_size = 128;

struct AddressListDeleter {
  void operator()(addrinfo* list) const noexcept { freeaddrinfo(list); }
};
using AddressList = std::unique_ptr<addrinfo, AddressListDeleter>;

bool equal_ignoring_case(const std::string& one, const std::string& other) noexcept {
  return strcasecmp(one.c_str(), other.c_str()) == 0;
}

void trace_found_name(const std::string& name, const std::string& ip, const std::string& found) {
  if (found == ip)
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
              "setIPAddress: [%s] ipAdrr:'%s' fqdn:'%s', Error???", name, ip, found);
  if (!equal_ignoring_case(found, name))
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::detail, trace_source,
              "setIPAddress: [%s] -> '%s'", name, found);
}

// The name that belongs to an address; empty when the reverse lookup fails.
std::string name_of(const addrinfo& entry, const std::string& name, const std::string& ip) {
  char buffer[host_buffer_size] = "";
  const int result =
      getnameinfo(entry.ai_addr, entry.ai_addrlen, buffer, sizeof buffer, nullptr, 0, 0);
  if (result == 0) {
    const std::string found = buffer;
    trace_found_name(name, ip, found);
    return found;
  }
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
            "setIPAddress: getnameinfo: Error in '%s' iret=%d WSAGetLastError=%d", name, result,
            errno);
  return {};
}

// What was found for a name.
struct Resolution {
  // What getaddrinfo returned; 0 for an empty name.
  int result = 0;
  std::string ip;
  std::string fqdn;
};

// Throws std::bad_alloc.
Resolution resolve(const std::string& name, bool wants_fqdn) {
  Resolution found;
  if (name.empty()) return found;
  addrinfo* entries = nullptr;
  found.result = getaddrinfo(name.c_str(), nullptr, nullptr, &entries);
  if (found.result != 0) return found;
  const AddressList list(entries);
  for (const addrinfo* entry = list.get(); entry != nullptr; entry = entry->ai_next) {
    if (found.ip.empty()) found.ip = usable_address_text(*entry->ai_addr);
    if (wants_fqdn && found.fqdn.empty()) found.fqdn = name_of(*entry, name, found.ip);
  }
  return found;
}

// The same; without memory it finds nothing and says so in the trace.
Resolution try_to_resolve(const std::string& name, bool wants_fqdn) noexcept {
  try {
    return resolve(name, wants_fqdn);
  } catch (const std::exception& error) {
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
              "setIPAddress: Exception raised: %s", error.what());
    return {.result = EAI_MEMORY, .ip = {}, .fqdn = {}};
  }
}

// This machine's name; empty when there is none.
std::string own_name() {
  char buffer[own_name_buffer_size] = "";
  if (gethostname(buffer, sizeof buffer) != 0) return {};
  buffer[sizeof buffer - 1] = '\0';
  return buffer;
}

void refuse(CIMcontainer& context, int code) noexcept {
  context.cimStatus = code;
  context.infoFlags &= ~info_flag::no_connection;
  context.infoFlags |= info_flag::credentials_refused | info_flag::not_busy;
}

bool is_same_server(const CIMcontainer& one, const CIMcontainer& other) noexcept {
  if (other.serverIP.empty() || other.serverName.empty()) return false;
  return one.serverIP == other.serverIP || one.serverName == other.serverName;
}

bool is_duplicate(const CIMcontainer& context) noexcept {
  for (int position = 0; position < getContainerSize(); ++position) {
    const CIMcontainer* const other = getContainer(static_cast<unsigned>(position));
    if (other == nullptr || other->index == context.index) continue;
    if (is_same_server(context, *other)) return true;
  }
  return false;
}

// Gives the context its address and name and tells whether another one has them. Both happen under
// one lock, so that of two contexts that are admitted at once only one passes.
bool claim_server(CIMcontainer& context, std::string& ip, std::string& name) noexcept {
  const BRQ::Threading::CSyncGuard guard(gCIMContainers.lock);
  swap_server_address(context, ip, name);
  return !context.serverIP.empty() && is_duplicate(context);
}

void check_server_address(CIMcontainer& context) noexcept {
  std::string ip;
  std::string name;
  context.setIPAddress(context.host, ip, &name);
  const bool has_duplicate = claim_server(context, ip, name);
  if (context.serverIP.empty()) {
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
              "[%s] addContainer: cannot get Host-IP-Address", context.host);
    refuse(context, status::server_address);
  } else if (has_duplicate) {
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
              "[%s] addContainer: duplicate IPaddress / FQDN", context.host);
    refuse(context, status::duplicate_server);
  }
  if (!context.serverIP.empty() && context.serverIP == context.serverName)
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
              "[%s] addContainer: IPaddress = FQDN -> Error???", context.host);
}

void check_local_address(CIMcontainer& context) {
  context.setIPAddress(own_name(), context.localIP, nullptr);
  if (!context.localIP.empty()) return;
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
            "[%s] addContainer: cannot get Client-IP-Address", context.host);
  refuse(context, status::local_address);
}

void check_credentials(CIMcontainer& context) noexcept {
  if (!context.user.empty() && !context.password.empty() && !context.port.empty()) return;
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
            "[%s] addContainer: user, passwd or port not found", context.host);
  refuse(context, status::credentials);
}

}  // namespace

void CIMconnection::setIPAddress(const std::string& name, std::string& ip,
                                 std::string* fqdn) noexcept {
  Resolution found = try_to_resolve(name, fqdn != nullptr);
  if (found.ip.empty()) {
    cimStatus = status::server_address;
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
              "[%s] setIPAddress: cannot get IP-Address. ret=%d WSAGetLastError=%d", name,
              found.result, errno);
  }
  // The name may be one of the strings that are written to.
  ip.swap(found.ip);
  if (fqdn != nullptr) fqdn->swap(found.fqdn);
}

void CIMcontainer::addContainer() noexcept {
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::progress, trace_source, "[%s] ENTER addContainer()",
            host);
  try {
    cimStatus = status::success;
    check_server_address(*this);
    check_local_address(*this);
    check_credentials(*this);
  } catch (const std::exception& error) {
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
              "addContainer: Exception raised: %s", error.what());
    refuse(*this, status::failure);
  }
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::progress, trace_source, "[%s] LEAVE addContainer",
            host);
}

}  // namespace zuCIM
