#include "export_client.h"

#include <stdexcept>

#include "export_message.h"

namespace simulator {

namespace {

constexpr std::size_t longest_answer = std::size_t{1} << 20U;
constexpr int poll_milliseconds = 1000;
constexpr long http_ok = 200;

struct CleanUp {
  void operator()(CURL* transfer) const { curl_easy_cleanup(transfer); }
};
using Transfer = std::unique_ptr<CURL, CleanUp>;

CURLM* make_multi() {
  static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
  return ready == CURLE_OK ? curl_multi_init() : nullptr;
}

curl_slist* make_headers() {
  curl_slist* list = nullptr;
  for (const char* each :
       {"Content-Type: application/xml; charset=\"utf-8\"", "CIMExport: MethodRequest",
        "CIMExportMethod: ExportIndication", "Connection: close", "Expect:"}) {
    list = curl_slist_append(list, each);
  }
  return list;
}

// Called by libcurl: a shorter result than `count` ends the transfer.
std::size_t append_to(char* bytes, std::size_t, std::size_t count, void* body) noexcept {
  auto& text = *static_cast<std::string*>(body);
  if (text.size() + count > longest_answer) return 0;
  text.append(bytes, count);
  return count;
}

Transfer make_transfer(const PostLimits& limits) {
  Transfer transfer(curl_easy_init());
  if (!transfer) throw std::runtime_error("libcurl has no transfer");
  CURL* handle = transfer.get();
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);
  curl_easy_setopt(handle, CURLOPT_PROXY, "");
  curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http");
  curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  curl_easy_setopt(handle, CURLOPT_FRESH_CONNECT, 1L);
  curl_easy_setopt(handle, CURLOPT_FORBID_REUSE, 1L);
  curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits.connecting.count()));
  curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, static_cast<long>(limits.answering.count()));
  return transfer;
}

std::string fault_of(CURL* transfer, CURLcode result, const std::string& body, int message_id) {
  if (result != CURLE_OK) return curl_easy_strerror(result);
  long status = 0;
  curl_easy_getinfo(transfer, CURLINFO_RESPONSE_CODE, &status);
  if (status != http_ok) return "HTTP status " + std::to_string(status);
  return fault_of_export_response(body, message_id);
}

}  // namespace

ExportClient::ExportClient(const PostLimits& limits)
    : limits_(limits), headers_(make_headers()), multi_(make_multi()) {
  if (!multi_ || !headers_) throw std::runtime_error("libcurl cannot be used");
}

std::string ExportClient::post(const std::string& url, int message_id,
                               const std::string& indication) {
  const std::string request = export_request(message_id, indication);
  const Transfer transfer = make_transfer(limits_);
  std::string body;
  curl_easy_setopt(transfer.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(transfer.get(), CURLOPT_HTTPHEADER, headers_.get());
  curl_easy_setopt(transfer.get(), CURLOPT_POSTFIELDSIZE, static_cast<long>(request.size()));
  curl_easy_setopt(transfer.get(), CURLOPT_POSTFIELDS, request.c_str());
  curl_easy_setopt(transfer.get(), CURLOPT_WRITEFUNCTION, append_to);
  curl_easy_setopt(transfer.get(), CURLOPT_WRITEDATA, &body);
  const CURLcode result = perform(transfer.get());
  return fault_of(transfer.get(), result, body, message_id);
}

void ExportClient::interrupt() {
  interrupted_ = true;
  curl_multi_wakeup(multi_.get());
}

CURLcode ExportClient::perform(CURL* transfer) {
  curl_multi_add_handle(multi_.get(), transfer);
  int running = 1;
  while (!interrupted_ && curl_multi_perform(multi_.get(), &running) == CURLM_OK && running > 0) {
    curl_multi_poll(multi_.get(), nullptr, 0, poll_milliseconds, nullptr);
  }
  CURLcode result = CURLE_ABORTED_BY_CALLBACK;
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
    if (message->msg == CURLMSG_DONE) result = message->data.result;
  }
  curl_multi_remove_handle(multi_.get(), transfer);
  return result;
}

}  // namespace simulator
