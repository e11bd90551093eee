#include <exception>
#include <string>

#include "BRQ/Trace.h"
#include "zuCIM/element.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMXMLparser";

void trace_error(const char* message, int line = __builtin_LINE()) {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source, line, "GenerateCIMXML: %s",
               message);
}

const char* name_of(const CIMelement& node) {
  return node.name != nullptr ? node.name : "";
}

void append_end_tag(std::string& out, const CIMelement& node) {
  out.append("</").append(name_of(node)).append(">\n");
}

// The list ends at the first attribute whose name is not known.
void append_start_tag(std::string& out, CIMelement& node) {
  out.append("<").append(name_of(node));
  char* text = nullptr;
  for (unsigned i = 0;; ++i) {
    const int id = node.attr_get(i, &text);
    if (id < 0 || id >= attr::UNKNOWN) return;
    out.append(" ").append(known_cim_attributes[id]).append("=\"").append(text).append("\"");
  }
}

void append_leaf_end(std::string& out, const CIMelement& node) {
  if (node.value == nullptr)
    out.append("/>\n");
  else
    out.append(">").append(node.value).append("</").append(name_of(node)).append(">\n");
}

// Closes the ancestors of `node` that end before an element whose parent is `next_parent`. False
// when that is none of them.
bool append_ancestor_ends(std::string& out, const CIMelement& node, const CIMelement* next_parent) {
  const CIMelement* ancestor = node.parent;
  for (; ancestor != next_parent && ancestor != nullptr; ancestor = ancestor->parent)
    append_end_tag(out, *ancestor);
  return ancestor == next_parent;
}

unsigned generate(CIMelement& top, std::string& out) {
  const CIMelement* const last = top.getLastElement();
  if (top.name == known_cim_elements[elem::CIM])
    out = "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n";
  for (CIMelement* node = &top; node != nullptr; node = node->next) {
    append_start_tag(out, *node);
    const CIMelement* const next_parent = node->next != nullptr ? node->next->parent : top.parent;
    if (next_parent == node) {
      out.append(">\n");
      if (node->value != nullptr) trace_error("(#PCDATA) not allowed here!");
      continue;
    }
    append_leaf_end(out, *node);
    if (!append_ancestor_ends(out, *node, next_parent)) {
      trace_error("bad data in CIMelement found!");
      return status::failure;
    }
    if (node == last) break;
  }
  return status::success;
}

}  // namespace

unsigned CIMelement::GenerateCIMXML(std::string& out) noexcept {
  if (this == nullptr) {
    trace_error("this = NULL");
    return status::failure;
  }
  try {
    return generate(*this, out);
  } catch (const std::exception& error) {
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
              "GenerateCIMXML: Exception raised: %s", error.what());
    return status::failure;
  }
}

}  // namespace zuCIM
