// Counts what each parser takes from the heap, for every document: allocations and the peak.
#include "engines.h"
#include "heap_count.h"
#include "results.h"
#include "subjects.h"

namespace {

using namespace bench;

void measure(const Subject& subject, const std::string& text, const Engine& engine) {
  if (subject.depth > engine.deepest) return;
  // The first run also pays for what a library keeps for good.
  if (!engine.parse(text) && &engine != engines().data()) return;
  start_heap_count();
  engine.parse(text);
  const HeapUse use = heap_use();
  const std::string title = "memory/" + subject.name;
  add_result(title, engine.name, "allocations", static_cast<double>(use.allocations));
  add_result(title, engine.name, "peak", static_cast<double>(use.peak));
}

}  // namespace

int main() {
  for (const Subject& subject : subjects()) {
    const std::string text = subject.make();
    for (const Engine& engine : engines()) measure(subject, text, engine);
  }
}
