#pragma once

#include <cstddef>
#include <string_view>

// Reading a message: what counts as white space, and the search that does not look into quoted runs
// and comments. A view never holds a NUL character: the text of a message ends at the first one.
namespace zuCIM::codec {

inline constexpr std::size_t npos = std::string_view::npos;

// White space is every code up to 32, read as a signed byte; so bytes from 128 on are white space.
constexpr bool is_space(char c) {
  return c != '\0' && static_cast<signed char>(c) <= 32;
}

// The first position from `from` on that holds no white space, or the text's length.
inline std::size_t skip_space(std::string_view text, std::size_t from) {
  while (from < text.size() && is_space(text[from])) ++from;
  return from;
}

// Whether `text` holds `part` at `position`, which is at most the text's length.
inline bool stands_at(std::string_view text, std::size_t position, std::string_view part) {
  return text.substr(position).starts_with(part);
}

// No name is longer than this, so nothing is gained by looking further for the end of one.
inline constexpr std::size_t longest_name = 63;

// The end of the tag name that begins at `from`; a name that is too long ends after longest_name +
// 1 characters, which is as unknown.
inline std::size_t name_end(std::string_view text, std::size_t from) {
  const std::size_t limit =
      text.size() - from > longest_name ? from + longest_name + 1 : text.size();
  while (from < limit && !is_space(text[from]) && text[from] != '/' && text[from] != '>') ++from;
  return from;
}

// The position after the quoted run or the comment that begins at `position`; `position` itself
// when none does, npos when it is never closed.
inline std::size_t skip_hidden(std::string_view text, std::size_t position) {
  const char c = text[position];
  if (c == '"' || c == '\'') {
    const std::size_t end = text.find(c, position + 1);
    return end == npos ? npos : end + 1;
  }
  if (c != '<' || !stands_at(text, position, "<!--")) return position;
  const std::size_t end = text.find("-->", position + 4);
  return end == npos ? npos : end + 3;
}

// The first occurrence of `needle` from `from` on that lies outside quoted runs and comments; npos
// when there is none before a run that is never closed.
inline std::size_t find_unquoted(std::string_view text, std::string_view needle, std::size_t from) {
  while (from < text.size()) {
    const std::size_t after = skip_hidden(text, from);
    if (after == npos) return npos;
    if (after == from && stands_at(text, from, needle)) return from;
    from = after == from ? from + 1 : after;
  }
  return npos;
}

}  // namespace zuCIM::codec
