#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "zuCIM/element.h"

// What a chain of elements is, said plainly: a sequence of nodes, each of which knows its parent.

struct ModelNode {
  const char* name = nullptr;
  const ModelNode* parent = nullptr;
  std::optional<std::string> value;
  std::vector<std::pair<int, std::string>> attributes;
};

// One chain. Positions count from 0; `none` stands for no node. Nodes that leave a chain are kept,
// since others may still name them as their parent.
class ModelChain {
 public:
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  std::vector<std::shared_ptr<ModelNode>> nodes;

  std::size_t size() const { return nodes.size(); }
  ModelNode& at(std::size_t position) const { return *nodes[position]; }

  // The last node of the subtree, as far as parent and grandparent tell.
  std::size_t last_of(std::size_t top) const;
  // How many nodes from `top` to the last one descend from it, itself included.
  std::size_t descendants_of(std::size_t top) const;
  std::size_t find(std::size_t from, const char* kind, int n) const;
  std::size_t search(std::size_t from, const char* kind, const std::string& text) const;
  std::size_t find_property(std::size_t from, const std::string& text) const;
  // The text of the VALUE (or `other` kind) behind `position`.
  std::optional<std::string> value_behind(std::size_t position, const char* other) const;
  std::size_t find_instance_name(std::size_t from, const std::string& key,
                                 const std::string& value) const;
  // A copy of the chain from `from` on, with parents as assignment finds them.
  ModelChain copy_from(std::size_t from) const;
};

// Whether the first attribute with this id has this text, ignoring case.
bool has_attribute(const ModelNode& node, int id, const std::string& text);
