#pragma once

#include <string>
#include <vector>

// One recorded trace line.
struct RecordedLine {
  unsigned level;
  std::string source;
  int line;
  std::string text;
};

// While it lives, switches the library's trace levels in `mask` on and keeps every line.
// One recorder at a time; lines may come from any thread.
class TraceRecorder {
 public:
  explicit TraceRecorder(unsigned mask = ~0U);
  ~TraceRecorder();
  TraceRecorder(const TraceRecorder&) = delete;
  TraceRecorder& operator=(const TraceRecorder&) = delete;

  // All lines so far, in order.
  std::vector<RecordedLine> lines() const;
  // The texts of all lines so far, in order.
  std::vector<std::string> texts() const;
  // The texts of the lines of one level, in order.
  std::vector<std::string> texts(unsigned level) const;
  // How many lines have exactly this level, source and text.
  int count(unsigned level, const std::string& source, const std::string& text) const;
  // The same for lines that also carry this line number.
  int count(unsigned level, const std::string& source, int line, const std::string& text) const;
  // Whether the only line so far is this one.
  bool has_only(unsigned level, const std::string& source, int line, const std::string& text) const;
  // Forgets all lines.
  void clear();

 private:
  unsigned previous_mask_;
};
