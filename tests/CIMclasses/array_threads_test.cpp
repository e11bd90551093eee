#include <gtest/gtest.h>

#include <latch>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "zuCIM/array.h"

namespace zuCIM {
namespace {

constexpr int threads = 4;
constexpr int rounds = 2000;

// Runs `work` in several threads that start at the same moment.
void run_together(void (*work)(CIMarray&, int), CIMarray& array) {
  std::latch start(threads);
  std::vector<std::thread> workers;
  for (int i = 0; i < threads; ++i)
    workers.emplace_back([&start, &array, work, i] {
      start.arrive_and_wait();
      work(array, i);
    });
  for (std::thread& worker : workers) worker.join();
}

TEST(CimArrayThreads, NoAppendIsLost) {
  CIMarray array;
  run_together(
      [](CIMarray& shared, int id) {
        for (int i = 0; i < rounds; ++i)
          shared.putargv(std::to_string(id * rounds + i).c_str(), -1, 15);
      },
      array);
  std::set<std::string> texts;
  for (unsigned i = 0; i < array.argc; ++i) texts.insert(static_cast<char*>(array.argv[i]));
  EXPECT_EQ(array.argc, static_cast<unsigned>(threads * rounds));
  EXPECT_EQ(texts.size(), static_cast<std::size_t>(threads * rounds));
}

TEST(CimArrayThreads, AppendingErasingAndTrimmingBalance) {
  CIMarray array;
  run_together(
      [](CIMarray& shared, int) {
        for (int i = 0; i < rounds; ++i) {
          shared.putargv("element", -1, 15);
          if (i % 16 == 0) shared.FreeUnused();
          shared.erase(0);
        }
      },
      array);
  EXPECT_EQ(array.argc, 0U);
}

TEST(CimArrayThreads, EachElementIsErasedOnce) {
  CIMarray array;
  for (int i = 0; i < threads * rounds / 2; ++i) array.putargv("element", -1, 15);
  run_together(
      [](CIMarray& shared, int) {
        for (int i = 0; i < rounds; ++i) shared.erase(0);
      },
      array);
  EXPECT_EQ(array.argc, 0U);
}

TEST(CimArrayThreads, ResizingIsSerialisedWithAppending) {
  CIMarray array;
  run_together(
      [](CIMarray& shared, int id) {
        for (int i = 0; i < rounds; ++i) {
          if (id == 0)
            shared.setmaxargc(100);
          else
            shared.putargv("element", -1, 15);
        }
      },
      array);
  EXPECT_EQ(array.setmaxargc(100), 0);
  EXPECT_EQ(array.maxargc, 100U);
  EXPECT_LE(array.argc, 100U);
}

}  // namespace
}  // namespace zuCIM
