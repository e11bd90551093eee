#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "hostile/behaviour.h"

// docs/hostile-servers.md shows the tables. With ZUCIM_UPDATE_DOCS set it is written instead.

namespace {

const std::string file_name = std::string(ZUCIM_SOURCE_DIR) + "/docs/hostile-servers.md";

const char* text_of(EndedBy ended_by) {
  switch (ended_by) {
    case EndedBy::limit:
      return "a limit";
    case EndedBy::clock:
      return "the time-out";
    default:
      return "its end";
  }
}

std::string joined(const std::vector<int>& statuses) {
  std::string text;
  for (const int status : statuses) text += (text.empty() ? "" : " or ") + std::to_string(status);
  return text;
}

template <class Behaviours>
std::string table(const char* peer, const char* status, const Behaviours& behaviours) {
  std::ostringstream text;
  text << "| " << peer << " | " << status
       << " | ended by | at most | within |\n|---|---|---|---|---|\n";
  for (const Behaviour& behaviour : behaviours)
    text << "| " << behaviour.name << " | " << joined(behaviour.statuses) << " | "
         << text_of(behaviour.ended_by) << " | " << behaviour.most_mebibytes << " MiB | "
         << behaviour.most_time.count() << " s |\n";
  return text.str();
}

std::string document() {
  const char* const server = "The server sends or does";
  const char* const sender = "The sender sends or does";
  return "# Hostile servers\n\n"
         "What becomes of an exchange with a server that is broken or means harm. Each line is a "
         "test in\n`tests/hostile`, which also writes these tables: the status that the caller "
         "gets, what ends the\nexchange, how much more memory the process may need for it, and "
         "how long it may take, which is many\ntimes what it does take and ten times more under a "
         "sanitizer. Where two statuses stand, it depends\non who is faster. An exchange that is "
         "\"ended by its end\" takes no longer than the server's part of\nit. For those that "
         "end by the time-out the library's clock runs fast; it must see exactly the five\nseconds "
         "that the test allows. Endless answers are tested with `largestBody` at 1 MiB.\n\n"
         "## Connections and speed\n\n" +
         table(server, "status", transport_behaviours()) + "\n## Heads\n\n" +
         table(server, "status", head_behaviours()) + "\n## Status lines\n\n" +
         table(server, "status", status_behaviours()) + "\n## Documents\n\n" +
         table(server, "status", document_behaviours()) + "\n## TLS\n\n" +
         table(server, "status", tls_behaviours()) +
         "\n## Whole operations\n\nThe tries of one operation and the deletions of one "
         "`unsubscribe` are counted, too.\n\n" +
         table(server, "status", operation_behaviours()) +
         "\n## Senders of indications\n\nA listener that met one of these serves the next sender "
         "as "
         "before. How long it bears silence is in\n`listener_limit`.\n\n" +
         table(sender, "indications", sender_behaviours());
}

std::string content_of_file() {
  std::ostringstream text;
  text << std::ifstream(file_name).rdbuf();
  return text.str();
}

TEST(HostileTable, IsShownInTheDocumentation) {
  if (std::getenv("ZUCIM_UPDATE_DOCS") != nullptr) std::ofstream(file_name) << document();
  EXPECT_EQ(content_of_file(), document()) << "set ZUCIM_UPDATE_DOCS to write it";
}

}  // namespace
