#include "check_round_trip.h"

#include "failure.h"
#include "support/plain_parser.h"
#include "zuCIM/element.h"
#include "zuCIM/vocabulary.h"

namespace {

using zuCIM::CIMelement;

bool has_child(const CIMelement& node) {
  return node.next != nullptr && node.next->parent == &node;
}

unsigned written_attributes(CIMelement& node) {
  unsigned count = 0;
  while (node.attr_get(count, nullptr) != zuCIM::attr::UNKNOWN) ++count;
  return count;
}

// The generator writes the attributes up to the first one whose name is not known, and no text
// beside children.
bool is_written_whole(CIMelement& node) {
  const unsigned count = node.attributes == nullptr ? 0 : node.attributes->argc;
  return count == written_attributes(node) && (node.value == nullptr || !has_child(node));
}

bool is_within_its_kind(const CIMelement& node) {
  const CIMelement* outer = node.parent;
  while (outer != nullptr && outer->name != node.name) outer = outer->parent;
  return outer != nullptr;
}

// The parser takes the empty tag of an element with attributes for a start tag when it looks for
// the end of an outer element of the same kind.
bool hides_an_end(CIMelement& node) {
  return node.value == nullptr && !has_child(node) && node.attributes != nullptr &&
         is_within_its_kind(node);
}

// Whether what is written of the document says all of it, in a way that can be parsed.
bool can_return(CIMelement& root) {
  // The parser does not begin with "<CIM>".
  if (written_attributes(root) == 0) return false;
  CIMelement* node = &root;
  while (node != nullptr && is_written_whole(*node) && !hides_an_end(*node)) node = node->next;
  return node == nullptr;
}

std::string written(CIMelement& root) {
  std::string text;
  require(root.GenerateCIMXML(text) == 0, "a document can be written");
  return text;
}

}  // namespace

void check_round_trip(const std::string& text) {
  CIMelement first;
  if (first.ParseCIMXML(text) != 0) return;
  if (!can_return(first)) return;
  const std::string copy = written(first);
  CIMelement second;
  require(second.ParseCIMXML(copy) == 0, "what was written can be parsed");
  const std::string difference = tree_difference(second, first);
  if (!difference.empty()) report("the second tree: " + difference);
  require(written(second) == copy, "both texts are the same");
}
