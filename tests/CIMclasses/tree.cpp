#include "CIMclasses/tree.h"

#include <cstring>

namespace zuCIM::testing {

CIMelement* build(std::initializer_list<Node> nodes) {
  auto* const root = new CIMelement;
  std::vector<CIMelement*> open;
  for (const Node& node : nodes) {
    const auto depth = static_cast<std::size_t>(node.depth);
    CIMelement* const made = depth == 0 ? root : open.at(depth - 1)->makeNextElement();
    made->name = known_cim_elements[node.kind];
    if (node.name != nullptr) made->attr_put(attr::NAME, node.name);
    if (node.value != nullptr) made->value = strdup(node.value);
    open.resize(depth);
    open.push_back(made);
  }
  return root;
}

std::vector<CIMelement*> nodes_of(CIMelement* head) {
  std::vector<CIMelement*> nodes;
  for (; head != nullptr; head = head->next) nodes.push_back(head);
  return nodes;
}

std::vector<std::string> words_of(const CIMelement* head) {
  std::vector<std::string> words;
  for (; head != nullptr; head = head->next) {
    std::string word = head->name == nullptr ? "-" : head->name;
    const char* const name = const_cast<CIMelement*>(head)->attr_find(attr::NAME);
    if (name != nullptr) word += std::string("(") + name + ")";
    if (head->value != nullptr) word += std::string("=") + head->value;
    words.push_back(word);
  }
  return words;
}

std::vector<int> parents_of(CIMelement* head) {
  const std::vector<CIMelement*> nodes = nodes_of(head);
  std::vector<int> positions;
  for (const CIMelement* const node : nodes) {
    int position = -1;
    for (std::size_t i = 0; i < nodes.size(); ++i)
      if (node->parent == nodes[i]) position = static_cast<int>(i);
    if (position == -1 && node->parent != nullptr) position = -2;
    positions.push_back(position);
  }
  return positions;
}

std::vector<std::string> errors(const TraceRecorder& trace) {
  std::vector<std::string> texts;
  for (const RecordedLine& line : trace.lines())
    if (line.level == 0x40000000U && line.source == "Src/CIMclasses" && line.line > 0)
      texts.push_back(line.text);
  return texts;
}

}  // namespace zuCIM::testing
