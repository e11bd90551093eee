#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <exception>
#include <string>
#include <string_view>
#include <type_traits>

#include "BRQ/Trace.h"
#include "CIMconnection/busy_flag.h"
#include "CIMconnection/credentials.h"
#include "CIMconnection/curl_option.h"
#include "CIMconnection/data_callback.h"
#include "CIMconnection/progress.h"
#include "CIMconnection/request_headers.h"
#include "CIMconnection/response_scan.h"
#include "CIMconnection/running_exchange.h"
#include "CIMconnection/status.h"
#include "CIMconnection/verbose_output.h"
#include "zuCIM/connection.h"
#include "zuCIM/indication.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {

int do_cim_debug = 0;

namespace {

constexpr const char* trace_source = "Src/CIMconnection";

// libcurl would rather have XFERINFOFUNCTION, which counts in integers. The watch was built on the
// older callback, which every libcurl has.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
constexpr CURLoption progress_function_option = CURLOPT_PROGRESSFUNCTION;
#pragma GCC diagnostic pop

// curl_easy_setopt takes anything, so the types of the callbacks are checked here.
static_assert(std::is_convertible_v<decltype(&append_limited_data), curl_write_callback>);
static_assert(std::is_convertible_v<decltype(&write_verbose_output), curl_debug_callback>);
static_assert(std::is_convertible_v<decltype(&checkProgress), curl_progress_callback>);

int read_shared(int& number) noexcept {
  return std::atomic_ref<int>(number).load();
}

bool is_verbose() noexcept {
  return (read_shared(do_cim_debug) & 1) != 0;
}

int refuse_transfer(CIMconnection& connection) noexcept {
  connection.cimStatus = status::busy_flag_not_set;
  connection.infoFlags = info_flag::not_busy;
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
            "[%s] Ups, curl_easy_perform() errCode=%d Exception raised: ESXi_Busy is not true!",
            connection.host, status::busy_flag_not_set);
  return status::busy_flag_not_set;
}

void mark_credentials_refused(CIMconnection& connection) noexcept {
  connection.infoFlags &= ~info_flag::no_connection;
  connection.infoFlags |= info_flag::credentials_refused;
}

// Lends a transfer handle pointers into this exchange. They are taken back at the end, since the
// handle, and every duplicate of it, lives longer than what they point at.
class LentPointers {
 public:
  explicit LentPointers(void* handle) noexcept : handle_(handle) {}
  LentPointers(const LentPointers&) = delete;
  LentPointers& operator=(const LentPointers&) = delete;
  ~LentPointers() {
    void* const nothing = nullptr;
    for (const CURLoption option : {CURLOPT_PROGRESSDATA, CURLOPT_HTTPHEADER, CURLOPT_WRITEDATA,
                                    CURLOPT_HEADERDATA, CURLOPT_ERRORBUFFER, CURLOPT_DEBUGDATA})
      curl_easy_setopt(handle_, option, nothing);
    // Without any text libcurl would read the body from standard input.
    curl_easy_setopt(handle_, CURLOPT_POSTFIELDS, "");
    curl_easy_setopt(handle_, CURLOPT_POSTFIELDSIZE, 0L);
  }

 private:
  void* handle_;
};

bool has_control_character(const char* text) noexcept {
  if (text == nullptr) return false;
  const std::string_view characters(text);
  return std::any_of(characters.begin(), characters.end(), [](char character) {
    return static_cast<unsigned char>(character) < ' ' || character == '\x7F';
  });
}

// What would end its header line could start another one.
bool is_fit_for_headers(CIMconnection& connection, const char* method,
                        const char* object) noexcept {
  if (!has_control_character(method) && !has_control_character(object)) return true;
  record(connection, status::failure,
         "sendRequest_recvResponse: control character in method or object");
  return false;
}

bool is_ready(CIMconnection& connection) noexcept {
  if (connection.user.empty() || connection.password.empty() || connection.port.empty()) {
    mark_credentials_refused(connection);
    record(connection, status::credentials,
           "sendRequest_recvResponse: user, passwd or port not found");
    return false;
  }
  if (connection.curl == nullptr && connection.initCurlHandle() != status::success) {
    record(connection, status::failure,
           "sendRequest_recvResponse: curl interface is not initialized.");
    return false;
  }
  return true;
}

bool set_address_options(CIMconnection& connection) {
  const std::string url =
      connection.scheme + "://" + connection.host + ":" + connection.port + "/cimom";
  return set_option(connection, CURLOPT_URL, url.c_str()) &&
         set_option(connection, CURLOPT_NOPROGRESS, 0L) &&
         set_option(connection, CURLOPT_POST, 1L) &&
         // Unless the caller asks for it, the name in the certificate is not compared with the
         // host.
         set_option(connection, CURLOPT_SSL_VERIFYHOST, connection.verifyHost ? 2L : 0L) &&
         set_option(connection, CURLOPT_HTTPAUTH, CURLAUTH_BASIC) &&
         set_option(connection, CURLOPT_USERNAME, connection.user.c_str()) &&
         set_option(connection, CURLOPT_PASSWORD, connection.password.c_str());
}

