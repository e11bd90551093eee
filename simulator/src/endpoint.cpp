#include "endpoint.h"

#include <openssl/evp.h>

#include <string_view>

#include "names.h"

namespace simulator {

namespace {

constexpr const char* cimom_path = "/cimom";
constexpr std::string_view basic_scheme = "Basic ";

std::string base64(const std::string& text) {
  std::string out((text.size() + 2) / 3 * 4 + 1, '\0');
  const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(out.data()),
                                     reinterpret_cast<const unsigned char*>(text.data()),
                                     static_cast<int>(text.size()));
  out.resize(static_cast<std::size_t>(length));
  return out;
}

HttpAnswer refusal(const ProtocolError& error) {
  HttpAnswer answer{error.http_status(), {{"CIMError", error.what()}}, {}};
  if (!error.detail().empty()) {
    answer.headers.emplace_back("CIMErrorDetail", percent_encoded(error.detail()));
  }
  return answer;
}

}  // namespace

Endpoint::Endpoint(const Dispatcher& dispatcher, const Credentials& credentials)
    : dispatcher_(dispatcher),
      anonymous_(credentials.anonymous),
      expected_(base64(credentials.user + ':' + credentials.password)) {}

HttpAnswer Endpoint::answer(const HttpRequest& request) const {
  if (request.path != cimom_path) return {404, {}, {}};
  if (request.method != "POST") return {405, {{"Allow", "POST"}}, {}};
  if (!is_welcome(request.authorization)) {
    return {401, {{"WWW-Authenticate", "Basic realm=\"zucim-simulator\""}}, {}};
  }
  try {
    return operate(request);
  } catch (const ProtocolError& error) {
    return refusal(error);
  }
}

bool Endpoint::is_welcome(const std::string& authorization) const {
  if (anonymous_) return true;
  const std::string_view given = authorization;
  return same_name(given.substr(0, basic_scheme.size()), basic_scheme) &&
         given.substr(basic_scheme.size()) == expected_;
}

HttpAnswer Endpoint::operate(const HttpRequest& request) const {
  RequestMessage message;
  read_request(message, request.body, request.cim);
  message.peer = request.peer;
  return {
      200,
      {{"Content-Type", "application/xml; charset=\"utf-8\""}, {"CIMOperation", "MethodResponse"}},
      dispatcher_.answer(message)};
}

}  // namespace simulator
