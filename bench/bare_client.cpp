#include "bare_client.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace bench {
namespace {

std::size_t append(char* data, std::size_t size, std::size_t count, void* text) {
  static_cast<std::string*>(text)->append(data, size * count);
  return size * count;
}

}  // namespace

BareClient::BareClient(const std::string& host, const std::string& port, const std::string& method,
                       std::string request)
    : request_(std::move(request)), handle_(curl_easy_init(), curl_easy_cleanup) {
  const std::string method_line = "CIMMethod: " + method;
  for (const char* const line :
       {"Content-type: application/xml; charset=\"utf-8\"", "Expect:", "CIMOperation: MethodCall",
        method_line.c_str(), "CIMObject: root%2Fcimv2"})
    headers_.reset(curl_slist_append(headers_.release(), line));
  set_request(host, port);
  set_callbacks();
}

void BareClient::set_request(const std::string& host, const std::string& port) {
  CURL* const handle = handle_.get();
  const std::string url = "http://" + host + ':' + port + "/cimom";
  curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle, CURLOPT_HTTPAUTH, CURLAUTH_BASIC);
  curl_easy_setopt(handle, CURLOPT_USERNAME, "root");
  curl_easy_setopt(handle, CURLOPT_PASSWORD, "secret");
  curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers_.get());
  curl_easy_setopt(handle, CURLOPT_POSTFIELDS, request_.c_str());
  curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE, static_cast<long>(request_.size()));
}

void BareClient::set_callbacks() {
  CURL* const handle = handle_.get();
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &append);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &body_);
  curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &append);
  curl_easy_setopt(handle, CURLOPT_HEADERDATA, &header_);
}

const std::string& BareClient::post() {
  header_.clear();
  body_.clear();
  const CURLcode result = curl_easy_perform(handle_.get());
  if (result == CURLE_OK) return body_;
  std::fprintf(stderr, "libcurl alone: %s\n", curl_easy_strerror(result));
  std::abort();
}

}  // namespace bench
