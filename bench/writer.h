#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace bench {

// Numbers and words that look like chance but are the same each time. The engine is fixed by the
// C++ standard; its distributions are not, so they aren't used.
class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}

  std::size_t below(std::size_t limit) { return engine_() % limit; }
  std::string number(std::size_t limit) { return std::to_string(below(limit)); }
  // A lower-case word of three to nine letters.
  std::string word();
  // `count` words with blanks between them.
  std::string words(std::size_t count);

 private:
  std::mt19937 engine_;
};

// Appends elements to a text, one tag on a line unless it holds a value.
class Writer {
 public:
  Writer& open(std::string_view tag);
  Writer& close(std::string_view name);
  Writer& line(std::string_view text);
  // <VALUE>`text`</VALUE>
  Writer& value(std::string_view text);
  std::size_t size() const { return out_.size(); }
  std::string take() { return std::move(out_); }

 private:
  std::string out_;
};

// Begins a message, up to its first element. Returns `out`.
Writer& begin_message(Writer& out, std::string_view id);

// Begins the answer to an intrinsic method, up to the start of its return value, and ends it.
void begin_answer(Writer& out, std::string_view method);
std::string end_answer(Writer& out);

}  // namespace bench
