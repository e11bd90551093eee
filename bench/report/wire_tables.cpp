#include "wire_tables.h"

#include "markdown.h"

namespace {

// Of `items`, how many a second.
std::string rate(const Measurements& all, const std::string& subject, const char* engine,
                 double items) {
  const auto per_second = Measurements::ratio(items, all.find(subject, engine, "median"));
  return whole(per_second);
}

Row enumeration_row(const Measurements& all, const char* what, const char* engine) {
  const std::string subject = "wire/enumerate";
  const double items = all.find(subject, "document", "items").value_or(0);
  return {what, duration(all.find(subject, engine, "median")), rate(all, subject, engine, items),
          number(all.time_ratio(subject, engine))};
}

Row request_row(const Measurements& all, const char* what, const std::string& subject,
                const char* other) {
  const double items = all.find(subject, "document", "items").value_or(1);
  return {what, rate(all, subject, "zuCIM", items), rate(all, subject, other, items),
          number(Measurements::inverse(all.time_ratio(subject, other)))};
}

}  // namespace

std::string enumeration_table(const Measurements& all) {
  return table(
      {"", "time", "instances/s", "times zuCIM's"},
      {enumeration_row(all, "zuCIM", "zuCIM"), enumeration_row(all, "libcurl alone", "libcurl"),
       enumeration_row(all, "libcurl alone, then our parse", "libcurl and parse"),
       enumeration_row(all, "`wbemcli ei`, a whole process", "wbemcli")});
}

std::string request_table(const Measurements& all) {
  return table({"", "zuCIM, /s", "the bare one, /s", "time, bare = 1"},
               {request_row(all, "GetInstance on a kept connection, bare: libcurl alone",
                            "wire/small", "libcurl"),
                request_row(all, "GetInstance on 200 contexts by 8 threads, bare: libcurl alone",
                            "wire/polling", "libcurl"),
                request_row(all, "Indications with a connection each, bare: accept, read, answer",
                            "listener", "bare server")});
}
