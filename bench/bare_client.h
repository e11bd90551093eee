#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>

namespace bench {

// libcurl alone: posts one fixed request, with the headers that a CIM operation has, and collects
// the answer. The options are set once, and the connection is kept.
class BareClient {
 public:
  BareClient(const std::string& host, const std::string& port, const std::string& method,
             std::string request);

  // Posts the request; the answer's body, valid until the next call. Aborts when that fails.
  const std::string& post();

 private:
  void set_request(const std::string& host, const std::string& port);
  void set_callbacks();

  std::string request_;
  std::string header_;
  std::string body_;
  std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> headers_{nullptr,
                                                                       curl_slist_free_all};
  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle_;
};

}  // namespace bench
