#pragma once

#include <curl/curl.h>

#include "CIMconnection/status.h"
#include "zuCIM/connection.h"

namespace zuCIM {

// Sets an option of the connection's transfer handle. A failure is recorded with libcurl's code and
// text, at the line of the call. Tells whether the option was set.
template <class Value>
bool set_option(CIMconnection& connection, CURLoption option, Value value,
                int line = __builtin_LINE()) noexcept {
  const CURLcode result = curl_easy_setopt(connection.curl, option, value);
  if (result == CURLE_OK) return true;
  record(connection, result, nullptr, line);
  return false;
}

}  // namespace zuCIM