// Uses the extra time-out up: it holds for one exchange.
bool set_time_options(CIMconnection& connection, Progress& progress) noexcept {
  progress.host = connection.host.c_str();
  progress.timeout =
      transfer_timeout(connection.extraTimeOut, read_shared(ListenerThreadIsActive) != 0);
  connection.extraTimeOut = 0;
  return set_option(connection, CURLOPT_PROGRESSDATA, &progress) &&
         set_option(connection, CURLOPT_CONNECTTIMEOUT, static_cast<long>(progress.timeout)) &&
         set_option(connection, CURLOPT_TIMEOUT,
                    static_cast<long>(last_resort_timeout(progress.timeout))) &&
         set_option(connection, progress_function_option, &checkProgress) &&
         set_option(connection, CURLOPT_NOSIGNAL, 1L);
}

// The status stays as it is when memory is short; only the trace tells.
bool make_headers(CIMconnection& connection, const char* method, const char* object) {
  replace_header_list(connection, nullptr);
  replace_header_list(connection, make_header_list(method, object));
  if (connection.headers != nullptr) return true;
  record(connection, CURLE_OK);
  return false;
}

// What one transfer leaves behind beside the texts of its connection.
struct Transfer {
  explicit Transfer(CIMconnection& connection)
      : header{connection.responseHeader, connection.largestHeader},
        body{connection.responseBody, connection.largestBody},
        credentials(is_verbose() ? wire_credentials(connection) : SecretText()) {}

  Progress progress;
  LimitedText header;
  LimitedText body;
  // What must not show in libcurl's verbose output; empty when that is off, never when it is on.
  SecretText credentials;
  // What libcurl has to say about a failure beyond its code.
  std::array<char, CURL_ERROR_SIZE> detail{};
  CURLcode result = CURLE_OK;
};

// None of these is essential.
void set_diagnostic_options(CIMconnection& connection, Transfer& transfer) noexcept {
  curl_easy_setopt(connection.curl, CURLOPT_ERRORBUFFER, transfer.detail.data());
  curl_easy_setopt(connection.curl, CURLOPT_DEBUGFUNCTION, &write_verbose_output);
  curl_easy_setopt(connection.curl, CURLOPT_DEBUGDATA, &transfer.credentials);
  curl_easy_setopt(connection.curl, CURLOPT_VERBOSE, transfer.credentials.empty() ? 0L : 1L);
}

bool set_data_options(CIMconnection& connection, Transfer& transfer) noexcept {
  if (!set_option(connection, CURLOPT_HTTPHEADER, connection.headers) ||
      !set_option(connection, CURLOPT_WRITEFUNCTION, &append_limited_data) ||
      !set_option(connection, CURLOPT_WRITEDATA, &transfer.body) ||
      !set_option(connection, CURLOPT_HEADERFUNCTION, &append_limited_data) ||
      !set_option(connection, CURLOPT_HEADERDATA, &transfer.header) ||
      !set_option(connection, CURLOPT_FAILONERROR, 1L))
    return false;
  set_diagnostic_options(connection, transfer);
  return set_option(connection, CURLOPT_POSTFIELDS, connection.request.c_str()) &&
         set_option(connection, CURLOPT_POSTFIELDSIZE,
                    static_cast<long>(connection.request.size()));
}

CURLcode perform(CIMconnection& connection) noexcept {
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::detail, trace_source,
            "[%s]       Before curl_easy_perform()", connection.host);
  const CURLcode result = curl_easy_perform(connection.curl);
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::detail, trace_source,
            "[%s]       After curl_easy_perform() ret=%d", connection.host,
            static_cast<int>(result));
  return result;
}

bool means_no_connection(CURLcode result) noexcept {
  return result == CURLE_ABORTED_BY_CALLBACK || result == CURLE_COULDNT_CONNECT ||
         result == CURLE_GOT_NOTHING;
}

bool is_of_tls(CURLcode result) noexcept {
  constexpr std::array codes{CURLE_SSL_CONNECT_ERROR,     CURLE_PEER_FAILED_VERIFICATION,
                             CURLE_SSL_CERTPROBLEM,       CURLE_SSL_CACERT_BADFILE,
                             CURLE_SSL_INVALIDCERTSTATUS, CURLE_SSL_CIPHER};
  return std::find(codes.begin(), codes.end(), result) != codes.end();
}

// TLS 1.3 lets a server refuse a client when its handshake is over. The code of that is one that
// plain connections have as well, so that libcurl's words have to tell.
bool is_of_tls(const CIMconnection& connection, const Transfer& transfer) noexcept {
  if (is_of_tls(transfer.result)) return true;
  if (transfer.result != CURLE_SEND_ERROR && transfer.result != CURLE_RECV_ERROR) return false;
  const std::string_view detail(transfer.detail.data());
  return connection.scheme == "https" && (detail.find("SSL") != std::string_view::npos ||
                                          detail.find("TLS") != std::string_view::npos);
}

