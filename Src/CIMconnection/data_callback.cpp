#include "CIMconnection/data_callback.h"

#include <curl/curl.h>

#include <algorithm>
#include <string>

namespace zuCIM {
namespace {

// A server may announce more than it sends, so not all room is made on its word.
constexpr std::size_t most_room = 4 * 1024 * 1024;

// Room is a matter of speed only: when there is none the text grows as it can.
void make_room(LimitedText& target) noexcept {
  curl_off_t announced = 0;
  if (curl_easy_getinfo(target.handle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced) !=
          CURLE_OK ||
      announced <= 0)
    return;
  const auto most = static_cast<curl_off_t>(std::min(target.limit, most_room));
  try {
    target.text.reserve(static_cast<std::size_t>(std::min(announced, most)));
  } catch (...) {
    // The text grows by itself, or cannot, which ends the transfer.
  }
}

}  // namespace

std::size_t append_data(char* data, std::size_t size, std::size_t count, void* text) noexcept {
  const std::size_t length = size * count;
  if (length == 0 || text == nullptr) return 0;
  try {
    static_cast<std::string*>(text)->append(data, length);
    return length;
  } catch (...) {
    return 0;
  }
}

std::size_t append_limited_data(char* data, std::size_t size, std::size_t count,
                                void* limited_text) noexcept {
  if (limited_text == nullptr) return 0;
  auto& target = *static_cast<LimitedText*>(limited_text);
  const std::size_t room = target.limit - std::min(target.limit, target.text.size());
  target.is_exceeded = size * count > room;
  if (target.is_exceeded) return 0;
  if (target.text.empty() && target.handle != nullptr) make_room(target);
  return append_data(data, size, count, &target.text);
}

}  // namespace zuCIM
