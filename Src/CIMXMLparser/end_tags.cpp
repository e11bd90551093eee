#include "CIMXMLparser/end_tags.h"

#include <algorithm>
#include <array>
#include <utility>

#include "CIMXMLparser/names.h"
#include "CIMXMLparser/text.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM::codec {
namespace {

constexpr std::string_view comment_begin = "<!--";
constexpr std::string_view comment_end = "-->";

enum class TagKind { opening, closing, other };

// How a search for an end tag counts the tag whose name ends at `end`.
TagKind kind_of(std::string_view text, bool slash, std::size_t end) {
  const char follows = end < text.size() ? text[end] : '\0';
  if (slash) return follows == '>' ? TagKind::closing : TagKind::other;
  return follows == '>' || follows == ' ' ? TagKind::opening : TagKind::other;
}

}  // namespace

// The walk from the text's end to its beginning.
class EndTags::Walk {
 public:
  Walk(const Walk&) = delete;
  Walk& operator=(const Walk&) = delete;
  Walk(EndTags& owner, std::size_t begin) : owner_(owner), text_(owner.text_), begin_(begin) {
    for (Unmatched& unmatched : states_) unmatched.fill(npos);
    has_comments_ = text_.find(comment_begin, begin) != npos;
  }

  void run() {
    for (std::size_t position = text_.size(); position > begin_; --position) {
      if (has_comments_) remember_comment_end(position);
      step_onto(position - 1);
    }
  }

 private:
  // For each name the index of the nearest unmatched end tag.
  using Unmatched = std::array<std::size_t, elem::COUNT>;
  struct CommentEnd {
    std::size_t position = npos;
    Unmatched behind{};
  };

  void step_onto(std::size_t position) {
    switch (text_[position]) {
      case '"':
        return std::swap(here_, behind_double_quote_);
      case '\'':
        return std::swap(here_, behind_single_quote_);
      case '<':
        return has_comments_ && stands_at(text_, position, comment_begin) ? enter_comment(position)
                                                                          : enter_tag(position);
      default:
        return;
    }
  }

  // Keeps what is known at `position` when a comment ends there.
  void remember_comment_end(std::size_t position) {
    if (position < begin_ + comment_end.size()) return;
    const std::size_t end = position - comment_end.size();
    if (!stands_at(text_, end, comment_end)) return;
    std::swap(nearest_, farther_);
    nearest_.position = end;
    nearest_.behind = *here_;
  }

  // A comment that begins at `position` cannot end within its first four characters; the next end
  // but one then is the right one, since ends do not overlap.
  void enter_comment(std::size_t position) {
    const std::size_t earliest = position + comment_begin.size();
    const CommentEnd& end =
        nearest_.position != npos && nearest_.position < earliest ? farther_ : nearest_;
    if (end.position == npos)
      here_->fill(npos);
    else
      *here_ = end.behind;
  }

  void enter_tag(std::size_t position) {
    const bool slash = stands_at(text_, position, "</");
    const std::size_t name = position + (slash ? 2 : 1);
    const std::size_t end = name_end(text_, name);
    const int id = find_element(text_.substr(name, end - name));
    if (id < 0) return;
    std::size_t& nearest = (*here_)[static_cast<std::size_t>(id)];
    owner_.tags_.push_back(Tag{position, nearest, id});
    const TagKind kind = kind_of(text_, slash, end);
    if (kind == TagKind::closing) nearest = owner_.tags_.size() - 1;
    if (kind == TagKind::opening && nearest != npos) nearest = owner_.tags_[nearest].behind;
  }

  EndTags& owner_;
  std::string_view text_;
  std::size_t begin_;
  bool has_comments_ = false;
  // What is known at this position, and behind the nearest quote of each kind.
  std::array<Unmatched, 3> states_{};
  Unmatched* here_ = &states_[0];
  Unmatched* behind_double_quote_ = &states_[1];
  Unmatched* behind_single_quote_ = &states_[2];
  CommentEnd nearest_;
  CommentEnd farther_;
};

EndTags::EndTags(std::string_view text, std::size_t begin) : text_(text) {
  Walk(*this, begin).run();
}

std::size_t EndTags::index_of(std::size_t position) const {
  const auto found = std::partition_point(
      tags_.begin(), tags_.end(), [position](const Tag& tag) { return tag.position > position; });
  return static_cast<std::size_t>(found - tags_.begin());
}

// What a start tag holds besides quoted runs may look like tags too; the last one of the same name
// that a search meets before the content decides.
const EndTags::Tag& EndTags::last_before_content(int id, std::size_t start,
                                                 std::size_t content) const {
  std::size_t index = index_of(start);
  const Tag* last = &tags_[index];
  for (std::size_t position = start + 1; index > 0 && position < content;) {
    while (index > 0 && tags_[index - 1].position < position) --index;
    if (index == 0 || tags_[index - 1].position >= content) break;
    const std::size_t after = skip_hidden(text_, position);
    if (after == npos) break;
    if (after == position && tags_[index - 1].position == position && tags_[index - 1].id == id)
      last = &tags_[index - 1];
    position = after == position ? position + 1 : after;
  }
  return *last;
}

std::size_t EndTags::find(int id, std::size_t start, std::size_t content) const {
  const Tag& tag = last_before_content(id, start, content);
  return tag.behind == npos ? npos : tags_[tag.behind].position;
}

}  // namespace zuCIM::codec
