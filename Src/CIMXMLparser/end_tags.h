#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace zuCIM::codec {

// Where the elements of a text end, for all elements at once.
//
// The end tag of an element is found by counting: from its content on, outside quoted runs and
// comments, an opening tag of the same name raises the depth and an end tag lowers it. The answer
// depends only on where the search starts, so one walk from the text's end to its beginning gives
// all answers: at each position it knows, for each name, the end tags that a search from there
// would leave unmatched, the nearest first. At a quoted run or a comment a search goes on behind
// it, so what is known there is known here.
class EndTags {
 public:
  // Finds the end tags of `text` from `begin` on; `text` must outlive the object. Throws
  // std::bad_alloc.
  EndTags(std::string_view text, std::size_t begin);

  // The position of the "</" that ends the element `id` whose start tag begins at `start` and whose
  // content begins at `content`; npos when it has none.
  std::size_t find(int id, std::size_t start, std::size_t content) const;

 private:
  class Walk;

  // A known name behind "<" or "</". `behind` is the index of the end tag that a search for this
  // name finds when it starts behind this tag.
  struct Tag {
    std::size_t position;
    std::size_t behind;
    int id;
  };

  std::size_t index_of(std::size_t position) const;
  const Tag& last_before_content(int id, std::size_t start, std::size_t content) const;

  std::string_view text_;
  // All tags, the last one of the text first.
  std::vector<Tag> tags_;
};

}  // namespace zuCIM::codec
