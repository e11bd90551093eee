#include "CIMXMLparser/exact_parser.h"

#include <optional>
#include <string>
#include <vector>

#include "BRQ/Trace.h"
#include "CIMXMLparser/attribute_list.h"
#include "CIMXMLparser/builder.h"
#include "CIMXMLparser/end_tags.h"
#include "CIMXMLparser/names.h"
#include "CIMXMLparser/text.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM::codec {
namespace {

constexpr const char* trace_source = "Src/CIMXMLparser";

// Traces an error; the result ends the parse.
bool fail(const char* message, int line = __builtin_LINE()) {
  BRQ_TRACE_AT(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source, line, message);
  return false;
}

// One start tag, and the content that follows it unless the element is empty.
struct StartTag {
  int id = elem::UNKNOWN;
  bool is_empty = false;
  std::string_view attributes;
  std::size_t content = 0;
};

class ExactParser {
 public:
  ExactParser(std::string_view text, std::size_t begin, CIMelement& root)
      : text_(text), cursor_(begin), end_tags_(text, begin), builder_(root, text) {
    levels_.push_back(Level{text.size(), npos, &root, nullptr});
  }

  int run() {
    for (;;) {
      if (!skip_markup()) return -1;
      if (cursor_ >= levels_.back().end)
        last_id_ = elem::UNKNOWN;
      else if (!parse_element())
        return -1;
      while (cursor_ >= levels_.back().end) {
        if (levels_.size() == 1) return last_id_;
        leave_level();
      }
    }
  }

 private:
  // The content of one element, or the whole text. `current` is the element made last; `parent` the
  // one that the next becomes a child of, none before the first.
  struct Level {
    std::size_t end;
    std::size_t resume;
    CIMelement* current;
    CIMelement* parent;
    int id = elem::UNKNOWN;
  };

  // The text up to the end of the current level.
  std::string_view level_text() const { return text_.substr(0, levels_.back().end); }

  void leave_level() {
    cursor_ = levels_.back().resume;
    levels_.pop_back();
    last_id_ = levels_.back().id;
  }

  bool skip_all(std::string_view begin, std::string_view end, const char* message) {
    const std::string_view text = level_text();
    while (stands_at(text, cursor_, begin)) {
      const std::size_t found = text.find(end, cursor_ + begin.size());
      if (found == npos) return fail(message);
      cursor_ = skip_space(text, found + end.size());
    }
    return true;
  }

  // Drops comments, then character data, that stand where an element is expected.
  bool skip_markup() {
    const std::string_view text = level_text();
    if (cursor_ + 1 >= text.size() || text[cursor_ + 1] != '!') return true;
    if (text[cursor_] != '<') return fail("findNextElement: missing '<' sign at begin.");
    return skip_all("<!--", "-->", "findNextElement: missing '-->'") &&
           skip_all("<![CDATA[", "]]>", "findNextElement: missing ']]>'");
  }

  bool parse_element() {
    const std::size_t start = cursor_;
    const std::optional<StartTag> tag = parse_start_tag();
    if (!tag) return false;
    std::size_t end = tag->content;
    if (!tag->is_empty && !find_end(*tag, start, end)) return false;
    CIMelement* node = add_node(tag->id);
    if (node == nullptr) return false;
    if (!parse_attribute_list(tag->attributes, *node, builder_)) return false;
    last_id_ = tag->id;
    if (!tag->is_empty) enter_content(*tag, *node, end);
    return true;
  }

  // Finds the tag name at the cursor and what follows it; the cursor moves behind the tag and the
  // white space after it.
  std::optional<StartTag> parse_start_tag() {
    const std::string_view text = level_text();
    StartTag tag;
    if (text[cursor_] != '<') {
      fail("findNextElement: missing '<' sign at begin.");
      return std::nullopt;
    }
    const std::size_t name = cursor_ + 1;
    const std::size_t after = name_end(text, name);
    tag.id = find_element(text.substr(name, after - name));
    if (tag.id < 0) {
      fail("findNextElement: Unknown CIM Elementname");
      return std::nullopt;
    }
    return finish_start_tag(tag, text, after) ? std::optional<StartTag>(tag) : std::nullopt;
  }

  bool finish_start_tag(StartTag& tag, std::string_view text, std::size_t after_name) {
    const std::size_t begin = skip_space(text, after_name);
    std::size_t end = after_name;
    if (stands_at(text, begin, "/>")) {
      tag.is_empty = true;
      end = begin + 1;
    } else if (!stands_at(text, after_name, ">")) {
      end = find_unquoted(text, ">", begin);
      if (end == npos) return fail("findNextElement: missing according '>' sign!");
      tag.is_empty =
          text[end - 1] == '/' || (text[end - 1] == '?' && tag.id == elem::XML_DECLARATION);
      if (end > begin) tag.attributes = text.substr(begin, end - begin - (tag.is_empty ? 1 : 0));
    }
    cursor_ = tag.content = skip_space(text, end + 1);
    return true;
  }

  // Finds the end tag of a non-empty element; `end` becomes the end of its content.
  bool find_end(const StartTag& tag, std::size_t start, std::size_t& end) {
    end = end_tags_.find(tag.id, start, tag.content);
    if (end < levels_.back().end) return true;
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::warning, trace_source,
              "findNextElement: Missing correspending keyword </%s>", known_cim_elements[tag.id]);
    return false;
  }

  CIMelement* add_node(int id) {
    Level& level = levels_.back();
    CIMelement* node = builder_.add(id, level.parent != nullptr ? level.parent : level.current);
    if (node == nullptr) return nullptr;
    level.current = node;
    level.parent = node->parent;
    level.id = id;
    return node;
  }

  // Content that begins with a tag is parsed next; other content is the element's text.
  void enter_content(const StartTag& tag, CIMelement& node, std::size_t end) {
    const std::size_t tag_length = std::string_view(known_cim_elements[tag.id]).size() + 3;
    const std::size_t resume = skip_space(level_text(), end + tag_length);
    if (tag.content < end && text_[tag.content] == '<') {
      levels_.push_back(Level{end, resume, &node, nullptr});
      return;
    }
    if (tag.content < end) builder_.set_value(node, text_.substr(tag.content, end - tag.content));
    cursor_ = resume;
  }

  std::string_view text_;
  std::size_t cursor_;
  EndTags end_tags_;
  TreeBuilder builder_;
  std::vector<Level> levels_;
  int last_id_ = elem::UNKNOWN;
};

}  // namespace

int parse_exactly(std::string_view text, std::size_t begin, CIMelement& root) {
  return ExactParser(text, begin, root).run();
}

}  // namespace zuCIM::codec
