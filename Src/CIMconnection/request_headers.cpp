#include "CIMconnection/request_headers.h"

#include <cstring>
#include <new>
#include <string_view>

namespace zuCIM {
namespace {

// The lines that are the same in every request. The empty Expect keeps libcurl from waiting for a
// 100 Continue.
constexpr const char* fixed_headers[] = {
    "Content-type: application/xml; charset=\"utf-8\"",
    "Expect:",
    "CIMOperation: MethodCall",
};

// Appends a copy of `line`; false, with the list unchanged, when libcurl has no memory.
bool append(HeaderList& list, const char* line) noexcept {
  curl_slist* const longer = curl_slist_append(list.get(), line);
  if (longer == nullptr) return false;
  static_cast<void>(list.release());  // The longer list owns it now.
  list.reset(longer);
  return true;
}

bool append_fixed_headers(HeaderList& list) noexcept {
  for (const char* line : fixed_headers)
    if (!append(list, line)) return false;
  return true;
}

std::string method_line(const char* method) {
  return std::string("CIMMethod: ") + (method != nullptr ? method : "");
}

}  // namespace

std::string escaped_object(const char* object) {
  const std::string_view text(object != nullptr ? object : "");
  const std::size_t slash = text.find('/');
  std::string escaped(text.substr(0, slash));
  if (slash != text.npos && slash + 1 < text.size())
    escaped.append("%2F").append(text.substr(slash + 1));
  return escaped;
}

HeaderList make_header_list(const char* method, const char* object) {
  const std::string lines[] = {method_line(method), "CIMObject: " + escaped_object(object)};
  HeaderList list;
  if (!append_fixed_headers(list)) return nullptr;
  for (const std::string& line : lines)
    if (!append(list, line.c_str())) return nullptr;
  return list;
}

HeaderList copy_header_list(const curl_slist* source) {
  HeaderList list;
  for (; source != nullptr; source = source->next)
    if (!append(list, source->data)) throw std::bad_alloc();
  return list;
}

void replace_header_list(CIMconnection& connection, HeaderList list) noexcept {
  curl_slist_free_all(connection.headers);
  connection.headers = list.release();
}

}  // namespace zuCIM
