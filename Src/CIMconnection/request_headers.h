#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>

#include "zuCIM/connection.h"

namespace zuCIM {

struct HeaderListDeleter {
  void operator()(curl_slist* list) const noexcept { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, HeaderListDeleter>;

// The value of the CIMObject header: `object` with its first '/' written as "%2F", unless nothing
// follows it; then it is left out.
std::string escaped_object(const char* object);

// All header lines of a request, in the order they are sent; null when libcurl has no memory. Null
// texts count as empty. Throws std::bad_alloc.
HeaderList make_header_list(const char* method, const char* object);

// A copy of every line of `source`, in order; null for a null list. Throws std::bad_alloc.
HeaderList copy_header_list(const curl_slist* source);

// Frees the connection's header list and puts `list` in its place.
void replace_header_list(CIMconnection& connection, HeaderList list) noexcept;

}  // namespace zuCIM
