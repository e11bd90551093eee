#include "CIMXMLparser/quick_parser.h"

#include <array>
#include <vector>

#include "CIMXMLparser/builder.h"
#include "CIMXMLparser/names.h"
#include "CIMXMLparser/text.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM::codec {
namespace {

// Why proper nesting is enough. The end of an element is the end tag that brings the count of its
// name to zero, where an opening tag counts only when a blank or ">" follows its name. In a message
// whose tags nest properly that is the element's own end tag, provided that no tag inside it is
// counted on one side only: an empty tag with a blank behind its name raises the count without
// lowering it, an opening tag with other white space there lowers it without raising it. Both are
// harmless while no element of the same name is open. Quoted runs are skipped as a search skips
// them.
class QuickParser {
 public:
  QuickParser(std::string_view text, std::size_t begin, CIMelement& root)
      : text_(text), cursor_(begin), builder_(root) {}

  QuickResult run() {
    while (result_ == QuickResult::complete) {
      if (!parse_start_tag() || !close_elements()) break;
      if (node_ == nullptr) return finish();
    }
    return result_;
  }

 private:
  char at(std::size_t position) const { return position < text_.size() ? text_[position] : '\0'; }

  bool stop(QuickResult result) {
    result_ = result;
    return false;
  }
  bool not_plain() { return stop(QuickResult::not_plain); }
  bool out_of_memory() { return stop(QuickResult::out_of_memory); }

  QuickResult finish() const {
    return cursor_ == text_.size() ? QuickResult::complete : QuickResult::not_plain;
  }

  // Whether an element of this kind may stand here without disturbing the count of an open one.
  bool is_counted_evenly(int id, bool is_empty, char after_name) const {
    const bool raises = after_name == ' ' || after_name == '>';
    return raises != is_empty || open_[static_cast<std::size_t>(id)] == 0;
  }

  bool parse_start_tag() {
    if (at(cursor_) != '<') return not_plain();
    const std::size_t name = cursor_ + 1;
    const std::size_t after_name = name_end(text_, name);
    const int id = find_element(text_.substr(name, after_name - name));
    if (id <= elem::XML_DECLARATION) return not_plain();
    CIMelement* node = builder_.add(id, node_);
    if (node == nullptr) return out_of_memory();
    cursor_ = skip_space(text_, after_name);
    if (!parse_attributes(*node)) return false;
    const bool is_empty = at(cursor_) == '/';
    if (is_empty && at(cursor_ + 1) != '>') return not_plain();
    if (!is_counted_evenly(id, is_empty, at(after_name))) return not_plain();
    cursor_ = skip_space(text_, cursor_ + (is_empty ? 2 : 1));
    return is_empty || parse_content(id, *node);
  }

  // Reads attributes up to the ">" or "/" that ends the tag.
  bool parse_attributes(CIMelement& node) {
    while (at(cursor_) != '>' && at(cursor_) != '/')
      if (!parse_attribute(node)) return false;
    if (node.attributes != nullptr) node.attributes->FreeUnused();
    return true;
  }

  bool parse_attribute(CIMelement& node) {
    const std::size_t equals = text_.find('=', cursor_);
    if (equals == npos) return not_plain();
    const int id = find_attribute(text_.substr(cursor_, equals - cursor_));
    const std::size_t quote = skip_space(text_, equals + 1);
    if (id == attr::UNKNOWN || at(quote) != '"') return not_plain();
    const std::size_t end = text_.find('"', quote + 1);
    if (end == npos) return not_plain();
    if (!builder_.add_attribute(node, id, text_.substr(quote + 1, end - quote - 1)))
      return out_of_memory();
    cursor_ = skip_space(text_, end + 1);
    return true;
  }

  bool parse_content(int id, CIMelement& node) {
    if (at(cursor_) != '<') return parse_text(id, node);
    if (at(cursor_ + 1) == '/') return skip_end_tag(id);
    node_ = &node;
    ids_.push_back(static_cast<unsigned char>(id));
    ++open_[static_cast<std::size_t>(id)];
    return true;
  }

  bool parse_text(int id, CIMelement& node) {
    const std::size_t begin = cursor_;
    while (cursor_ < text_.size() && text_[cursor_] != '<') {
      const std::size_t after = skip_hidden(text_, cursor_);
      if (after == npos) return not_plain();
      cursor_ = after == cursor_ ? cursor_ + 1 : after;
    }
    const std::size_t end = cursor_;
    if (!skip_end_tag(id)) return false;
    builder_.set_value(node, text_.substr(begin, end - begin));
    return true;
  }

  // Steps over the end tag of an element of kind `id`, which must stand here.
  bool skip_end_tag(int id) {
    const std::string_view name = known_cim_elements[id];
    const std::size_t end = cursor_ + 2 + name.size();
    if (!stands_at(text_, cursor_, "</") || !stands_at(text_, cursor_ + 2, name) || at(end) != '>')
      return not_plain();
    cursor_ = skip_space(text_, end + 1);
    return true;
  }

  // Closes the elements that end here.
  bool close_elements() {
    while (node_ != nullptr && at(cursor_) == '<' && at(cursor_ + 1) == '/') {
      const int id = ids_.back();
      if (!skip_end_tag(id)) return false;
      ids_.pop_back();
      --open_[static_cast<std::size_t>(id)];
      node_ = node_->parent;
    }
    return true;
  }

  std::string_view text_;
  std::size_t cursor_;
  TreeBuilder builder_;
  // The innermost open element, the kinds of all open ones, and how many of each kind are open.
  CIMelement* node_ = nullptr;
  std::vector<unsigned char> ids_;
  std::array<std::size_t, elem::COUNT> open_{};
  QuickResult result_ = QuickResult::complete;
};

}  // namespace

QuickResult parse_quickly(std::string_view text, std::size_t begin, CIMelement& root) {
  return QuickParser(text, begin, root).run();
}

}  // namespace zuCIM::codec
