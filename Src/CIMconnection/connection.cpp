#include <cstring>
#include <exception>
#include <string>
#include <utility>

#include "BRQ/Time.h"
#include "BRQ/Trace.h"
#include "CIMconnection/busy_flag.h"
#include "CIMconnection/curl_handle.h"
#include "CIMconnection/registry.h"
#include "CIMconnection/request_headers.h"
#include "CIMconnection/server_record.h"
#include "zuCIM/connection.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMconnection";
constexpr unsigned lock_spin = 1000;
constexpr int message_id_before_the_first = 1000;
constexpr const char* https_port = "5989";

const char* text_or_empty(const char* text) noexcept {
  return text != nullptr ? text : "";
}

// Records and traces that a function ran out of memory.
void report(CIMconnection& connection, const char* function, const std::exception& error) noexcept {
  connection.cimStatus = status::failure;
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source, "%s: Exception raised: %s",
            function, error.what());
}

// Overwrites a text that is about to be given back, so that it does not stay in free memory.
void wipe(std::string& text) noexcept {
  ::explicit_bzero(text.data(), text.size());
}

// Changes of several strings are made all or not at all: the new values are made first, and then
// swapped in, which cannot fail.

// What a server record says, in copies.
struct ServerTexts {
  std::string host;
  std::string user;
  std::string password;
  std::string scheme;
  std::string port;
  std::string ca_file;
  std::string certificate;
  std::string key;

  explicit ServerTexts(const _THR_SERVER_& source)
      : host(text_or_empty(source.host)),
        user(text_or_empty(source.user)),
        password(text_or_empty(source.password)),
        port(text_or_empty(source.port)),
        ca_file(text_or_empty(source.caFile)),
        certificate(text_or_empty(source.certFile)),
        key(text_or_empty(source.keyFile)) {
    scheme = port == https_port ? "https" : "http";
  }
  explicit ServerTexts(const CIMconnection& source)
      : host(source.host),
        user(source.user),
        password(source.password),
        scheme(source.scheme),
        port(source.port),
        ca_file(source.caFile),
        certificate(source.sslCert),
        key(source.sslKey) {}

  ServerTexts(const ServerTexts&) = delete;
  ServerTexts& operator=(const ServerTexts&) = delete;
  ~ServerTexts() { wipe(password); }

  void swap_into(CIMconnection& target) noexcept {
    target.host.swap(host);
    target.user.swap(user);
    target.password.swap(password);
    target.scheme.swap(scheme);
    target.port.swap(port);
    target.caFile.swap(ca_file);
    target.sslCert.swap(certificate);
    target.sslKey.swap(key);
  }
};

// What assignment has to ask memory for, in copies.
struct ConnectionTexts {
  ServerTexts server;
  std::string os_name;
  std::string local_ip;
  std::string server_ip;
  std::string server_name;
  std::string request;
  std::string response_header;
  std::string response_body;
  HeaderList headers;

  explicit ConnectionTexts(const CIMconnection& source)
      : server(source),
        os_name(source.osName),
        local_ip(source.localIP),
        server_ip(source.serverIP),
        server_name(source.serverName),
        request(source.request),
        response_header(source.responseHeader),
        response_body(source.responseBody),
        headers(copy_header_list(source.headers)) {}

  void swap_into(CIMconnection& target) noexcept {
    server.swap_into(target);
    target.osName.swap(os_name);
    target.localIP.swap(local_ip);
    swap_server_address(target, server_ip, server_name);
    target.request.swap(request);
    target.responseHeader.swap(response_header);
    target.responseBody.swap(response_body);
    replace_header_list(target, std::move(headers));
  }
};

void copy_numbers(CIMconnection& target, const CIMconnection& source) noexcept {
  target.cimStatus = source.cimStatus;
  target.infoFlags = source.infoFlags;
  target.messageId = source.messageId;
  target.createdAt = source.createdAt;
  target.verifyPeer = source.verifyPeer;
  target.extraTimeOut = source.extraTimeOut;
  target.reservedInt = source.reservedInt;
  set_busy(target, is_busy(source));
  target.skipIpCheck = source.skipIpCheck;
  target.largestBody = source.largestBody;
  target.largestHeader = source.largestHeader;
  target.verifyHost = source.verifyHost;
  target.oldestTls = source.oldestTls;
}

// Copies all but the texts, which `texts` brings.
void copy_connection(CIMconnection& target, const CIMconnection& source,
                     ConnectionTexts& texts) noexcept {
  copy_numbers(target, source);
  texts.swap_into(target);
  if (source.curl != nullptr) target.duplicateCurlHandle(source.curl);
  target.result = source.result;
}

}  // namespace

void copy_server_record(CIMconnection& connection, const _THR_SERVER_* server) {
  static constexpr _THR_SERVER_ nothing{};
  ServerTexts texts(server != nullptr ? *server : nothing);
  texts.swap_into(connection);
  connection.verifyPeer = connection.caFile.empty() ? 0 : 1;
}

CIMconnection::CIMconnection() noexcept
    : verifyPeer(0),
      cimStatus(status::success),
      infoFlags(0),
      messageId(message_id_before_the_first),
      createdAt(BRQ::Misc::seconds_now()),
      extraTimeOut(0),
      reservedInt(0),
      esxiBusy(false),
      skipIpCheck(false),
      curl(nullptr),
      headers(nullptr),
      largestBody(answer_limit::largest_body),
      largestHeader(answer_limit::largest_header),
      verifyHost(false),
      oldestTls(OldestTls::any) {
  lock.Init(lock_spin);
}

CIMconnection::CIMconnection(const CIMconnection& source) noexcept : CIMconnection() {
  try {
    ConnectionTexts texts(source);
    copy_connection(*this, source, texts);
  } catch (const std::exception& error) {
    report(*this, "CIMconnection::CIMconnection", error);
  }
}

CIMconnection::~CIMconnection() {
  release_in_any_case(*this);
  wipe(password);
}

CIMconnection& CIMconnection::operator=(const CIMconnection& source) noexcept {
  if (this == &source) return *this;
  try {
    ConnectionTexts texts(source);
    releaseCurlHandle();
    copy_connection(*this, source, texts);
  } catch (const std::exception& error) {
    report(*this, "CIMconnection::operator=", error);
  }
  return *this;
}

void CIMconnection::setHostUserPasswd(const _THR_SERVER_* server) noexcept {
  try {
    copy_server_record(*this, server);
  } catch (const std::exception& error) {
    report(*this, "setHostUserPasswd", error);
  }
}

void CIMconnection::setOSName(const std::string& name) noexcept {
  try {
    osName = name;
  } catch (const std::exception& error) {
    report(*this, "setOSName", error);
  }
}

void CIMconnection::SetExtraTimeOut(int seconds) noexcept {
  extraTimeOut = seconds;
}

void CIMconnection::cleanXMLbuffer() noexcept {
  request.clear();
  responseHeader.clear();
  responseBody.clear();
  result.eclean();
}

}  // namespace zuCIM
