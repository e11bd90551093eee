#include "query.h"

#include <array>
#include <cctype>
#include <vector>

#include "cim_error.h"
#include "names.h"

namespace simulator {

namespace {

constexpr std::array<std::string_view, 3> languages{"WQL", "CIM:CQL", "DMTF:CQL"};

bool is_known(std::string_view language) {
  for (const std::string_view each : languages) {
    if (same_name(each, language)) return true;
  }
  return false;
}

void require_known(std::string_view language) {
  if (is_known(language)) return;
  throw CimError(CimStatus::query_language_not_supported, std::string(language));
}

bool is_space(char c) {
  return std::isspace(static_cast<unsigned char>(c)) != 0;
}

bool is_name_character(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// Names, and single characters of every other kind.
std::vector<std::string_view> words_of(std::string_view query) {
  std::vector<std::string_view> words;
  for (std::size_t i = 0; i < query.size();) {
    std::size_t end = i;
    while (end < query.size() && is_name_character(query[end])) ++end;
    if (end == i) ++end;
    if (!is_space(query[i])) words.push_back(query.substr(i, end - i));
    i = end;
  }
  return words;
}

bool is_name(std::string_view word) {
  return is_name_character(word.front());
}

// Whether words are an asterisk, or names (of properties, with dots) between commas.
bool is_selection(const std::vector<std::string_view>& words, std::size_t begin, std::size_t end) {
  if (begin == end) return false;
  for (std::size_t i = begin; i < end; ++i) {
    const bool name_expected = (i - begin) % 2 == 0;
    const bool is_separator = words[i] == "," || words[i] == ".";
    if (name_expected ? !is_name(words[i]) && words[i] != "*" : !is_separator) return false;
  }
  return (end - begin) % 2 == 1;
}

std::size_t position_of(const std::vector<std::string_view>& words, std::string_view word) {
  std::size_t position = 0;
  while (position < words.size() && !same_name(words[position], word)) ++position;
  return position;
}

}  // namespace

std::string read_query(std::string_view language, std::string_view query) {
  require_known(language);
  const auto words = words_of(query);
  const bool known = words.size() == 4 && same_name(words[0], "select") && words[1] == "*" &&
                     same_name(words[2], "from") && is_name(words[3]);
  if (!known) {
    throw CimError(CimStatus::invalid_query, "only \"select * from CLASS\" is known here");
  }
  return std::string(words[3]);
}

std::string read_filter_query(std::string_view language, std::string_view query) {
  require_known(language);
  const auto words = words_of(query);
  const std::size_t from = position_of(words, "from");
  const bool is_known_form = from + 1 < words.size() && same_name(words[0], "select") &&
                             is_selection(words, 1, from) && is_name(words[from + 1]) &&
                             (words.size() == from + 2 ||
                              (words.size() > from + 3 && same_name(words[from + 2], "where")));
  if (!is_known_form) {
    throw CimError(CimStatus::invalid_query, "the query is not \"select ... from CLASS\"");
  }
  return std::string(words[from + 1]);
}

}  // namespace simulator
