#include "BRQ/Trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <locale>
#include <stdexcept>
#include <thread>
#include <vector>

#include "support/failing_allocator.h"

namespace {

using BRQ::TraceLine;
using testing::ElementsAre;
using testing::IsEmpty;

struct Line {
  std::string module;
  unsigned level;
  std::string source;
  int line;
  std::string text;
  bool operator==(const Line&) const = default;
};

// A module of its own with all levels on, and a sink that keeps its lines.
class Trace : public testing::Test {
 protected:
  Trace() {
    module_.set_trace_mask(~0U);
    BRQ::set_trace_sink([this](const TraceLine& line) {
      lines_.push_back({line.module, line.level, line.source, line.line, line.text});
    });
  }
  ~Trace() override { BRQ::set_trace_sink({}); }

  std::vector<std::string> texts() const {
    std::vector<std::string> result;
    for (const Line& line : lines_) result.push_back(line.text);
    return result;
  }

  BRQ::Misc::CModuleInfo module_{7, "test", "1"};
  std::vector<Line> lines_;
};

// An argument that tells when it is formatted.
struct Witness {
  int* formatted;
};
std::ostream& operator<<(std::ostream& stream, const Witness& witness) {
  ++*witness.formatted;
  return stream << "seen";
}

struct Unprintable {};
std::ostream& operator<<(std::ostream&, const Unprintable&) {
  throw std::runtime_error("unprintable");
}

TEST_F(Trace, ALineCarriesModuleLevelSourceLineAndText) {
  BRQ_TRACE_AT(module_, 4, "Src/unit", 75, "index=%d size=%d", 3, 4U);
  EXPECT_THAT(lines_, ElementsAre(Line{"test", 4, "Src/unit", 75, "index=3 size=4"}));
}

TEST_F(Trace, ALineWithoutANumberCarriesThatOfTheCall) {
  BRQ_TRACE(module_, 2, "Src/unit", "plain");
  EXPECT_THAT(lines_, ElementsAre(Line{"test", 2, "Src/unit", __LINE__ - 1, "plain"}));
}

TEST_F(Trace, ALevelThatIsOffCostsNoFormattingAndEvaluatesNoArgument) {
  module_.set_trace_mask(~4U);
  int formatted = 0;
  int evaluated = 0;
  const auto argument = [&] { return ++evaluated; };
  AllocationFailure counter(0);
  BRQ_TRACE(module_, 4, "Src/unit", "%s %d", Witness{&formatted}, argument());
  counter.disarm();
  EXPECT_EQ(formatted, 0);
  EXPECT_EQ(evaluated, 0);
  EXPECT_EQ(counter.count(), 0U);
  EXPECT_THAT(lines_, IsEmpty());
}

TEST_F(Trace, ALevelThatIsOnFormatsItsArgumentsOnce) {
  int formatted = 0;
  BRQ_TRACE(module_, 4, "Src/unit", "%s", Witness{&formatted});
  EXPECT_EQ(formatted, 1);
  EXPECT_THAT(texts(), ElementsAre("seen"));
}

TEST_F(Trace, TextsPercentSignsAndLineBreaksStayAsTheyAre) {
  BRQ_TRACE(module_, 2, "s", "100%% of '%s'", std::string("a%s\nb"));
  EXPECT_THAT(texts(), ElementsAre("100% of 'a%s\nb'"));
}

TEST_F(Trace, ANullTextPrintsAsNothing) {
  const char* const constant = nullptr;
  char* const variable = nullptr;
  BRQ_TRACE(module_, 2, "s", "[%s][%s][%s]", constant, variable, "array");
  EXPECT_THAT(texts(), ElementsAre("[][][array]"));
}

TEST_F(Trace, AFormatThatDoesNotFitItsArgumentsIsDropped) {
  BRQ_TRACE(module_, 2, "s", "%s %s", 1);
  BRQ_TRACE(module_, 2, "s", "none", 1);
  BRQ_TRACE(module_, 2, "s", "broken %");
  BRQ_TRACE(module_, 2, "s", "%s", Unprintable{});
  EXPECT_THAT(lines_, IsEmpty());
  BRQ_TRACE(module_, 2, "s", "%s", 1);
  EXPECT_THAT(texts(), ElementsAre("1"));
}

// Gives the process a locale whose numbers have a point after every three digits.
class GroupingLocale {
 public:
  GroupingLocale() { std::locale::global(std::locale(before_, new Grouping)); }
  ~GroupingLocale() { std::locale::global(before_); }
  GroupingLocale(const GroupingLocale&) = delete;
  GroupingLocale& operator=(const GroupingLocale&) = delete;

