#include "CIMlistener/export_response.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>

namespace zuCIM {
namespace {

constexpr std::string_view header_before_length =
    "HTTP/1.1 200 OK\n"
    "Content-Type: application/xml; charset=\"utf-8\"\n"
    "content-length: ";
constexpr std::string_view header_after_length = "\nCIMExport: MethodResponse\n\n";
constexpr std::string_view body_before_id =
    "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
    "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
    "<MESSAGE ID=\"";
constexpr std::string_view body_after_id =
    "\" PROTOCOLVERSION=\"1.0\">\n"
    "<SIMPLEEXPRSP>\n"
    "<EXPMETHODRESPONSE NAME=\"ExportIndication\">\n"
    "</EXPMETHODRESPONSE>\n"
    "</SIMPLEEXPRSP>\n"
    "</MESSAGE>\n"
    "</CIM>\n";
// The length has nine digits, with leading zeros.
constexpr std::string_view zeros = "000000000";

// A number as text, without memory of the heap.
class Decimal {
 public:
  explicit Decimal(std::size_t number) noexcept
      : end_(std::to_chars(digits_.data(), digits_.data() + digits_.size(), number).ptr) {}
  Decimal(const Decimal&) = delete;
  Decimal& operator=(const Decimal&) = delete;

  std::string_view text() const noexcept { return {digits_.data(), end_}; }

 private:
  std::array<char, 20> digits_;
  char* end_;
};

// The largest answer fits, whatever the id.
static_assert(header_before_length.size() + zeros.size() + header_after_length.size() +
                  body_before_id.size() + 20 + body_after_id.size() <
              512);

}  // namespace

ExportResponse::ExportResponse(int message_id) noexcept {
  const Decimal id(static_cast<std::size_t>(message_id));
  const Decimal length(body_before_id.size() + id.text().size() + body_after_id.size());
  append(header_before_length);
  append(zeros.substr(length.text().size()));
  append(length.text());
  append(header_after_length);
  append(body_before_id);
  append(id.text());
  append(body_after_id);
}

void ExportResponse::append(std::string_view text) noexcept {
  size_ += text.copy(text_.data() + size_, text_.size() - size_);
}

}  // namespace zuCIM
