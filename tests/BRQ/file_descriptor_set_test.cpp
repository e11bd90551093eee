#include "BRQ/FileDescriptorSet.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

#include "support/failing_allocator.h"
#include "support/loopback.h"

namespace {

using BRQ::Misc::CFileDescriptorSet;
using std::chrono::steady_clock;
using namespace std::chrono_literals;

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    reader = Descriptor(ends[0]);
    writer = Descriptor(ends[1]);
  }
  void write() const { EXPECT_EQ(::write(writer.number(), "x", 1), 1); }

  Descriptor reader;
  Descriptor writer;
};

TEST(FileDescriptorSet, FindsTheReadableOnes) {
  const Pipe first;
  const Pipe second;
  const Pipe third;
  CFileDescriptorSet set;
  for (const Pipe* pipe : {&first, &second, &third}) EXPECT_TRUE(set.Add(pipe->reader.number()));
  second.write();
  third.write();
  EXPECT_EQ(set.WaitReadable(20000), 2);
  EXPECT_FALSE(set.IsReadable(first.reader.number()));
  EXPECT_TRUE(set.IsReadable(second.reader.number()));
  EXPECT_TRUE(set.IsReadable(third.reader.number()));
  EXPECT_FALSE(set.IsReadable(first.writer.number()));
}

TEST(FileDescriptorSet, TimesOutWhenNothingCanBeRead) {
  const Pipe pipe;
  CFileDescriptorSet set;
  set.Add(pipe.reader.number());
  const auto start = steady_clock::now();
  EXPECT_EQ(set.WaitReadable(20), 0);
  EXPECT_GE(steady_clock::now() - start, 19ms);
  EXPECT_FALSE(set.IsReadable(pipe.reader.number()));
}

TEST(FileDescriptorSet, EmptyItWaitsTheWholeTime) {
  CFileDescriptorSet set;
  const auto start = steady_clock::now();
  EXPECT_EQ(set.WaitReadable(20), 0);
  EXPECT_GE(steady_clock::now() - start, 19ms);
}

TEST(FileDescriptorSet, WaitsForDataThatComesLater) {
  const Pipe pipe;
  CFileDescriptorSet set;
  set.Add(pipe.reader.number());
  std::thread writer([&pipe] { pipe.write(); });
  EXPECT_EQ(set.WaitReadable(-1), 1);
  writer.join();
}

TEST(FileDescriptorSet, AnEndOfStreamIsReadable) {
  Pipe pipe;
  pipe.writer.close();
  CFileDescriptorSet set;
  set.Add(pipe.reader.number());
  EXPECT_EQ(set.WaitReadable(20000), 1);
  EXPECT_TRUE(set.IsReadable(pipe.reader.number()));
}

// A descriptor number that is free now, above what select could take.
int high_descriptor() {
  rlimit limit{};
  EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
  EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
  return 1500;
}

TEST(FileDescriptorSet, TakesADescriptorAbove1023) {
  const Pipe pipe;
  const Descriptor high(::fcntl(pipe.reader.number(), F_DUPFD_CLOEXEC, high_descriptor()));
  ASSERT_GE(high.number(), 1500);
  CFileDescriptorSet set;
  EXPECT_TRUE(set.Add(high.number()));
  EXPECT_EQ(set.WaitReadable(0), 0);
  pipe.write();
  EXPECT_EQ(set.WaitReadable(20000), 1);
  EXPECT_TRUE(set.IsReadable(high.number()));
}

TEST(FileDescriptorSet, AClosedDescriptorIsAnError) {
  Pipe closed;
  const Pipe open;
  CFileDescriptorSet set;
  const int number = closed.reader.number();
  set.Add(number);
  set.Add(open.reader.number());
  open.write();
  closed.reader.close();
  errno = 0;
  EXPECT_EQ(set.WaitReadable(20000), -1);
  EXPECT_EQ(errno, EBADF);
  EXPECT_FALSE(set.IsReadable(number));
  EXPECT_FALSE(set.IsReadable(open.reader.number()));
}

TEST(FileDescriptorSet, ANegativeDescriptorIsAnError) {
  CFileDescriptorSet set;
  set.Add(-1);
  errno = 0;
  EXPECT_EQ(set.WaitReadable(20000), -1);
  EXPECT_EQ(errno, EBADF);
}

TEST(FileDescriptorSet, ADescriptorCountsOnceHoweverOftenItIsAdded) {
  const Pipe pipe;
  CFileDescriptorSet set;
  EXPECT_TRUE(set.Add(pipe.reader.number()));
  EXPECT_TRUE(set.Add(pipe.reader.number()));
  pipe.write();
  EXPECT_EQ(set.WaitReadable(20000), 1);
}

TEST(FileDescriptorSet, ForgetsItsDescriptorsWhenCleared) {
  const Pipe pipe;
  pipe.write();
  CFileDescriptorSet set;
  set.Add(pipe.reader.number());
  EXPECT_EQ(set.WaitReadable(0), 1);
  set.Clear();
  EXPECT_FALSE(set.IsReadable(pipe.reader.number()));
  EXPECT_EQ(set.WaitReadable(0), 0);
}

void ignore_signal(int) {}

TEST(FileDescriptorSet, ASignalEndsTheWait) {
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = ignore_signal;
  ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);
  const Pipe pipe;
  std::atomic<bool> done{false};
  int result = 0;
  int error = 0;
  std::thread waiter([&] {
    CFileDescriptorSet set;
    set.Add(pipe.reader.number());
    result = set.WaitReadable(20000);
    error = errno;
    done = true;
  });
  while (!done) {
    ::pthread_kill(waiter.native_handle(), SIGUSR1);
    std::this_thread::yield();
  }
  waiter.join();
  ::sigaction(SIGUSR1, &before, nullptr);
  EXPECT_EQ(result, -1);
  EXPECT_EQ(error, EINTR);
}

TEST(FileDescriptorSet, SaysWhenMemoryIsShort) {
  CFileDescriptorSet set;
  AllocationFailure failure(1);
  const bool added = set.Add(0);
  failure.disarm();
  EXPECT_FALSE(added);
  EXPECT_EQ(set.WaitReadable(0), 0);
  EXPECT_TRUE(set.Add(0));
}

}  // namespace
