#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "BRQ/CriticalSection.h"
#include "zuCIM/element.h"
#include "zuCIM/export.h"

struct curl_slist;

namespace zuCIM {

// What a caller knows of a server. All seven pointers must be valid; a text that is not needed is
// empty. The texts are copied.
struct _THR_SERVER_ {
  // Host name or address.
  const char* host;
  // User name for HTTP Basic authentication.
  const char* user;
  // Its password.
  const char* password;
  // TCP port as text; "5989" selects HTTPS, every other text HTTP.
  const char* port;
  // CA certificate file (PEM); a non-empty text switches verification of the server's certificate
  // on: it must be valid today and issued by one of these. Without it any certificate is taken,
  // and anybody on the way can pose as the server. The host name in the certificate is verified
  // only where CIMconnection::verifyHost asks for it.
  const char* caFile;
  // Client certificate file (PEM).
  const char* certFile;
  // Key of the client certificate (PEM).
  const char* keyFile;
};

// Bit 0 makes libcurl write its verbose output to standard error; any bit makes subscribe_check
// trace the instances that it finds.
extern ZUCIM_API int do_cim_debug;

// How much a connection takes of one answer, unless its members say otherwise.
namespace answer_limit {
// Bytes of the body.
inline constexpr std::size_t largest_body = 256 * 1024 * 1024;
// Bytes of all header lines together, interim answers included.
inline constexpr std::size_t largest_header = 256 * 1024;
}  // namespace answer_limit

// The oldest version of TLS that a connection speaks.
enum class OldestTls : std::int32_t {
  // What libcurl and its TLS library take by themselves.
  any,
  version_1_2,
  version_1_3,
};

// The way to one server: address and credentials, the transfer handle, the texts of one exchange,
// the parsed answer and the status of the last operation.
//
// Thread rule: one thread at a time; ESXi_Occupied is the agreement between threads that share a
// connection.
class ZUCIM_API CIMconnection {
 public:
  std::string host;
  std::string user;
  std::string password;
  // "https" when the port is "5989", else "http".
  std::string scheme;
  std::string port;
  std::string caFile;
  std::string sslCert;
  std::string sslKey;
  // Non-zero exactly when caFile is not empty.
  std::int32_t verifyPeer;
  // Status of the last operation, 0 for success.
  std::int32_t cimStatus;
  // Bits of the last failure, see info_flag.
  std::uint32_t infoFlags;
  // The id of the last request; 1000 before the first.
  std::int32_t messageId;
  // Time of construction, seconds since the epoch.
  std::uint32_t createdAt;
  // Extra seconds for the next exchange only; may be negative.
  std::int32_t extraTimeOut;
  // For the caller; copied by assignment.
  std::int32_t reservedInt;
  // The busy flag. While it is false the transfer handle can be neither made, used nor released.
  bool esxiBusy;
  // Set it to true to work without resolved addresses (serverIP, localIP).
  bool skipIpCheck;
  // Text of the request.
  std::string request;
  // Header lines of the last answer, as they came.
  std::string responseHeader;
  // Body of the last answer, as it came.
  std::string responseBody;
  // Root of the parsed answer; valid until the next request.
  CIMelement result;
  // This machine's address, set by admission.
  std::string localIP;
  // The server's address, set by admission.
  std::string serverIP;
  // The server's full name, set by admission.
  std::string serverName;
  std::string osName;
  // libcurl's easy handle; null when there is none.
  void* curl;
  // Header list of the current request; null when there is none.
  curl_slist* headers;
  BRQ::Threading::Native_OS::CCriticalSection lock;
  // Most bytes of an answer's body, answer_limit::largest_body unless changed. A longer answer ends
  // the exchange with status 23 and is dropped.
  std::size_t largestBody;
  // The same for its header lines, answer_limit::largest_header unless changed.
  std::size_t largestHeader;
  // Set it to true, before the first exchange, to have the name in the server's certificate
  // compared with `host`; a certificate without it ends the exchange with status 60. It says
  // nothing about who issued the certificate: that is what caFile is for. Without caFile the name
  // is compared as well, but anybody may have written it.
  bool verifyHost;
  // Set it, before the first exchange, to refuse servers that speak only older versions of TLS.
  OldestTls oldestTls;

  // Makes a connection to nowhere that refuses transfers until its busy flag is set.
  CIMconnection() noexcept;
  // Copies a connection, see operator=.
  CIMconnection(const CIMconnection& source) noexcept;
  // Releases the transfer handle, whatever the busy flag says.
  ~CIMconnection();
  // Copies everything but the lock; the header list is duplicated, and so is the source's transfer
  // handle, if it has one: the old handle is freed then. From a source without a handle a target
  // that is not busy keeps its old one. Without memory the target stays as it was and gets status
  // 1001.
  CIMconnection& operator=(const CIMconnection& source) noexcept;

  // Copies the server record into the connection. A null record or text counts as empty. Without
  // memory the connection keeps the old record and gets status 1001.
  void setHostUserPasswd(const _THR_SERVER_* server) noexcept;
  // Stores the name of the server's operating system.
  void setOSName(const std::string& name) noexcept;
  // Sets the extra time-out, in seconds, of the next exchange. A negative one also switches retries
  // off.
  void SetExtraTimeOut(int seconds) noexcept;
  // The status of the last operation.
  int ChkCimStatus() noexcept;
  // Records `code` as the status if none is recorded yet and traces it. A null `text` means
  // libcurl's text for the code; `file` and `line` are the position that found the failure.
  // Returns the status that is recorded now.
  int SetCimStatus_FL(int code, const char* text, const char* file, int line) noexcept;
  // Writes the last request and answer to the trace, at level 4.
  void Debug_Request_Response() noexcept;

  // Empties the texts and the tree of the last exchange.
  void cleanXMLbuffer() noexcept;
  // Makes sure that there is a transfer handle with the TLS settings. Returns the status: 0, 27 for
  // a connection that is not busy, 5003 or 5004 for missing addresses, or a libcurl code.
  int initCurlHandle() noexcept;
  // Releases handle and header list and empties the texts; only sets status 27 when the connection
  // is not busy.
  void releaseCurlHandle() noexcept;
  // Makes `curl` a duplicate of another easy handle, or null.
  void duplicateCurlHandle(void* handle) noexcept;

  // Takes (true) or gives back (false) the connection. Taking one that is taken waits for it, at
  // most 30 seconds, and then takes it all the same.
  void ESXi_Occupied(bool occupied) noexcept;
  // Resolves `name` to the address text `ip` and, unless `fqdn` is null, to a full name. Status
  // 5003 when no address was found.
  void setIPAddress(const std::string& name, std::string& ip, std::string* fqdn) noexcept;
  // Posts `request` and parses the answer into `result`. `method` goes into the CIMMethod header,
  // `object` into the CIMObject header; control characters in them are refused with status 1001.
  // Returns the status.
  int sendRequest_recvResponse(const char* method, const char* object) noexcept;
};

}  // namespace zuCIM
