#include "verdicts.h"

#include <algorithm>

#include "growth.h"
#include "markdown.h"

namespace {

using Value = std::optional<double>;

enum class Bound { at_least, at_most };

struct Target {
  const char* what;
  Bound bound;
  double limit;
  Value measured;
};

std::string outcome(const Target& target) {
  if (!target.measured) return "not measured";
  const double factor = target.bound == Bound::at_least ? target.limit / *target.measured
                                                        : *target.measured / target.limit;
  return factor <= 1 ? "reached" : "**not reached**, by a factor of " + number(factor);
}

Row row(const Target& target) {
  const char* const bound = target.bound == Bound::at_least ? "at least " : "at most ";
  return {target.what, bound + number(target.limit), number(target.measured), outcome(target)};
}

Value memory_per_byte(const Measurements& all) {
  return Measurements::ratio(all.find("memory/typical", "zuCIM", "peak"),
                             all.find("parse/typical", "document", "bytes"));
}

Value time_per_byte(const Measurements& all, const std::string& document) {
  return Measurements::ratio(all.find("parse/" + document, "zuCIM", "best"),
                             all.find("parse/" + document, "document", "bytes"));
}

// The worst of the hostile texts beside the friendly one.
Value hostility(const Measurements& all) {
  Value worst;
  for (const char* const document : {"stray-quotes", "lookalikes", "comments", "unclosed"})
    worst = std::max(
        worst, Measurements::ratio(time_per_byte(all, document), time_per_byte(all, "friendly")));
  return worst;
}

// The time of zuCIM as a multiple of another's.
Value against(const Measurements& all, const char* subject, const char* other) {
  return Measurements::inverse(all.time_ratio(subject, other));
}

// An absolute figure, so the least disturbed round counts.
Value indications_per_second(const Measurements& all) {
  return Measurements::ratio(all.find("listener", "document", "items"),
                             all.find("listener", "zuCIM", "best"));
}

}  // namespace

std::string verdicts(const Measurements& all) {
  const std::vector<Target> targets{
      {"Parse and free, typical document: speed, pugixml = 1", Bound::at_least, 1,
       all.time_ratio("parse/typical", "pugixml")},
      {"Parse and free, typical document: speed, libxml2 = 1", Bound::at_least, 2.5,
       all.time_ratio("parse/typical", "libxml2")},
      {"Peak memory of that parse, the text = 1", Bound::at_most, 4, memory_per_byte(all)},
      {"Generate, typical document: speed, pugixml's writer = 1", Bound::at_least, 1,
       all.time_ratio("generate/typical", "pugixml")},
      {"Extraction of 10,000 named instances: time, their parse = 1", Bound::at_most, 0.1,
       against(all, "extract/typical", "parse")},
      {"Worst hostile text of 1 MiB: time, a friendly text = 1", Bound::at_most, 20,
       hostility(all)},
      {"EnumerateInstances of 10,000: time, libcurl and the parse = 1", Bound::at_most, 1.5,
       against(all, "wire/enumerate", "libcurl and parse")},
      {"EnumerateInstances of 10,000: speed, `wbemcli ei` = 1", Bound::at_least, 5,
       all.time_ratio("wire/enumerate", "wbemcli")},
      {"Small request on a kept connection: time, libcurl = 1", Bound::at_most, 1.3,
       against(all, "wire/small", "libcurl")},
      {"Indications a second, with a connection each", Bound::at_least, 5000,
       indications_per_second(all)},
      {"Steepest growth: exponent", Bound::at_most, 1.1, steepest_growth(all)}};
  std::vector<Row> rows;
  std::transform(targets.begin(), targets.end(), std::back_inserter(rows), row);
  return table({"Target", "wanted", "measured", "verdict"}, rows);
}
