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

}  // namespace

std::string read_query(std::string_view language, std::string_view query) {
  if (!is_known(language)) {
    throw CimError(CimStatus::query_language_not_supported, std::string(language));
  }
  const auto words = words_of(query);
  const bool known = words.size() == 4 && same_name(words[0], "select") && words[1] == "*" &&
                     same_name(words[2], "from") && is_name_character(words[3].front());
  if (!known) {
    throw CimError(CimStatus::invalid_query, "only \"select * from CLASS\" is known here");
  }
  return std::string(words[3]);
}

}  // namespace simulator
