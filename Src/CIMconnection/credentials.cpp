#include "CIMconnection/credentials.h"

#include <cstddef>

namespace zuCIM {
namespace {

constexpr std::string_view digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

unsigned byte_at(std::string_view text, std::size_t position) noexcept {
  return position < text.size() ? static_cast<unsigned char>(text[position]) : 0U;
}

SecretText base64(std::string_view text) {
  SecretText result((text.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < text.size(); at += 3) {
    const unsigned bits =
        byte_at(text, at) << 16 | byte_at(text, at + 1) << 8 | byte_at(text, at + 2);
    const std::size_t count = text.size() - at < 3 ? text.size() - at : 3;
    for (std::size_t digit = 0; digit < 4; ++digit)
      result.append(digit <= count ? digits.substr(bits >> (18 - 6 * digit) & 0x3FU, 1) : "=");
  }
  return result;
}

}  // namespace

SecretText wire_credentials(const CIMconnection& connection) {
  SecretText text(connection.user.size() + 1 + connection.password.size());
  return base64(text.append(connection.user).append(":").append(connection.password).view());
}

std::string without_echo(std::string_view text, std::string_view credentials) {
  std::string result;
  if (!credentials.empty())
    for (std::size_t found = 0; (found = text.find(credentials)) != text.npos;) {
      result.append(text.substr(0, found)).append("***");
      text.remove_prefix(found + credentials.size());
    }
  return result.append(text);
}

}  // namespace zuCIM
