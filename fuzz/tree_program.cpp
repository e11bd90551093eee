#include "tree_program.h"

#include <cstring>
#include <map>

#include "failure.h"
#include "zuCIM/vocabulary.h"

namespace {

using namespace zuCIM;

constexpr int kinds[] = {
    elem::CIM,      elem::INSTANCENAME, elem::KEYBINDING,     elem::KEYVALUE,
    elem::PROPERTY, elem::VALUE,        elem::PROPERTY_ARRAY, elem::VALUE_ARRAY};
constexpr int attribute_ids[] = {attr::NAME, attr::CLASSNAME, attr::TYPE, attr::UNKNOWN};
constexpr const char* texts[] = {"a", "A", "b", "", "a b", "aa"};
// Enough for every situation; more would only make the fuzzer slow.
constexpr std::size_t most_nodes = 60;
constexpr std::size_t none = ModelChain::none;

template <class List>
auto one_of(ByteSource& input, const List& list) {
  return list[input.below(std::size(list))];
}

bool is_same(const char* actual, const std::optional<std::string>& model) {
  return actual == nullptr ? !model.has_value() : model == std::string(actual);
}

// Calling these for a node without a place in the order of a document would break it.
bool can_leave(const ModelChain& chain, std::size_t position) {
  return position == 0 || chain.at(position).parent != nullptr;
}

std::shared_ptr<ModelNode> model_of_node(CIMelement& actual) {
  auto model = std::make_shared<ModelNode>();
  model->name = actual.name;
  if (actual.value != nullptr) model->value = actual.value;
  const unsigned count = actual.attributes == nullptr ? 0 : actual.attributes->argc;
  for (unsigned i = 0; i < count; ++i) {
    char* text = nullptr;
    const int id = actual.attr_get(i, &text);
    model->attributes.emplace_back(id, text);
  }
  return model;
}

// The model of a chain that the parser built; of no nodes when it is empty.
ModelChain model_of(CIMelement* head) {
  ModelChain chain;
  std::map<const CIMelement*, const ModelNode*> nodes{{nullptr, nullptr}};
  for (CIMelement* each = head; each != nullptr && head->name != nullptr; each = each->next) {
    chain.nodes.push_back(model_of_node(*each));
    nodes[each] = chain.nodes.back().get();
    require(nodes.contains(each->parent), "parents stand before their children");
    chain.nodes.back()->parent = nodes[each->parent];
  }
  return chain;
}

void compare_node(CIMelement& actual, const ModelNode& model) {
  require(actual.name == model.name, "the kind");
  require(is_same(actual.value, model.value), "the value");
  char* text = nullptr;
  unsigned index = 0;
  for (const auto& [id, expected] : model.attributes) {
    require(actual.attr_get(index++, &text) == id, "the id of an attribute");
    require(text == expected, "the text of an attribute");
  }
  require(actual.attr_get(index, &text) == attr::UNKNOWN && std::strcmp(text, "?") == 0, "the end");
}

}  // namespace

CIMelement* TreeProgram::Pair::actual(std::size_t position) const {
  CIMelement* node = head;
  for (; position != 0; --position) node = node->next;
  return node;
}

std::size_t TreeProgram::Pair::position_of(const CIMelement* node) const {
  std::size_t position = 0;
  const CIMelement* each = head;
  for (; each != nullptr && each != node; each = each->next) ++position;
  return each == nullptr ? none : position;
}

TreeProgram::TreeProgram(ByteSource input) : input_(input) {}

TreeProgram::~TreeProgram() {
  for (Pair& pair : pairs_) delete pair.head;
}

void TreeProgram::run() {
  while (!input_.is_empty() && !is_over_) {
    step();
    compare();
  }
}

void TreeProgram::step() {
  const unsigned operation = input_.byte();
  Pair& pair = pairs_[operation / 128];
  if (pair.head == nullptr || operation % 16 < 5) return add_child(pair);
  const std::size_t position = input_.below(pair.model.size());
  operation % 16 < 13 ? change(operation % 16, pair, position) : ask(pair, position);
}

