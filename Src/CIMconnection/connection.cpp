#include <exception>

#include "BRQ/Time.h"
#include "BRQ/Trace.h"
#include "CIMconnection/busy_flag.h"
#include "CIMconnection/curl_handle.h"
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

void trace_exception(const char* function, const std::exception& error) noexcept {
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source, "%s: Exception raised: %s",
            function, error.what());
}

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
}

void copy_texts(CIMconnection& target, const CIMconnection& source) {
  target.host = source.host;
  target.user = source.user;
  target.password = source.password;
  target.scheme = source.scheme;
  target.port = source.port;
  target.caFile = source.caFile;
  target.sslCert = source.sslCert;
  target.sslKey = source.sslKey;
  target.osName = source.osName;
  target.serverIP = source.serverIP;
  target.serverName = source.serverName;
  target.localIP = source.localIP;
}

void copy_exchange(CIMconnection& target, const CIMconnection& source) {
  target.request = source.request;
  target.responseHeader = source.responseHeader;
  target.responseBody = source.responseBody;
  target.result = source.result;
}

}  // namespace

void copy_server_record(CIMconnection& connection, const _THR_SERVER_* server) {
  static constexpr _THR_SERVER_ nothing{};
  const _THR_SERVER_& source = server != nullptr ? *server : nothing;
  connection.host = text_or_empty(source.host);
  connection.user = text_or_empty(source.user);
  connection.password = text_or_empty(source.password);
  connection.port = text_or_empty(source.port);
  connection.scheme = connection.port == https_port ? "https" : "http";
  connection.caFile = text_or_empty(source.caFile);
  connection.verifyPeer = connection.caFile.empty() ? 0 : 1;
  connection.sslCert = text_or_empty(source.certFile);
  connection.sslKey = text_or_empty(source.keyFile);
}

CIMconnection::CIMconnection()
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
      headers(nullptr) {
  lock.Init(lock_spin);
}

CIMconnection::CIMconnection(const CIMconnection& source) : CIMconnection() {
  *this = source;
}

CIMconnection::~CIMconnection() {
  release_in_any_case(*this);
}

CIMconnection& CIMconnection::operator=(const CIMconnection& source) noexcept {
  if (this == &source) return *this;
  try {
    releaseCurlHandle();
    copy_numbers(*this, source);
    copy_texts(*this, source);
    if (source.curl != nullptr) duplicateCurlHandle(source.curl);
    replace_header_list(*this, copy_header_list(source.headers));
    copy_exchange(*this, source);
  } catch (const std::exception& error) {
    trace_exception("CIMconnection::operator=", error);
  }
  return *this;
}

void CIMconnection::setHostUserPasswd(const _THR_SERVER_* server) noexcept {
  try {
    copy_server_record(*this, server);
  } catch (const std::exception& error) {
    trace_exception("setHostUserPasswd", error);
  }
}

void CIMconnection::setOSName(const std::string& name) noexcept {
  try {
    osName = name;
  } catch (const std::exception& error) {
    trace_exception("setOSName", error);
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
