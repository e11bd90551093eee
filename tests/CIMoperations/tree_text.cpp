#include "CIMoperations/tree_text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <unordered_map>
#include <vector>

#include "zuCIM/vocabulary.h"

namespace {

using zuCIM::CIMelement;

[[noreturn]] void give_up(const std::string& line) {
  std::fprintf(stderr, "no tree: %s\n", line.c_str());
  std::abort();
}

const char* row_of(const char* const* table, int rows, const std::string& name) {
  for (int i = 0; i < rows; ++i)
    if (name == table[i]) return table[i];
  give_up(name);
}

int attribute_id(const std::string& name) {
  const char* const row = row_of(zuCIM::known_cim_attributes, zuCIM::attr::COUNT, name);
  int id = 0;
  while (zuCIM::known_cim_attributes[id] != row) ++id;
  return id;
}

void fill(CIMelement& element, const std::string& line) {
  const std::size_t bracket = line.find('[');
  if (bracket != std::string::npos)
    element.value = strdup(line.substr(bracket + 1, line.rfind(']') - bracket - 1).c_str());
  std::istringstream words(line.substr(0, bracket));
  std::string word;
  words >> word;
  element.name = row_of(zuCIM::known_cim_elements, zuCIM::elem::COUNT, word);
  while (words >> word) {
    const std::size_t equals = word.find('=');
    element.attr_put(attribute_id(word.substr(0, equals)), word.substr(equals + 1).c_str());
  }
}

std::string describe(CIMelement& element) {
  std::string text = element.name != nullptr ? element.name : "-";
  const unsigned count = element.attributes != nullptr ? element.attributes->argc : 0;
  for (unsigned i = 0; i < count; ++i) {
    char* value = nullptr;
    const int id = element.attr_get(i, &value);
    text += std::string(" ") + zuCIM::known_cim_attributes[id] + "=" + value;
  }
  if (element.value != nullptr) text += std::string(" [") + element.value + "]";
  return text;
}

}  // namespace

void build_tree(CIMelement& root, const std::string& text) {
  std::vector<CIMelement*> path;
  CIMelement* last = nullptr;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t depth = line.find_first_not_of(' ');
    if (depth == std::string::npos) continue;
    if (depth > path.size() || (depth == 0 && last != nullptr)) give_up(line);
    auto* const element = last == nullptr ? &root : new CIMelement;
    fill(*element, line);
    path.resize(depth);
    if (depth > 0) element->parent = path.back();
    if (last != nullptr) last->next = element;
    path.push_back(last = element);
  }
}

std::string tree_text(const CIMelement* root) {
  struct Seen {
    std::size_t index;
    std::size_t depth;
  };
  std::unordered_map<const CIMelement*, Seen> seen;
  std::vector<const CIMelement*> latest;
  std::string text;
  for (const CIMelement* node = root; node != nullptr; node = node->next) {
    const auto parent = seen.find(node->parent);
    const std::size_t depth = parent != seen.end() ? parent->second.depth + 1 : 0;
    std::string mark;
    if (node->parent == nullptr)
      mark = node != root ? "^" : "";
    else if (parent == seen.end())
      mark = "?";
    else if (latest[depth - 1] != node->parent)
      mark = "@" + std::to_string(parent->second.index);
    seen[node] = {seen.size(), depth};
    latest.resize(depth);
    latest.push_back(node);
    text += std::string(depth, ' ') + mark + describe(const_cast<CIMelement&>(*node)) + "\n";
  }
  return text;
}