// Tells what a failed transfer was about, where its code does not say it all.
void explain_transfer(const CIMconnection& connection, const Transfer& transfer) noexcept {
  if (is_of_tls(connection, transfer))
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
              "[%s] TLS: %s (CA file '%s')", connection.host, transfer.detail.data(),
              connection.caFile);
}

// An answer that is too large is dropped: nobody wants a part of it, and it need not be parsed.
bool is_too_large(CIMconnection& connection, const Transfer& transfer) noexcept {
  if (!transfer.header.is_exceeded && !transfer.body.is_exceeded) return false;
  connection.responseHeader.clear();
  std::string().swap(connection.responseBody);
  record(connection, CURLE_WRITE_ERROR, "sendRequest_recvResponse: the answer is too large");
  return true;
}

void judge_transfer(CIMconnection& connection, const Transfer& transfer) noexcept {
  const CURLcode result = transfer.result;
  connection.infoFlags &= ~(info_flag::credentials_refused | info_flag::no_connection);
  if (result == CURLE_OK || is_too_large(connection, transfer)) return;
  record(connection, result);
  explain_transfer(connection, transfer);
  long response_code = -1;
  curl_easy_getinfo(connection.curl, CURLINFO_RESPONSE_CODE, &response_code);
  if (response_code == 401) {
    connection.infoFlags |= info_flag::credentials_refused;
    record(connection, status::credentials, "Invalid username/password");
  } else if (means_no_connection(result)) {
    connection.infoFlags |= info_flag::no_connection;
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
              "[%s] info = 0x%x (NO_Connect)", connection.host, connection.infoFlags);
  }
}

void judge_body(CIMconnection& connection, CURLcode result) noexcept {
  if (result != CURLE_GOT_NOTHING && connection.responseBody.empty())
    record(connection, status::no_data, "No data received from server");
  else if (connection.result.ParseCIMXML(connection.responseBody) != 0)
    record(connection, status::unparseable_answer, "Can't parse the response");
}

void judge_error_element(CIMconnection& connection) noexcept {
  CIMelement* const error = find_error_element(connection.result);
  if (error == nullptr) return;
  const ErrorVerdict verdict = read_error_element(*error);
  record(connection, verdict.code, verdict.text);
}

void judge_status_line(CIMconnection& connection) {
  const auto line = find_status_line(connection.responseHeader);
  if (!line || line->number == 200) return;
  if (line->number == 401) mark_credentials_refused(connection);
  const int code = line->number != 0 ? http_status(line->number) : status::failure;
  record(connection, code, std::string(line->text).c_str());
}

void judge_cim_status_code(CIMconnection& connection) {
  const auto header = find_cim_status_code(connection.responseHeader);
  if (!header || header->number == 0) return;
  record(connection, http_status(header->number), std::string(header->text).c_str());
}

// Sends the request and collects the answer; false when it did not come so far that there is a
// transfer to judge.
bool run(CIMconnection& connection, const char* method, const char* object, Transfer& transfer) {
  const LentPointers lent(connection.curl);
  transfer.body.handle = connection.curl;
  if (!set_address_options(connection) || !set_time_options(connection, transfer.progress) ||
      !make_headers(connection, method, object) || !set_data_options(connection, transfer))
    return false;
  transfer.result = perform(connection);
  return true;
}

// The first failure that is found becomes the status, the later ones are traced only.
void judge_answer(CIMconnection& connection, const Transfer& transfer) {
  judge_transfer(connection, transfer);
  judge_body(connection, transfer.result);
  judge_error_element(connection);
  judge_status_line(connection);
  judge_cim_status_code(connection);
}

int exchange(CIMconnection& connection, const char* method, const char* object) {
  connection.cimStatus = status::success;
  connection.responseHeader.clear();
  connection.responseBody.clear();
  connection.result.eclean();
  Transfer transfer(connection);
  if (!is_ready(connection) || !is_fit_for_headers(connection, method, object) ||
      !run(connection, method, object, transfer))
    return connection.ChkCimStatus();
  judge_answer(connection, transfer);
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::progress, trace_source,
            "[%s]    Leave sendRequest_recvResponse() errCode=%d", connection.host,
            connection.cimStatus);
  return connection.ChkCimStatus();
}

}  // namespace

int CIMconnection::sendRequest_recvResponse(const char* method, const char* object) noexcept {
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::progress, trace_source,
            "[%s]    Enter sendRequest_recvResponse()", host);
  if (!is_busy(*this)) return refuse_transfer(*this);
  const RunningExchange running;
  try {
    return exchange(*this, method, object);
  } catch (const std::exception& error) {
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
              "sendRequest_recvResponse: Exception raised: %s", error.what());
    return record(*this, status::failure, error.what());
  }
}

}  // namespace zuCIM