 private:
  struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  std::locale before_;
};

TEST_F(Trace, NumbersDoNotFollowTheLocaleOfTheProcess) {
  const GroupingLocale locale;
  BRQ_TRACE(module_, 2, "s", "%d", 5989);
  {
    BRQ::Internals::CTraceStreamBuffer buffer(module_, 2, "s", 1);
    BRQ::Output_Streams::CFormatStream(buffer) << 5989;
  }
  EXPECT_THAT(texts(), ElementsAre("5989", "5989"));
}

TEST_F(Trace, LeavesErrnoAlone) {
  BRQ::set_trace_sink([](const TraceLine&) { errno = EIO; });
  errno = ENOENT;
  BRQ_TRACE(module_, 2, "s", "text");
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(Trace, AStreamsTextBecomesOneLineWhenItsBufferEnds) {
  {
    BRQ::Internals::CTraceStreamBuffer buffer(module_, 16, "Src/unit", 9);
    BRQ::Output_Streams::CFormatStream stream(buffer);
    stream << "one " << 2;
    EXPECT_THAT(lines_, IsEmpty());
  }
  EXPECT_THAT(lines_, ElementsAre(Line{"test", 16, "Src/unit", 9, "one 2"}));
}

TEST_F(Trace, ADiscardedBufferGivesNoLine) {
  {
    BRQ::Internals::CTraceStreamBuffer buffer(module_, 2, "s", 1);
    BRQ::Output_Streams::CFormatStream(buffer) << "half a line";
    buffer.discard();
  }
  EXPECT_THAT(lines_, IsEmpty());
}

TEST_F(Trace, ASinkThatThrowsLosesItsLineAndNothingElse) {
  int calls = 0;
  BRQ::set_trace_sink([&calls](const TraceLine&) {
    ++calls;
    throw std::runtime_error("sink");
  });
  BRQ_TRACE(module_, 2, "s", "first");
  BRQ_TRACE(module_, 2, "s", "second");
  EXPECT_EQ(calls, 2);
}

TEST_F(Trace, SettingASinkReturnsTheOneBefore) {
  const BRQ::TraceSink before = BRQ::set_trace_sink({});
  ASSERT_TRUE(before);
  EXPECT_FALSE(BRQ::set_trace_sink(before));
  BRQ_TRACE(module_, 2, "s", "back again");
  EXPECT_THAT(texts(), ElementsAre("back again"));
}

TEST_F(Trace, WithoutASinkALineGoesToStandardError) {
  BRQ::set_trace_sink({});
  testing::internal::CaptureStderr();
  BRQ_TRACE_AT(module_, 0x40000000, "Src/unit", 12, "[%s] failed", "host");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "test 0x40000000 Src/unit@12: [host] failed\n");
}

TEST_F(Trace, StandardErrorGetsTextsWithNulWhole) {
  BRQ::set_trace_sink({});
  testing::internal::CaptureStderr();
  BRQ_TRACE_AT(module_, 2, "s", 1, "%s", std::string("a\0b", 3));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string("test 0x2 s@1: a\0b\n", 18));
}

TEST_F(Trace, AModuleWithoutItsLevelsOnIsSilentOnStandardErrorToo) {
  BRQ::set_trace_sink({});
  module_.set_trace_mask(0);
  testing::internal::CaptureStderr();
  BRQ_TRACE(module_, ~0U, "s", "text");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Trace, LinesOfManyThreadsArriveWholeAndOneAtATime) {
  constexpr int threads = 8;
  constexpr int lines_each = 200;
  std::vector<std::thread> writers;
  for (int thread = 0; thread < threads; ++thread)
    writers.emplace_back([this, thread] {
      for (int i = 0; i < lines_each; ++i)
        BRQ_TRACE(module_, 2, "s", "%d%s%d", thread, std::string(500, '-'), thread);
    });
  for (std::thread& writer : writers) writer.join();
  ASSERT_EQ(lines_.size(), std::size_t{threads * lines_each});
  for (const std::string& text : texts()) {
    EXPECT_EQ(text.size(), 502U);
    EXPECT_EQ(text.front(), text.back());
  }
}

TEST_F(Trace, TheSinkMayBeReplacedWhileOthersTrace) {
  std::thread writer([this] {
    for (int i = 0; i < 2000; ++i) BRQ_TRACE(module_, 2, "s", "%d", i);
  });
  for (int i = 0; i < 2000; ++i) BRQ::set_trace_sink([](const TraceLine&) {});
  writer.join();
}

TEST_F(Trace, ShortOfMemoryItKeepsItsSink) {
  const std::string long_text(100, 'x');
  const unsigned allocations = for_each_failing_allocation([&](AllocationFailure& failure) {
    unsigned old_lines = 0;
    unsigned new_lines = 0;
    BRQ::set_trace_sink([&old_lines](const TraceLine&) { ++old_lines; });
    try {
      failure.arm();
      BRQ::set_trace_sink([&new_lines, long_text](const TraceLine&) { ++new_lines; });
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(failure.happened());
    }
    failure.disarm();
    BRQ_TRACE(module_, 2, "s", "x");
    EXPECT_EQ(old_lines, failure.happened() ? 1U : 0U);
    EXPECT_EQ(new_lines, failure.happened() ? 0U : 1U);
  });
  EXPECT_GE(allocations, 2U);
}

TEST_F(Trace, ShortOfMemoryALineIsWholeOrMissing) {
  const std::string argument(2000, 'x');
  bool delivered_once = false;
  unsigned failures = 0;
  std::string seen;
  seen.reserve(4000);
  BRQ::set_trace_sink([&seen](const TraceLine& line) { seen = line.text; });
  for_each_failing_allocation([&](AllocationFailure& failure) {
    seen.clear();
    failure.arm();
    BRQ_TRACE(module_, 2, "s", "<%s>", argument);
    failure.disarm();
    EXPECT_TRUE(seen.empty() || seen == "<" + argument + ">") << seen.size();
    delivered_once = delivered_once || !seen.empty();
    failures += failure.happened() ? 1 : 0;
  });
  EXPECT_TRUE(delivered_once);
  EXPECT_GT(failures, 3U);
}

}  // namespace
