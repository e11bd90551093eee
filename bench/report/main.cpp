// Makes the page of results from the measurements on standard input. Its arguments are lines that
// say where and when they were taken.
// Usage: bench_report LINE... < MEASUREMENTS
#include <iostream>

#include "codec_tables.h"
#include "growth.h"
#include "measurements.h"
#include "verdicts.h"
#include "wire_tables.h"

namespace {

void section(const char* title, const char* text, const std::string& table) {
  std::cout << "\n## " << title << "\n\n" << text << "\n\n" << table;
}

}  // namespace

int main(int argc, char* argv[]) {
  const Measurements all(std::cin);
  std::cout
      << "# How fast zuCIM is\n\n"
         "Made by `./bench/run`. What is compared runs in turn, in many short rounds. What\n"
         "counts are the ratios: a ratio is the median of the ratios of all rounds, so that\n"
         "what else the machine does meets both sides alike. The heap keeps what is freed.\n\n";
  for (int i = 1; i < argc; ++i) std::cout << "- " << argv[i] << '\n';
  section("Verdicts", "Ratios, but for the indications and the exponent.", verdicts(all));
  section("Parsing to a finished tree, and freeing it",
          "Megabytes a second of processor time, best and (median); the last two columns say how\n"
          "many times as fast zuCIM is. A dash: the parser refuses the document. `memchr` only\n"
          "finds every \"<\".",
          parse_table(all));
  section("Memory of that",
          "Allocations, and the most memory taken from the heap as a multiple of the text.",
          memory_table(all));
  section("Generating text from a tree", "To a new string, one tag on a line.",
          generate_table(all));
  section("Extraction", "Moving the results out of a parsed answer.", extraction_table(all));
  section("EnumerateInstances of 10,000 typical instances",
          "Over loopback, from a server process that sends prepared bytes; medians.",
          enumeration_table(all));
  section("Small exchanges", "Over loopback, by another process; medians.", request_table(all));
  section("Growth",
          "Times for this many instances (namespaces, contexts), each ten times the one before,\n"
          "from cold caches, and the exponent of the growth, by least squares of the logarithms.",
          growth_table(all));
}
