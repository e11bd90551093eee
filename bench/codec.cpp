// Times the parsers on every document, the generators, and the extraction of named instances.
// Usage: bench_codec [REGEX]     only what matches, for example '^parse/typical/zuCIM$'
#include <string>
#include <vector>

#include "context.h"
#include "documents.h"
#include "engines.h"
#include "race.h"
#include "results.h"
#include "subjects.h"

namespace {

using namespace bench;

std::string race_of(const Subject& subject) {
  return "parse/" + subject.name;
}

// A parser that refuses a document is not timed on it; ours is, since the time counts then, too.
bool takes_part(const Engine& engine, const Subject& subject, const std::string& text) {
  if (&engine == engines().data()) return true;
  return subject.depth <= engine.deepest && engine.parse(text);
}

// Those that were asked for. No other parses anything, or it would stand in the profile of these.
std::vector<const Engine*> wanted_engines(const Subject& subject) {
  std::vector<const Engine*> wanted;
  for (const Engine& engine : engines())
    if (is_wanted(race_of(subject), {engine.name})) wanted.push_back(&engine);
  return wanted;
}

void parse(const Subject& subject) {
  const std::vector<const Engine*> wanted = wanted_engines(subject);
  if (wanted.empty()) return;
  const std::string text = subject.make();
  add_result(race_of(subject), "document", "bytes", static_cast<double>(text.size()));
  add_result(race_of(subject), "document", "items", static_cast<double>(subject.items));
  std::vector<Contender> contenders;
  for (const Engine* engine : wanted)
    if (takes_part(*engine, subject, text))
      contenders.push_back({engine->name, [&text, engine] { engine->parse(text); }});
  race(race_of(subject), contenders);
}

void generate(const char* name, const std::string& text) {
  const std::string title = std::string("generate/") + name;
  if (!is_wanted(title, {"zuCIM", "pugixml"})) return;
  const Generate ours = generate_with_zucim(text);
  const Generate theirs = generate_with_pugixml(text);
  add_result(title, "zuCIM", "bytes", static_cast<double>(ours()));
  add_result(title, "pugixml", "bytes", static_cast<double>(theirs()));
  race(title, {{"zuCIM", [&] { ours(); }}, {"pugixml", [&] { theirs(); }}});
}

void extraction() {
  if (!is_wanted("extract/typical", {"parse", "extract"})) return;
  constexpr std::size_t count = 10000;
  const std::string text = typical_instances(count);
  AnswerHolder holder("HOST_NumericSensor", text);
  add_result("extract/typical", "document", "items", static_cast<double>(count));
  race("extract/typical", {{"extract", [&] { holder.extract(); }, [&] { holder.take_answer(); }},
                           {"parse", [&] { parse_with_zucim(text); }}});
}

}  // namespace

int main(int argc, char* argv[]) {
  prepare(argc, argv);
  for (const Subject& subject : subjects()) parse(subject);
  generate("typical", typical_instances(1000));
  generate("class", class_definition());
  extraction();
}
