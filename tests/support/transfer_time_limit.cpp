#include "support/transfer_time_limit.h"

#include <curl/curl.h>
#include <dlfcn.h>

#include <atomic>
#include <cstdarg>

namespace {

std::atomic<long> limit = 0;
std::atomic<long> asked = 0;

using SetOption = CURLcode(CURL*, CURLoption, ...);

// The function that would be called without this file.
SetOption* real_set_option() {
  static SetOption* const found =
      reinterpret_cast<SetOption*>(::dlsym(RTLD_NEXT, "curl_easy_setopt"));
  return found;
}

long limited(long seconds) {
  if (limit == 0) return seconds;
  asked = seconds;
  return limit;
}

}  // namespace

TransferTimeLimit::TransferTimeLimit(long seconds) {
  asked = 0;
  limit = seconds;
}

TransferTimeLimit::~TransferTimeLimit() {
  limit = 0;
}

long TransferTimeLimit::asked_for() const {
  return asked;
}

#undef curl_easy_setopt

#pragma GCC visibility push(default)
extern "C" CURLcode curl_easy_setopt(CURL* handle, CURLoption option, ...) {
  va_list values;
// libcurl's signature leaves no choice.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wvarargs"
  va_start(values, option);
#pragma GCC diagnostic pop
  CURLcode result = CURLE_OK;
  if (option < CURLOPTTYPE_OBJECTPOINT) {
    const long value = va_arg(values, long);
    result = real_set_option()(handle, option, option == CURLOPT_TIMEOUT ? limited(value) : value);
  } else if (option >= CURLOPTTYPE_OFF_T && option < CURLOPTTYPE_BLOB) {
    result = real_set_option()(handle, option, va_arg(values, curl_off_t));
  } else {
    result = real_set_option()(handle, option, va_arg(values, void*));
  }
  va_end(values);
  return result;
}
#pragma GCC visibility pop
