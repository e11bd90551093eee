#include "support/trace_recorder.h"

#include <algorithm>
#include <mutex>

#include "BRQ/Trace.h"
#include "support/failing_allocator.h"
#include "zuCIM/vocabulary.h"

namespace {

// The sink outlives every recorder, so a late line from another thread finds valid memory.
std::mutex recorded_mutex;
std::vector<RecordedLine> recorded;

void record(const BRQ::TraceLine& line) {
  // What is kept is no allocation of the tested code.
  const UncountedAllocations uncounted;
  const std::lock_guard<std::mutex> guard(recorded_mutex);
  recorded.push_back(RecordedLine{line.level, line.source, line.line, line.text});
}

}  // namespace

TraceRecorder::TraceRecorder(unsigned mask)
    : previous_mask_(zuCIM::BRQ_MODULE_INFO_zuCIM.trace_mask()) {
  clear();
  BRQ::set_trace_sink(record);
  zuCIM::BRQ_MODULE_INFO_zuCIM.set_trace_mask(mask);
}

TraceRecorder::~TraceRecorder() {
  zuCIM::BRQ_MODULE_INFO_zuCIM.set_trace_mask(previous_mask_);
  BRQ::set_trace_sink({});
}

std::vector<RecordedLine> TraceRecorder::lines() const {
  const std::lock_guard<std::mutex> guard(recorded_mutex);
  return recorded;
}

std::vector<std::string> TraceRecorder::texts() const {
  std::vector<std::string> result;
  for (const RecordedLine& line : lines()) result.push_back(line.text);
  return result;
}

std::vector<std::string> TraceRecorder::texts(unsigned level) const {
  std::vector<std::string> result;
  for (const RecordedLine& line : lines())
    if (line.level == level) result.push_back(line.text);
  return result;
}

int TraceRecorder::count(unsigned level, const std::string& source, const std::string& text) const {
  int found = 0;
  for (const RecordedLine& line : lines())
    if (line.level == level && line.source == source && line.text == text) ++found;
  return found;
}

int TraceRecorder::count(unsigned level, const std::string& source, int line,
                         const std::string& text) const {
  int found = 0;
  for (const RecordedLine& entry : lines())
    if (entry.level == level && entry.source == source && entry.line == line && entry.text == text)
      ++found;
  return found;
}

bool TraceRecorder::has_only(unsigned level, const std::string& source, int line,
                             const std::string& text) const {
  return lines().size() == 1 && count(level, source, line, text) == 1;
}

void TraceRecorder::clear() {
  const std::lock_guard<std::mutex> guard(recorded_mutex);
  recorded.clear();
}
