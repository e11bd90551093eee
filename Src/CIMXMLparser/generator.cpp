#include <array>
#include <cstring>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "BRQ/Trace.h"
#include "CIMclasses/subtree.h"
#include "zuCIM/element.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMXMLparser";

void trace_error(const char* message, int line = __builtin_LINE()) {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source, line, "GenerateCIMXML: %s",
               message);
}

// Collects the small pieces of a document before they go into its text.
class Output {
 public:
  explicit Output(std::string& text) : text_(text) {}

  // Throws std::bad_alloc.
  void put(std::string_view piece) {
    if (piece.size() > buffer_.size() - used_) return put_directly(piece);
    std::memcpy(buffer_.data() + used_, piece.data(), piece.size());
    used_ += piece.size();
  }
  // Makes the text complete. Throws std::bad_alloc.
  void flush() { text_.append(buffer_.data(), std::exchange(used_, 0)); }

 private:
  void put_directly(std::string_view piece) {
    flush();
    text_.append(piece);
  }

  std::string& text_;
  std::size_t used_ = 0;
  std::array<char, 4096> buffer_;
};

std::string_view name_of(const CIMelement& node) {
  return node.name != nullptr ? node.name : "";
}

void put_end_tag(Output& out, const CIMelement& node) {
  out.put("</");
  out.put(name_of(node));
  out.put(">\n");
}

// The list ends at the first attribute whose name is not known.
void put_start_tag(Output& out, CIMelement& node) {
  out.put("<");
  out.put(name_of(node));
  const unsigned count = node.attributes != nullptr ? node.attributes->argc : 0;
  char* text = nullptr;
  for (unsigned i = 0; i < count; ++i) {
    const int id = node.attr_get(i, &text);
    if (id < 0 || id >= attr::UNKNOWN) return;
    out.put(" ");
    out.put(known_cim_attributes[id]);
    out.put("=\"");
    out.put(text);
    out.put("\"");
  }
}

void put_leaf_end(Output& out, const CIMelement& node) {
  if (node.value == nullptr) return out.put("/>\n");
  out.put(">");
  out.put(node.value);
  put_end_tag(out, node);
}

// Closes the ancestors of `node` that end before an element whose parent is `next_parent`. False
// when that is none of them.
bool put_ancestor_ends(Output& out, const CIMelement& node, const CIMelement* next_parent) {
  const CIMelement* ancestor = node.parent;
  for (; ancestor != next_parent && ancestor != nullptr; ancestor = ancestor->parent)
    put_end_tag(out, *ancestor);
  return ancestor == next_parent;
}

unsigned put_subtree(Output& out, CIMelement& top) {
  const SubtreeEnd end(top);
  for (CIMelement* node = &top; node != nullptr; node = node->next) {
    put_start_tag(out, *node);
    const CIMelement* const next_parent = node->next != nullptr ? node->next->parent : top.parent;
    if (next_parent == node) {
      out.put(">\n");
      if (node->value != nullptr) trace_error("(#PCDATA) not allowed here!");
      continue;
    }
    put_leaf_end(out, *node);
    if (!put_ancestor_ends(out, *node, next_parent)) {
      trace_error("bad data in CIMelement found!");
      return status::failure;
    }
    if (end.is_at(*node)) break;
  }
  return status::success;
}

unsigned generate(CIMelement& top, std::string& text) {
  if (top.name == known_cim_elements[elem::CIM])
    text = "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n";
  Output out(text);
  const unsigned outcome = put_subtree(out, top);
  out.flush();
  return outcome;
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
