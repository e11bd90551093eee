// Times the parsers on every document, the generators, and the extraction of named instances.
// Usage: bench_codec [REGEX]     only what matches, for example '^parse/typical/zuCIM$'
#include <memory>

#include "documents.h"
#include "engines.h"
#include "race.h"
#include "results.h"
#include "subjects.h"
#include "zuCIM.h"

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

void parse(const Subject& subject) {
  if (!is_wanted(race_of(subject),
                 {"zuCIM", "pugixml", "rapidxml", "libxml2", "tinyxml2", "memchr"}))
    return;
  const std::string text = subject.make();
  add_result(race_of(subject), "document", "bytes", static_cast<double>(text.size()));
  add_result(race_of(subject), "document", "items", static_cast<double>(subject.items));
  std::vector<Contender> contenders;
  for (const Engine& engine : engines())
    if (takes_part(engine, subject, text))
      contenders.push_back({engine.name, [&text, &engine] { engine.parse(text); }});
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

// A context that holds an answer, and no server behind it.
class Holder {
 public:
  explicit Holder(const std::string& text) : text_(text) {
    context_.setCurrentClass("HOST_NumericSensor", "");
  }

  void take_answer() {
    context_.currentClass->kill_element(&context_.currentClass->instanceNames);
    context_.currentClass->kill_element(&context_.currentClass->instances);
    context_.result.ParseCIMXML(text_);
  }
  void extract() { context_.ExtractNamedInstances(); }

 private:
  const std::string& text_;
  zuCIM::CIMcontainer context_;
};

void extraction() {
  if (!is_wanted("extract/typical", {"parse", "extract"})) return;
  constexpr std::size_t count = 10000;
  const std::string text = typical_instances(count);
  Holder holder(text);
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
