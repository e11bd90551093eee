#include "CIMXMLparser/quick_parser.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <array>
#include <bit>
#include <cstring>
#include <utility>
#include <vector>

#include "CIMXMLparser/builder.h"
#include "CIMXMLparser/names.h"
#include "CIMXMLparser/text.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM::codec {
namespace {

// What a character means to the parser.
constexpr unsigned char is_white = 1;
constexpr unsigned char is_end_of_name = 2;
constexpr unsigned char is_end_of_text = 4;

constexpr std::array<unsigned char, 256> classes = [] {
  std::array<unsigned char, 256> table{};
  for (std::size_t c = 0; c != table.size(); ++c)
    if (is_space(static_cast<char>(c))) table[c] = is_white | is_end_of_name;
  for (const char c : {'/', '>'}) table[static_cast<unsigned char>(c)] = is_end_of_name;
  for (const char c : {'<', '"', '\''}) table[static_cast<unsigned char>(c)] = is_end_of_text;
  table[0] = is_end_of_name | is_end_of_text;
  return table;
}();

bool is_of_class(char c, unsigned char which) {
  return (classes[static_cast<unsigned char>(c)] & which) != 0;
}

bool ends_name(char c) {
  return is_of_class(c, is_end_of_name);
}

// These rely on the NUL that follows the text.
const char* skip_space(const char* from) {
  while (is_of_class(*from, is_white)) ++from;
  return from;
}

const char* name_end(const char* from) {
  while (!ends_name(*from)) ++from;
  return from;
}

// The first character from `from` on that may end a text; the NUL at `end` is one.
const char* find_end_of_text(const char* from, [[maybe_unused]] const char* end) {
#if defined(__SSE2__)
  while (end - from >= 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    const __m128i tag = _mm_cmpeq_epi8(block, _mm_set1_epi8('<'));
    const __m128i quote = _mm_cmpeq_epi8(block, _mm_set1_epi8('"'));
    const __m128i apostrophe = _mm_cmpeq_epi8(block, _mm_set1_epi8('\''));
    const int found = _mm_movemask_epi8(_mm_or_si128(tag, _mm_or_si128(quote, apostrophe)));
    if (found != 0) return from + std::countr_zero(static_cast<unsigned>(found));
    from += 16;
  }
#endif
  while (!is_of_class(*from, is_end_of_text)) ++from;
  return from;
}

// Where the text that begins at `from` ends: at the first "<" outside quotes. Null when there is
// none.
const char* text_end(const char* from, const char* end) {
  const char* position = from;
  for (;;) {
    position = find_end_of_text(position, end);
    if (*position == '<') return position;
    const std::string_view rest(position, end);
    const std::size_t after = rest.empty() ? npos : skip_hidden(rest, 0);
    if (after == npos) return nullptr;
    position += after;
  }
}

// Why proper nesting is enough. The end of an element is the end tag that brings the count of its
// name to zero, where an opening tag counts only when a blank or ">" follows its name. In a message
// whose tags nest properly that is the element's own end tag, provided that no tag inside it is
// counted on one side only: an empty tag with a blank behind its name raises the count without
// lowering it, an opening tag with other white space there lowers it without raising it. Both are
// harmless while no element of the same name is open. Quoted runs are skipped as a search skips
// them.
//
// Names are guessed from what stood in their place last time, which a machine-written message makes
// right nearly always, and looked up otherwise.
class QuickParser {
 public:
  // The text is followed by a NUL.
  QuickParser(std::string_view text, std::size_t begin, CIMelement& root)
      : cursor_(text.data() + begin), end_(text.data() + text.size()), builder_(root, text) {}

  QuickResult run() {
    while (result_ == QuickResult::complete) {
      if (!parse_start_tag() || !close_elements()) break;
      if (node_ == nullptr) return finish();
    }
    return result_;
  }

 private:
  bool stop(QuickResult result) {
    result_ = result;
    return false;
  }
  bool not_plain() { return stop(QuickResult::not_plain); }
  bool out_of_memory() { return stop(QuickResult::out_of_memory); }

  QuickResult finish() const {
    return cursor_ == end_ ? QuickResult::complete : QuickResult::not_plain;
  }

  // Whether an element of this kind may stand here without disturbing the count of an open one.
  bool is_counted_evenly(int id, bool is_empty, char after_name) const {
    const bool raises = after_name == ' ' || after_name == '>';
    return raises != is_empty || open_[static_cast<std::size_t>(id)] == 0;
  }

  // The id of the element whose name stands at the cursor, which then stands behind it; -1 for an
  // unknown one.
  int read_element_name() {
    unsigned char& guess = guessed_elements_[last_id_];
    const NameRow& guessed = elements_[guess];
    if (guessed.stands_at(cursor_, end_) && ends_name(cursor_[guessed.size()])) {
      cursor_ += guessed.size();
    } else {
      const char* const begin = std::exchange(cursor_, name_end(cursor_));
      const int id = find_element({begin, cursor_});
      if (id < 0) return -1;
      guess = static_cast<unsigned char>(id);
    }
    return last_id_ = guess;
  }

