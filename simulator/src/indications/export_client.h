#pragma once

#include <curl/curl.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>

namespace simulator {

// How long a listener may take.
struct PostLimits {
  std::chrono::milliseconds connecting{5000};
  std::chrono::milliseconds answering{20000};  // connecting included
};

// Posts export requests, each on a connection of its own. This is libcurl's work: other than
// cpp-httplib it reads answers whose lines end without carriage returns, which listeners send, and
// can be interrupted at any moment.
//
// Thread rule: post() is for one thread; interrupt() may be called from any other.
class ExportClient {
 public:
  // Throws std::runtime_error when libcurl cannot be used.
  explicit ExportClient(const PostLimits& limits);

  // Hands an indication, an INSTANCE element, to the listener at a URL. Returns why that failed;
  // empty if the listener took it.
  std::string post(const std::string& url, int message_id, const std::string& indication);

  // Ends a post() at work, and all later ones, at once.
  void interrupt();

 private:
  struct Free {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };

  CURLcode perform(CURL* transfer);

  PostLimits limits_;
  std::unique_ptr<curl_slist, Free> headers_;
  std::unique_ptr<CURLM, Free> multi_;
  std::atomic<bool> interrupted_ = false;
};

}  // namespace simulator
