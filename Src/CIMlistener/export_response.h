#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zuCIM {

// The HTTP answer that confirms an export request: header and CIM-XML body. Lines end with a single
// line feed.
class ExportResponse {
 public:
  // `message_id` is above 0.
  explicit ExportResponse(int message_id) noexcept;

  std::string_view text() const noexcept { return {text_.data(), size_}; }

 private:
  void append(std::string_view text) noexcept;

  std::array<char, 512> text_;
  std::size_t size_ = 0;
};

}  // namespace zuCIM
