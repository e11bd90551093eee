#include "CIMconnection/curl_handle.h"

#include <curl/curl.h>

#include "BRQ/Trace.h"
#include "CIMconnection/busy_flag.h"
#include "CIMconnection/curl_option.h"
#include "CIMconnection/registry.h"
#include "CIMconnection/request_headers.h"
#include "CIMconnection/status.h"
#include "zuCIM/connection.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMconnection";

// Why no handle may be made; 0 with no text when it may.
struct Refusal {
  int code = status::success;
  const char* text = nullptr;
};

Refusal refusal_of(const CIMconnection& connection) noexcept {
  if (!is_busy(connection)) return {status::busy_flag_not_set, "initCurlHandle: ERROR ESXi_Busy"};
  if (connection.skipIpCheck) return {};
  if (connection.localIP.empty())
    return {status::local_address, "initCurlHandle: bad local-IP-Address"};
  if (connection.serverIP.empty())
    return {status::server_address, "initCurlHandle: bad server-IP-Address"};
  return {};
}

// Sets the PEM file of one half of the client's identity. The type needs no look: a libcurl that
// does not know it refuses the file too.
void set_pem_file(CIMconnection& connection, CURLoption type_option, CURLoption file_option,
                  const std::string& file) noexcept {
  curl_easy_setopt(connection.curl, type_option, "PEM");
  set_option(connection, file_option, file.c_str());
}

long ssl_version(OldestTls oldest) noexcept {
  switch (oldest) {
    case OldestTls::version_1_2:
      return CURL_SSLVERSION_TLSv1_2;
    case OldestTls::version_1_3:
      return CURL_SSLVERSION_TLSv1_3;
    default:
      return CURL_SSLVERSION_DEFAULT;
  }
}

// A failing option is recorded and does not keep the others from being set. The traced value names
// the last file that was set, it is no combination of bits.
void set_tls_options(CIMconnection& connection) noexcept {
  unsigned last_file = 0;
  if (!connection.sslCert.empty()) {
    set_pem_file(connection, CURLOPT_SSLCERTTYPE, CURLOPT_SSLCERT, connection.sslCert);
    last_file = 1;
  }
  if (!connection.sslKey.empty()) {
    set_pem_file(connection, CURLOPT_SSLKEYTYPE, CURLOPT_SSLKEY, connection.sslKey);
    last_file = 2;
  }
  if (!connection.caFile.empty()) {
    set_option(connection, CURLOPT_CAINFO, connection.caFile.c_str());
    last_file = 4;
  }
  set_option(connection, CURLOPT_SSL_VERIFYPEER, connection.verifyPeer != 0 ? 1L : 0L);
  set_option(connection, CURLOPT_SSLVERSION, ssl_version(connection.oldestTls));
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::detail, trace_source,
            "[%s]       initCurlHandle: SSL=0x%x", connection.host, last_file);
}

void make_handle(CIMconnection& connection) noexcept {
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::detail, trace_source,
            "[%s]       initCurlHandle: CURL_EASY_INIT done", connection.host);
  connection.curl = curl_easy_init();
  if (connection.curl == nullptr) {
    record(connection, CURLE_FAILED_INIT);
    return;
  }
  release_handles_at_exit();
  set_tls_options(connection);
}

}  // namespace

void release_in_any_case(CIMconnection& connection) noexcept {
  const bool was_busy = is_busy(connection);
  if (!was_busy) set_busy(connection, true);
  connection.releaseCurlHandle();
  if (!was_busy) set_busy(connection, false);
}

int CIMconnection::initCurlHandle() noexcept {
  cimStatus = status::success;
  const Refusal refusal = refusal_of(*this);
  if (refusal.code != status::success) return record(*this, refusal.code, refusal.text);
  replace_header_list(*this, nullptr);
  if (curl == nullptr) make_handle(*this);
  return ChkCimStatus();
}

void CIMconnection::releaseCurlHandle() noexcept {
  if (!is_busy(*this)) {
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::detail, trace_source,
              "releaseCurlHandle: ERROR ESXi_Busy");
    cimStatus = status::busy_flag_not_set;
    return;
  }
  replace_header_list(*this, nullptr);
  if (curl != nullptr) {
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::detail, trace_source,
              "[%s] releaseCurlHandle: CURL_EASY_CLEANUP   done", host);
    curl_easy_cleanup(curl);
    curl = nullptr;
  }
  cleanXMLbuffer();
}

void CIMconnection::duplicateCurlHandle(void* handle) noexcept {
  // The old handle goes last, since it may be the one to duplicate.
  void* const old_handle = curl;
  curl = handle != nullptr ? curl_easy_duphandle(handle) : nullptr;
  if (old_handle != nullptr) curl_easy_cleanup(old_handle);
  if (curl != nullptr)
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
              "[%s] duplicateCurlHandle: CURLhandle duplicated", host);
}

}  // namespace zuCIM
