#include "CIMconnection/status.h"

#include <curl/curl.h>

#include "BRQ/Trace.h"
#include "CIMconnection/credentials.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMconnection";

// Writes the trace line of a record; the caller has seen that its level is on.
void trace_record(const CIMconnection& connection, int code, const char* text, const char* file,
                  int line) {
  const std::string shown = text != nullptr ? text : curl_text(code);
  const std::string_view name = base_name(file != nullptr ? file : "");
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
            "[%s] SetCimStatus: %s@%d  ErrCode:%d %s", connection.host, name, line, code,
            without_echo(shown, wire_credentials(connection).view()));
}

// Writes the last exchange. A server may send back what it was sent, credentials included.
void trace_exchange(const CIMconnection& connection) {
  const SecretText credentials = wire_credentials(connection);
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
            "[%s] ------ REQUEST:\n%s------ RESPONSE-HEADER:\n%s------ RESPONSE:\n%s",
            connection.host, connection.request,
            without_echo(connection.responseHeader, credentials.view()),
            without_echo(connection.responseBody, credentials.view()));
}

}  // namespace

int record(CIMconnection& connection, int code, const char* text, int line) noexcept {
  return connection.SetCimStatus_FL(code, text, trace_source, line);
}

std::string_view base_name(std::string_view path) noexcept {
  return path.substr(path.find_last_of("\\/") + 1);
}

std::string curl_text(int code) {
  const bool known = code >= 0 && code < CURL_LAST;
  std::string text = curl_easy_strerror(known ? static_cast<CURLcode>(code) : CURL_LAST);
  blank_control_characters(text);
  return text;
}

void blank_control_characters(std::string& text) noexcept {
  for (char& character : text)
    if (static_cast<signed char>(character) < 32) character = ' ';
}

int CIMconnection::ChkCimStatus() noexcept {
  return cimStatus;
}

int CIMconnection::SetCimStatus_FL(int code, const char* text, const char* file,
                                   int line) noexcept {
  if (code != 0 && cimStatus == 0) {
    cimStatus = code;
    Debug_Request_Response();
  }
  if (!BRQ_MODULE_INFO_zuCIM.is_enabled(trace_level::warning)) return cimStatus;
  try {
    trace_record(*this, code, text, file, line);
  } catch (...) {
    // The code is recorded; only its trace line is lost.
  }
  return cimStatus;
}

void CIMconnection::Debug_Request_Response() noexcept {
  if (!BRQ_MODULE_INFO_zuCIM.is_enabled(trace_level::warning)) return;
  try {
    trace_exchange(*this);
  } catch (...) {
    // Without memory the dump is lost; it must not go out unmasked.
  }
}

}  // namespace zuCIM
