// Times what the library does on four sizes, each ten times the one before. The report fits the
// exponent of the growth: 1 means that ten times as much takes ten times as long.
// Usage: bench_growth [REGEX]     of "growth/what/size", for example '^growth/parse/'
#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

#include "context.h"
#include "documents.h"
#include "race.h"
#include "replay_server.h"
#include "zuCIM.h"

namespace {

using namespace bench;
using zuCIM::CIMelement;

constexpr std::size_t smallest = 100;
constexpr std::size_t largest = 100000;

// Puts other data into the caches, so that small sizes don't find theirs there.
void chill() {
  static std::vector<char> other(std::size_t{48} << 20);
  for (std::size_t i = 0; i < other.size(); i += 64) ++other[i];
}

// Lets the sizes run in turn. `make` prepares one size and returns what is timed.
void grow(const std::string& what, const std::function<Contender(std::size_t)>& make,
          Clock clock = Clock::cpu) {
  const std::string title = "growth/" + what;
  std::vector<Contender> contenders;
  for (std::size_t size = smallest; size <= largest; size *= 10) {
    if (!is_wanted(title, {std::to_string(size).c_str()})) continue;
    const Contender made = make(size);
    contenders.push_back({std::to_string(size), made.run, [prepare = made.prepare] {
                            if (prepare != nullptr) prepare();
                            chill();
                          }});
  }
  race(title, contenders, clock);
}

std::shared_ptr<CIMelement> tree_of(std::size_t size) {
  auto tree = std::make_shared<CIMelement>();
  tree->ParseCIMXML(small_instances(size));
  return tree;
}

Contender parse(std::size_t size) {
  auto tree = std::make_shared<CIMelement>();
  return {"", [tree, text = small_instances(size)] { tree->ParseCIMXML(text); },
          [tree] { tree->eclean(); }};
}

Contender free_tree(std::size_t size) {
  auto tree = std::make_shared<CIMelement>();
  return {"", [tree] { tree->eclean(); },
          [tree, text = small_instances(size)] { tree->ParseCIMXML(text); }};
}

Contender generate(std::size_t size) {
  return {"", [tree = tree_of(size)] {
            std::string out;
            tree->GenerateCIMXML(out);
          }};
}

Contender copy(std::size_t size) {
  auto target = std::make_shared<CIMelement>();
  return {"", [target, source = tree_of(size)] { *target = *source; },
          [target] { target->eclean(); }};
}

Contender extract(std::size_t size) {
  auto holder = std::make_shared<AnswerHolder>("CIM_Fan", small_instances(size));
  return {"", [holder] { holder->extract(); }, [holder] { holder->take_answer(); }};
}

// Goes from instance to instance, as a caller does, and looks at a property of each.
void walk(CIMelement& tree) {
  CIMelement* instance = tree.findelement(zuCIM::elem::INSTANCE, 0);
  while (instance != nullptr) {
    instance->getValueOf(zuCIM::elem::PROPERTY, "DesiredSpeed");
    instance = instance->getLastElement()->next->findelement(zuCIM::elem::INSTANCE, 0);
  }
}

Contender walk(std::size_t size) {
  return {"", [tree = tree_of(size)] { walk(*tree); }};
}

// Fills the registry; on the way fifty contexts, the first among them, come and go, so that none
// stands where its index says. Returns the indices.
std::vector<unsigned> fill_registry(std::size_t size) {
  constexpr std::size_t erased = 50;
  zuCIM::clearContainers();
  std::vector<unsigned> indices;
  const auto make = [] { return make_plain_context("127.0.0.2", "5988"); };
  for (std::size_t i = 0; i < size; ++i) {
    if (i % (size / erased) == 0) zuCIM::eraseContainers(context_of(make()));
    indices.push_back(make());
  }
  return indices;
}

Contender look_up(std::size_t size) {
  auto indices = std::make_shared<std::vector<unsigned>>();
  return {"",
          [indices] {
            for (const unsigned index : *indices)
              if (zuCIM::getCIM(index) < 0) std::abort();
          },
          [indices, size] { *indices = fill_registry(size); }};
}

// How many namespaces a server answers with depends on its address.
std::string server_of(std::size_t size) {
  return "127.0.2." + std::to_string(std::to_string(size).size());
}

Contender get_namespaces(std::size_t size, const std::string& port) {
  const unsigned index = make_context(server_of(size), port);
  return {"", [index] {
            zuCIM::CIMarray names;
            context_of(index).getNameSpace(names);
            expect_success(context_of(index));
          }};
}

std::vector<Replay> namespace_replays() {
  std::vector<Replay> replays;
  for (std::size_t size = smallest; size <= largest; size *= 10)
    replays.push_back({"Host: " + server_of(size), namespaces(size)});
  return replays;
}

}  // namespace

int main(int argc, char* argv[]) {
  const ReplayServer server(namespace_replays());
  prepare(argc, argv);
  grow("parse", parse);
  grow("free", free_tree);
  grow("generate", generate);
  grow("copy", copy);
  grow("extraction", extract);
  grow("findelement walk", [](std::size_t size) { return walk(size); });
  grow("getCIM of every context, after erasures", look_up);
  zuCIM::clearContainers();
  grow(
      "getNameSpace", [&](std::size_t size) { return get_namespaces(size, server.port()); },
      Clock::wall);
}
