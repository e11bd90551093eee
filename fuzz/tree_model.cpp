#include "tree_model.h"

#include <strings.h>

#include <algorithm>

#include "zuCIM/vocabulary.h"

namespace {

using namespace zuCIM;

bool is_same(const std::string& left, const std::string& right) {
  return strcasecmp(left.c_str(), right.c_str()) == 0;
}

bool descends_from(const ModelNode* node, const ModelNode* top) {
  while (node != nullptr && node != top) node = node->parent;
  return node == top;
}

int first_id(const ModelNode& node) {
  return node.attributes.empty() ? attr::UNKNOWN : node.attributes.front().first;
}

bool is_property(const ModelNode& node) {
  return node.name == known_cim_elements[elem::PROPERTY] ||
         node.name == known_cim_elements[elem::PROPERTY_ARRAY] ||
         node.name == known_cim_elements[elem::PROPERTY_REFERENCE];
}

// The copy that counts as that of `parent`, from `copy` upwards.
const ModelNode* copied_parent(const ModelNode* copy, const ModelNode& parent) {
  while (copy != nullptr && (copy->name != parent.name || first_id(*copy) != first_id(parent)))
    copy = copy->parent;
  return copy;
}

}  // namespace

bool has_attribute(const ModelNode& node, int id, const std::string& text) {
  const auto found = std::ranges::find(node.attributes, id, &std::pair<int, std::string>::first);
  return !text.empty() && found != node.attributes.end() && is_same(found->second, text);
}

std::size_t ModelChain::last_of(std::size_t top) const {
  const ModelNode* const parent = at(top).parent;
  const ModelNode* const grandparent = parent == nullptr ? nullptr : parent->parent;
  std::size_t last = top;
  while (last + 1 < size() && at(last + 1).parent != parent && at(last + 1).parent != grandparent)
    ++last;
  return last;
}

std::size_t ModelChain::descendants_of(std::size_t top) const {
  return static_cast<std::size_t>(std::ranges::count_if(
      nodes, [&](const auto& node) { return descends_from(node.get(), nodes[top].get()); }));
}

std::size_t ModelChain::find(std::size_t from, const char* kind, int n) const {
  for (std::size_t i = from; i < size(); ++i) {
    if (at(i).name != kind) continue;
    if (n-- == 0) return i;
    i = last_of(i);
  }
  return none;
}

std::size_t ModelChain::search(std::size_t from, const char* kind, const std::string& text) const {
  for (std::size_t i = from; i <= last_of(from); ++i)
    if (at(i).name == kind && has_attribute(at(i), attr::NAME, text)) return i;
  return none;
}

std::size_t ModelChain::find_property(std::size_t from, const std::string& text) const {
  for (std::size_t i = from; i < size(); ++i)
    if (is_property(at(i)) && has_attribute(at(i), attr::NAME, text)) return i;
  return none;
}

std::optional<std::string> ModelChain::value_behind(std::size_t position, const char* other) const {
  if (position == none || position + 1 >= size()) return std::nullopt;
  const ModelNode& next = at(position + 1);
  if (next.name != known_cim_elements[elem::VALUE] && next.name != other) return std::nullopt;
  return next.value;
}

std::size_t ModelChain::find_instance_name(std::size_t from, const std::string& key,
                                           const std::string& value) const {
  const char* const key_kind = known_cim_elements[elem::KEYBINDING];
  const char* const value_kind = known_cim_elements[elem::KEYVALUE];
  for (int n = 0;; ++n) {
    const std::size_t name = find(from, known_cim_elements[elem::INSTANCENAME], n);
    if (name == none) return none;
    const auto found = value_behind(search(name, key_kind, key), value_kind);
    if (found && is_same(*found, value)) return name;
  }
}

ModelChain ModelChain::copy_from(std::size_t from) const {
  ModelChain copy;
  for (std::size_t i = from; i < size(); ++i) {
    auto node = std::make_shared<ModelNode>(at(i));
    node->parent = nullptr;
    if (i != from && at(i).parent != nullptr)
      node->parent = copied_parent(copy.nodes.back().get(), *at(i).parent);
    copy.nodes.push_back(std::move(node));
  }
  return copy;
}
