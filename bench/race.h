#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

// Timing, on top of Google Benchmark.
namespace bench {

// One of the things that are compared.
struct Contender {
  std::string name;
  // What is timed.
  std::function<void()> run;
  // What has to happen before each run, not timed. Without it there is one more run before, which
  // leaves heap and caches as this contender does, not as the one before it.
  std::function<void()> prepare = nullptr;
};

enum class Clock { cpu, wall };

// Call it first, after making processes and before making documents. The command line holds an
// optional regular expression, which says what to measure of "race/contender"; everything without
// it. From here on the heap keeps what is freed.
void prepare(int argc, char* argv[]);

// Whether any contender of a race was asked for. Ask before making what the race needs; race()
// itself leaves out the contenders that nobody asked for.
bool is_wanted(const std::string& title, std::initializer_list<const char*> contenders);

// Lets the contenders run in turn, in many short rounds and in a new order in each, so that
// whatever else the machine does meets all of them alike. Records for each the best and the median
// seconds of one run, and as "ratio" the median of how many times as long as the first contender's
// it took in the same round.
void race(const std::string& title, const std::vector<Contender>& contenders,
          Clock clock = Clock::cpu);

}  // namespace bench
