#include "CIMconnection/verbose_output.h"

#include <strings.h>

#include <cstdio>
#include <string>

#include "CIMconnection/credentials.h"

namespace zuCIM {
namespace {

constexpr std::string_view secret_headers[] = {"Authorization:", "Proxy-Authorization:"};

bool begins_with_in_any_case(std::string_view line, std::string_view name) noexcept {
  return line.size() >= name.size() && ::strncasecmp(line.data(), name.data(), name.size()) == 0;
}

// The name of the secret header that the line is; empty when it is none.
std::string_view secret_name(std::string_view line) noexcept {
  for (const std::string_view name : secret_headers)
    if (begins_with_in_any_case(line, name)) return name;
  return {};
}

void append_line(std::string& text, std::string_view line) {
  const std::string_view name = secret_name(line);
  if (name.empty())
    text.append(line);
  else
    text.append(name).append(" ***\r\n");
}

const char* mark_of(curl_infotype kind) noexcept {
  switch (kind) {
    case CURLINFO_TEXT:
      return "* ";
    case CURLINFO_HEADER_IN:
      return "< ";
    case CURLINFO_HEADER_OUT:
      return "> ";
    default:
      return nullptr;
  }
}

}  // namespace

std::string without_credentials(std::string_view header_lines) {
  std::string text;
  while (!header_lines.empty()) {
    const std::size_t end = header_lines.find('\n');
    const std::size_t length = end == std::string_view::npos ? header_lines.size() : end + 1;
    append_line(text, header_lines.substr(0, length));
    header_lines.remove_prefix(length);
  }
  return text;
}

int write_verbose_output(CURL* /*handle*/, curl_infotype kind, char* data, std::size_t size,
                         void* credentials) noexcept {
  const char* const mark = mark_of(kind);
  if (mark == nullptr) return 0;
  try {
    const std::string_view secret = credentials != nullptr
                                        ? static_cast<const SecretText*>(credentials)->view()
                                        : std::string_view();
    const std::string text = mark + without_echo(without_credentials({data, size}), secret);
    std::fwrite(text.data(), 1, text.size(), stderr);
  } catch (...) {
    // Without memory the line is lost; it must not go out unmasked.
  }
  return 0;
}

}  // namespace zuCIM