void TreeProgram::change(unsigned operation, Pair& pair, std::size_t position) {
  switch (operation) {
    case 5:
      return add_attribute(pair, position);
    case 6:
      return set_value(pair, position);
    case 7:
      return remove(pair, position, input_.below(4) != 0);
    case 8:
      return move(pair, position, other(pair), input_.below(4) != 0);
    case 9:
      return move(pair, position, pair, input_.below(4) != 0);
    case 10:
      return clean(pair, position);
    case 11:
      return assign(input_.below(2) == 0 ? pair : other(pair), pair, position);
    default:
      return write_and_parse(pair, other(pair));
  }
}

// A child of the last node or of one of its ancestors, so that the chain stays in document order.
void TreeProgram::add_child(Pair& pair) {
  if (pair.model.size() >= most_nodes) return;
  const ModelNode* parent = nullptr;
  CIMelement* node = nullptr;
  if (pair.head == nullptr) {
    node = pair.head = new CIMelement;
    require(node->makeNextElement() == node, "an empty node is filled");
  } else {
    CIMelement* place = pair.actual(pair.model.size() - 1);
    for (unsigned up = input_.below(4); up != 0 && place->parent != nullptr; --up)
      place = place->parent;
    parent = pair.model.nodes[pair.position_of(place)].get();
    node = place->makeNextElement();
    require(node != nullptr && node->parent == place, "a child knows its parent");
  }
  pair.model.nodes.push_back(std::make_shared<ModelNode>());
  pair.model.nodes.back()->parent = parent;
  fill(*node, *pair.model.nodes.back());
}

void TreeProgram::fill(CIMelement& node, ModelNode& model) {
  model.name = node.name = known_cim_elements[one_of(input_, kinds)];
}

void TreeProgram::add_attribute(Pair& pair, std::size_t position) {
  const int id = one_of(input_, attribute_ids);
  const char* const text = one_of(input_, texts);
  require(pair.actual(position)->attr_put(id, text) == 0, "an attribute can be added");
  pair.model.at(position).attributes.emplace_back(id, text);
}

void TreeProgram::set_value(Pair& pair, std::size_t position) {
  CIMelement* const node = pair.actual(position);
  const char* const text = one_of(input_, texts);
  // A text is set once, by who builds the node.
  if (node->value != nullptr) return;
  node->value = strdup(text);
  pair.model.at(position).value = text;
}

void TreeProgram::remove(Pair& pair, std::size_t position, bool with_subtree) {
  auto& nodes = pair.model.nodes;
  const std::size_t last = with_subtree ? pair.model.last_of(position) : position;
  if (!can_leave(pair.model, position)) return;
  // Otherwise descendants would name a node that is no more.
  if (!with_subtree && pair.model.descendants_of(position) != 1) return;
  CIMelement* const node = pair.actual(position);
  CIMelement* const behind = pair.actual(last)->next;
  CIMelement* const before = node->deleteElement(with_subtree);
  if (position == 0) pair.head = behind;
  require(before == (position == 0 ? nullptr : pair.actual(position - 1)), "the node before");
  const auto first = nodes.begin() + static_cast<std::ptrdiff_t>(position);
  nodes.erase(first, nodes.begin() + static_cast<std::ptrdiff_t>(last + 1));
}

void TreeProgram::move(Pair& from, std::size_t position, Pair& to, bool with_subtree) {
  if (!can_leave(from.model, position)) return;
  const std::size_t last = from.model.last_of(position);
  CIMelement* const node = from.actual(position);
  const bool is_refused = &from == &to && position == 0;
  CIMelement* const behind = from.actual(last)->next;
  const bool runs_on = from.model.descendants_of(position) != last - position + 1;
  CIMelement* const result = node->redirect_chain(&to.head, with_subtree);
  require(result == (is_refused ? nullptr : behind), "the node behind");
  if (is_refused) return;
  if (position == 0) from.head = behind;
  auto& nodes = from.model.nodes;
  const auto first = nodes.begin() + static_cast<std::ptrdiff_t>(position);
  const auto end = nodes.begin() + static_cast<std::ptrdiff_t>(last + 1);
  std::vector<std::shared_ptr<ModelNode>> run(first, end);
  nodes.erase(first, end);
  gone_.insert(gone_.end(), run.begin(), run.end());
  if (!with_subtree) run.resize(1);
  run.front()->parent = nullptr;
  to.model.nodes.insert(to.model.nodes.end(), run.begin(), run.end());
  // A run with nodes that do not descend from its top leaves parents behind, in the other chain.
  is_over_ = runs_on;
}