  bool parse_start_tag() {
    if (*cursor_ != '<') return not_plain();
    ++cursor_;
    const int id = read_element_name();
    if (id < 0) return not_plain();
    const char after_name = *cursor_;
    CIMelement* const node = builder_.add(id, node_);
    if (node == nullptr) return out_of_memory();
    cursor_ = skip_space(cursor_);
    if (*cursor_ != '>' && !parse_attributes(static_cast<std::size_t>(id), *node)) return false;
    const bool is_empty = *cursor_ == '/';
    if (is_empty && cursor_[1] != '>') return not_plain();
    if (!is_counted_evenly(id, is_empty, after_name)) return not_plain();
    cursor_ = skip_space(cursor_ + (is_empty ? 2 : 1));
    return is_empty || parse_content(id, *node);
  }

  // Reads attributes up to the ">" or "/" that ends the tag. No element of CIM-XML has as many as
  // there is room for.
  bool parse_attributes(std::size_t element, CIMelement& node) {
    std::size_t count = 0;
    while (*cursor_ != '>' && *cursor_ != '/') {
      if (count == found_.size()) return not_plain();
      AttributeText& attribute = found_[count];
      attribute.id = read_attribute_name(guessed_attributes_[element][count]);
      if (attribute.id < 0 || !parse_attribute_value(attribute.text)) return not_plain();
      ++count;
    }
    return builder_.add_attributes(node, {found_.data(), count}) || out_of_memory();
  }

  // The id of the attribute whose name stands at the cursor, which then stands at the "=" behind
  // it; -1 for an unknown one.
  int read_attribute_name(unsigned char& guess) {
    const NameRow& guessed = attributes_[guess];
    if (guessed.stands_at(cursor_, end_) && cursor_[guessed.size()] == '=') {
      cursor_ += guessed.size();
      return guess;
    }
    const auto rest = static_cast<std::size_t>(end_ - cursor_);
    const auto* const equals = static_cast<const char*>(std::memchr(cursor_, '=', rest));
    if (equals == nullptr) return -1;
    const int id = find_attribute({std::exchange(cursor_, equals), equals});
    if (id == attr::UNKNOWN) return -1;
    guess = static_cast<unsigned char>(id);
    return id;
  }

  bool parse_attribute_value(std::string_view& value) {
    const char* const quote = skip_space(cursor_ + 1);
    if (*quote != '"') return false;
    const char* const begin = quote + 1;
    const auto rest = static_cast<std::size_t>(end_ - begin);
    const auto* const end = static_cast<const char*>(std::memchr(begin, '"', rest));
    if (end == nullptr) return false;
    value = {begin, end};
    cursor_ = skip_space(end + 1);
    return true;
  }

  bool parse_content(int id, CIMelement& node) {
    if (*cursor_ != '<') return parse_text(id, node);
    if (cursor_[1] == '/') return skip_end_tag(id);
    node_ = &node;
    ids_.push_back(static_cast<unsigned char>(id));
    ++open_[static_cast<std::size_t>(id)];
    return true;
  }

  bool parse_text(int id, CIMelement& node) {
    const char* const begin = cursor_;
    const char* const end = text_end(begin, end_);
    if (end == nullptr) return not_plain();
    cursor_ = end;
    if (!skip_end_tag(id)) return false;
    builder_.set_value(node, {begin, end});
    return true;
  }

  // Steps over the end tag of an element of kind `id`, which must stand here.
  bool skip_end_tag(int id) {
    const NameRow& name = elements_[static_cast<std::size_t>(id)];
    if (cursor_[0] != '<' || cursor_[1] != '/' || !name.stands_at(cursor_ + 2, end_) ||
        cursor_[2 + name.size()] != '>')
      return not_plain();
    cursor_ = skip_space(cursor_ + 2 + name.size() + 1);
    return true;
  }

  // Closes the elements that end here.
  bool close_elements() {
    while (node_ != nullptr && cursor_[0] == '<' && cursor_[1] == '/') {
      const int id = ids_.back();
      if (!skip_end_tag(id)) return false;
      ids_.pop_back();
      --open_[static_cast<std::size_t>(id)];
      node_ = node_->parent;
    }
    return true;
  }

  static constexpr std::size_t most_attributes = 16;

  const char* cursor_;
  const char* end_;
  TreeBuilder builder_;
  const std::array<NameRow, elem::UNKNOWN>& elements_ = element_names();
  const std::array<NameRow, attr::UNKNOWN>& attributes_ = attribute_names();
  // The innermost open element, the kinds of all open ones, and how many of each kind are open.
  CIMelement* node_ = nullptr;
  std::vector<unsigned char> ids_;
  std::array<std::size_t, elem::COUNT> open_{};
  // The kind of the last element that began; what followed each kind when it came last, and which
  // attributes it had.
  unsigned char last_id_ = elem::XML_DECLARATION;
  std::array<unsigned char, elem::COUNT> guessed_elements_{};
  std::array<std::array<unsigned char, most_attributes>, elem::COUNT> guessed_attributes_{};
  // The attributes of the tag that is being read.
  std::array<AttributeText, most_attributes> found_;
  QuickResult result_ = QuickResult::complete;
};

}  // namespace

QuickResult parse_quickly(std::string_view text, std::size_t begin, CIMelement& root) {
  return QuickParser(text, begin, root).run();
}

}  // namespace zuCIM::codec
