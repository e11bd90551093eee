#include "race.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <limits>
#include <regex>
#include <utility>

#include "results.h"
#include "writer.h"

namespace bench {
namespace {

constexpr double seconds_of_race = 0.6;
constexpr double seconds_of_batch = 0.0003;
constexpr double fewest_rounds = 5;
constexpr double most_rounds = 1000;

std::regex filter;

double now(Clock clock) {
  timespec time{};
  ::clock_gettime(clock == Clock::wall ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// A contender on its track. What takes too little time for the clock runs several times in a row.
class Runner {
 public:
  Runner(const Contender& contender, Clock clock) : contender_(contender), clock_(clock) {
    const double once = time_batch();
    if (contender.prepare == nullptr && once < seconds_of_batch)
      batch_ = static_cast<int>(seconds_of_batch / std::max(once, 1e-7)) + 1;
  }

  const std::string& name() const { return contender_.name; }
  const std::vector<double>& seconds() const { return seconds_; }

  // Takes part in one round; returns how long that took.
  double run() {
    const double taken = time_batch();
    seconds_.push_back(taken / batch_);
    return taken;
  }

 private:
  double time_batch() const {
    contender_.prepare != nullptr ? contender_.prepare() : contender_.run();
    const double begin = now(clock_);
    for (int i = 0; i < batch_; ++i) contender_.run();
    return now(clock_) - begin;
  }

  const Contender& contender_;
  Clock clock_;
  int batch_ = 1;
  std::vector<double> seconds_;
};

double run_round(std::vector<Runner>& runners, std::vector<std::size_t>& order, Random& random) {
  double taken = 0;
  for (std::size_t i = order.size(); i > 1; --i) std::swap(order[i - 1], order[random.below(i)]);
  for (const std::size_t i : order) taken += runners[i].run();
  return taken;
}

void run_rounds(benchmark::State& state, std::vector<Runner>& runners) {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < runners.size(); ++i) order.push_back(i);
  Random random(1);
  for ([[maybe_unused]] const auto round : state)
    state.SetIterationTime(run_round(runners, order, random));
}

// The figures come from the single runs, so nothing is left to report.
class Silence : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>&) override {}
};

int rounds_of(std::vector<Runner>& runners) {
  double round = 0;
  for (Runner& runner : runners) round += runner.run();
  return static_cast<int>(std::clamp(seconds_of_race / round, fewest_rounds, most_rounds));
}

void record(const std::string& title, const Runner& runner, const Runner& first) {
  const std::vector<double>& seconds = runner.seconds();
  std::vector<double> ratios;
  for (std::size_t i = 0; i < seconds.size(); ++i)
    ratios.push_back(seconds[i] / first.seconds()[i]);
  add_result(title, runner.name(), "best", *std::min_element(seconds.begin(), seconds.end()));
  add_result(title, runner.name(), "median", median(seconds));
  add_result(title, runner.name(), "ratio", median(ratios));
}

// What is freed stays in the heap, as it mostly does in a program that asks servers all day. With
// the usual thresholds some sizes of texts happen to send pages back and forth at every run, which
// can double a time.
void keep_freed_memory() {
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  mallopt(M_MMAP_MAX, 0);
}

bool is_wanted(const std::string& title, const std::string& contender) {
  return std::regex_search(title + '/' + contender, filter);
}

}  // namespace

void prepare(int argc, char* argv[]) {
  keep_freed_memory();
  filter = argc > 1 ? argv[1] : "";
  int count = 1;
  benchmark::Initialize(&count, argv);
}

bool is_wanted(const std::string& title, std::initializer_list<const char*> contenders) {
  return std::any_of(contenders.begin(), contenders.end(),
                     [&](const char* name) { return is_wanted(title, name); });
}

void race(const std::string& title, const std::vector<Contender>& contenders, Clock clock) {
  std::vector<Runner> runners;
  for (const Contender& contender : contenders)
    if (is_wanted(title, contender.name)) runners.emplace_back(contender, clock);
  if (runners.empty()) return;
  benchmark::RegisterBenchmark(title.c_str(),
                               [&](benchmark::State& state) { run_rounds(state, runners); })
      ->UseManualTime()
      ->Iterations(rounds_of(runners));
  Silence silence;
  benchmark::RunSpecifiedBenchmarks(&silence, ".");
  benchmark::ClearRegisteredBenchmarks();
  for (const Runner& runner : runners) record(title, runner, runners.front());
}

}  // namespace bench