void TreeProgram::clean(Pair& pair, std::size_t position) {
  CIMelement* const node = pair.actual(position);
  node->eclean();
  require(node->name == nullptr && node->next == nullptr, "a clean node is empty");
  require(node->makeNextElement() == node, "an empty node is filled");
  pair.model.nodes.resize(position + 1);
  gone_.push_back(pair.model.nodes[position]);
  pair.model.nodes[position] = std::make_shared<ModelNode>();
  fill(*node, *pair.model.nodes[position]);
}

void TreeProgram::assign(Pair& to, const Pair& from, std::size_t position) {
  if (to.head == nullptr) return;
  if (&to == &from && position == 0) return;
  ModelChain copy = from.model.copy_from(position);
  *to.head = *from.actual(position);
  to.model = std::move(copy);
}

// What was written is parsed into the other chain, which is then taken for what it is.
void TreeProgram::write_and_parse(Pair& from, Pair& to) {
  std::string text;
  from.head->GenerateCIMXML(text);
  if (to.head == nullptr) to.head = new CIMelement;
  to.head->ParseCIMXML("<?xml version=\"1.0\"?><CIM NAME=\"a\">" + text + "</CIM>");
  to.model = model_of(to.head);
  if (to.model.size() != 0) return;
  delete to.head;
  to.head = nullptr;
}

void TreeProgram::ask(Pair& pair, std::size_t position) {
  const int kind = one_of(input_, kinds);
  const char* const kind_name = known_cim_elements[kind];
  const char* const text = one_of(input_, texts);
  const int n = static_cast<int>(input_.below(4));
  const ModelChain& model = pair.model;
  CIMelement* const node = pair.actual(position);
  require(pair.position_of(node->getLastElement()) == model.last_of(position), "getLastElement");
  require(pair.position_of(node->findelement(kind, n)) == model.find(position, kind_name, n),
          "findelement");
  const std::size_t found = model.search(position, kind_name, text);
  require(pair.position_of(node->search_elem(kind, text)) == found, "search_elem");
  const char* const key_value =
      kind == elem::KEYBINDING ? known_cim_elements[elem::KEYVALUE] : nullptr;
  require(is_same(node->getValueOf(kind, text), model.value_behind(found, key_value)),
          "getValueOf");
  const std::size_t property = model.find_property(position, text);
  require(pair.position_of(node->findProperty(text)) == property, "findProperty");
  require(is_same(node->getValueOfProperty(text), model.value_behind(property, nullptr)),
          "getValueOfProperty");
  require(pair.position_of(node->findInstanceName(text, texts[n])) ==
              model.find_instance_name(position, text, texts[n]),
          "findInstanceName");
  compare_attributes(pair, position);
}

void TreeProgram::compare_attributes(Pair& pair, std::size_t position) {
  const int id = one_of(input_, attribute_ids);
  const char* const text = one_of(input_, texts);
  CIMelement* const node = pair.actual(position);
  const bool is_there = has_attribute(pair.model.at(position), id, text);
  require((node->attr_find_exact(id, text) == 0) == is_there, "attr_find_exact");
  require(!is_there || strcasecmp(node->attr_find(id), text) == 0, "attr_find");
}

void TreeProgram::compare() const {
  std::map<const CIMelement*, const ModelNode*> nodes{{nullptr, nullptr}};
  for (const Pair& pair : pairs_) {
    CIMelement* actual = pair.head;
    for (const auto& model : pair.model.nodes) {
      require(actual != nullptr, "the chain is as long as its model");
      compare_node(*actual, *model);
      nodes[actual] = model.get();
      actual = actual->next;
    }
    require(actual == nullptr, "the chain is no longer than its model");
  }
  for (const auto& [actual, model] : nodes)
    require(actual == nullptr || nodes[actual->parent] == model->parent, "the parent");
}
