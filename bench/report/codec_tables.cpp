#include "codec_tables.h"

#include <array>

#include "markdown.h"

namespace {

constexpr std::array<const char*, 6> engines{"zuCIM",   "pugixml",  "rapidxml",
                                             "libxml2", "tinyxml2", "memchr"};

std::optional<double> per_second(const Measurements& all, const std::string& subject,
                                 const char* amount, const char* engine, const char* time) {
  return Measurements::ratio(all.find(subject, "document", amount),
                             all.find(subject, engine, time));
}

// Best and median, in megabytes a second.
std::string speed(const Measurements& all, const std::string& subject, const char* engine) {
  const auto best = per_second(all, subject, "bytes", engine, "best");
  const auto median = per_second(all, subject, "bytes", engine, "median");
  if (!best || !median) return "-";
  return number(*best / 1e6) + " (" + number(*median / 1e6) + ")";
}

Row parse_row(const Measurements& all, const std::string& document) {
  const std::string subject = "parse/" + document;
  Row row{document, whole(all.find(subject, "document", "bytes")),
          whole(all.find(subject, "document", "items")),
          whole(per_second(all, subject, "items", "zuCIM", "best"))};
  for (const char* const engine : engines) row.push_back(speed(all, subject, engine));
  row.push_back(number(all.time_ratio(subject, "pugixml")));
  row.push_back(number(all.time_ratio(subject, "libxml2")));
  return row;
}

// Allocations, and the peak as a multiple of the text.
Row memory_row(const Measurements& all, const std::string& document) {
  const auto bytes = all.find("parse/" + document, "document", "bytes");
  Row row{document};
  for (const char* const engine : engines) {
    const auto peak = all.find("memory/" + document, engine, "peak");
    const auto allocations = all.find("memory/" + document, engine, "allocations");
    row.push_back(whole(allocations));
    row.push_back(number(Measurements::ratio(peak, bytes)));
  }
  row.resize(row.size() - 2);
  return row;
}

template <class MakeRow>
std::vector<Row> rows(const Measurements& all, const std::string& prefix, MakeRow make_row) {
  std::vector<Row> made;
  for (const std::string& name : all.subjects(prefix)) made.push_back(make_row(all, name));
  return made;
}

Row generate_row(const Measurements& all, const std::string& document) {
  const std::string subject = "generate/" + document;
  const auto megabytes = [&](const char* engine) {
    return number(
        Measurements::ratio(all.find(subject, engine, "bytes"), all.find(subject, engine, "best"))
            .value_or(0) /
        1e6);
  };
  return {document, whole(all.find(subject, "zuCIM", "bytes")), megabytes("zuCIM"),
          megabytes("pugixml"), number(all.time_ratio(subject, "pugixml"))};
}

}  // namespace

std::string parse_table(const Measurements& all) {
  return table({"document", "bytes", "instances", "zuCIM, instances/s", "zuCIM MB/s", "pugixml",
                "rapidxml", "libxml2", "tinyxml2", "memchr", "zuCIM : pugixml", "zuCIM : libxml2"},
               rows(all, "parse/", parse_row));
}

std::string memory_table(const Measurements& all) {
  return table({"document", "zuCIM", "peak", "pugixml", "peak", "rapidxml", "peak", "libxml2",
                "peak", "tinyxml2", "peak"},
               rows(all, "memory/", memory_row));
}

std::string generate_table(const Measurements& all) {
  return table({"document", "bytes", "zuCIM MB/s", "pugixml", "zuCIM : pugixml"},
               rows(all, "generate/", generate_row));
}

std::string extraction_table(const Measurements& all) {
  const std::string subject = "extract/typical";
  return table({"", "parse and free", "extract", "extract : parse"},
               {{"10,000 typical named instances", duration(all.find(subject, "parse", "best")),
                 duration(all.find(subject, "extract", "best")),
                 number(Measurements::inverse(all.time_ratio(subject, "parse")))}});
}
