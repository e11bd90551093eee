#include "destination.h"

#include <curl/curl.h>

#include <memory>

#include "../names.h"

namespace simulator {

namespace {

struct Free {
  void operator()(CURLU* url) const { curl_url_cleanup(url); }
  void operator()(char* text) const { curl_free(text); }
};

}  // namespace

bool is_destination(const std::string& url) {
  const std::unique_ptr<CURLU, Free> parsed(curl_url());
  if (curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK) return false;
  char* text = nullptr;
  if (curl_url_get(parsed.get(), CURLUPART_SCHEME, &text, 0) != CURLUE_OK) return false;
  const std::unique_ptr<char, Free> scheme(text);
  return same_name(scheme.get(), "http");
}

}  // namespace simulator
