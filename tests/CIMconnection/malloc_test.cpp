#include <gtest/gtest.h>

#include <set>
#include <string>

#include "CIMconnection/out_of_memory.h"
#include "CIMconnection/registry.h"
#include "CIMconnection/request_headers.h"
#include "CIMconnection/sample_server.h"
#include "support/failing_allocator.h"
#include "support/trace_recorder.h"

#if !ZUCIM_SANITIZER_ALLOCATES

// libcurl and the array ask the C library for memory, which cannot fail under a sanitizer.
namespace zuCIM {
namespace {

constexpr unsigned error_level = 0x40000000;

TEST_F(OutOfMemory, TheRegistryKeepsItsContextsWhenItCannotGrow) {
  const _THR_SERVER_ server = sample_server();
  const std::uint32_t first = makeContainer(&server, 0);
  while (getContainerSize() < 16) makeContainer(&server, 0);
  TraceRecorder traces(error_level);
  // The first allocation is the context's own block.
  AllocationFailure failure(2, AllocationKind::c);
  const std::uint32_t index = makeContainer(&server, 0);
  failure.disarm();
  EXPECT_EQ(index, first + 16);
  EXPECT_EQ(getCIM(index), -1);
  EXPECT_EQ(getContainerSize(), 16);
  EXPECT_EQ(getCIM(first + 15), 15);
  EXPECT_EQ(getContainer(15)->host, server.host);
  EXPECT_EQ(traces.count(error_level, "Src/CIMclasses",
                         "putargv: Exception raised: cannot realloc array!"),
            1);
  EXPECT_EQ(traces.lines().size(), 1U);
  EXPECT_EQ(makeContainer(&server, 0), first + 17);
  EXPECT_EQ(getCIM(first + 17), 16);
}

TEST_F(OutOfMemory, TheRegistryLeaksNothing) {
  const TraceRecorder silent(0);
  const _THR_SERVER_ server{long_text, long_text, long_text, "5988", "", "", ""};
  EXPECT_TRUE(leaves_nothing(100, [&] {
    for_each_failing_allocation([&] {
      makeContainer(&server, 0);
      makeContainer(&server, 0);
      clearContainers();
    });
  }));
  EXPECT_EQ(getContainerSize(), 0);
}

TEST_F(OutOfMemory, AContextWithoutABlockIsNotFound) {
  const _THR_SERVER_ server = sample_server();
  const std::uint32_t first = makeContainer(&server, 0);
  TraceRecorder traces(error_level);
  AllocationFailure failure(1, AllocationKind::c);
  const std::uint32_t index = makeContainer(&server, 0);
  failure.disarm();
  EXPECT_EQ(index, first + 1);
  EXPECT_EQ(getCIM(index), -1);
  EXPECT_EQ(getCIM(first), 0);
  EXPECT_EQ(
      traces.count(error_level, "Src/CIMclasses", "putargv: Exception raised: cannot alloc array!"),
      1);
}

// What libcurl makes once in a process is there.
TEST_F(OutOfMemory, NoHandleIsStatusTwo) {
  CIMconnection connection;
  connection.esxiBusy = connection.skipIpCheck = true;
  ASSERT_EQ(connection.initCurlHandle(), 0);
  const unsigned allocations = for_each_failing_allocation(
      [&](AllocationFailure& failure) {
        connection.releaseCurlHandle();
        TraceRecorder traces(4);
        failure.arm();
        const int status = connection.initCurlHandle();
        failure.disarm();
        EXPECT_EQ(status, failure.happened() ? 2 : 0);
        EXPECT_EQ(connection.curl == nullptr, failure.happened());
        if (failure.happened()) {
          EXPECT_NE(traces.texts().back().find("  ErrCode:2 Failed initialization"),
                    std::string::npos);
        }
        EXPECT_EQ(connection.initCurlHandle(), 0);
      },
      AllocationKind::c);
  EXPECT_GE(allocations, 2U);
}

// An option that finds no memory is told as libcurl's own code; the handle is there all the same.
TEST_F(OutOfMemory, ATlsFileThatCannotBeStoredIsStatusTwentySeven) {
  CIMconnection connection;
  connection.esxiBusy = connection.skipIpCheck = true;
  connection.sslCert = connection.sslKey = connection.caFile = "file.pem";
  ASSERT_EQ(connection.initCurlHandle(), 0);
  std::set<int> statuses;
  for_each_failing_allocation(
      [&](AllocationFailure& failure) {
        connection.releaseCurlHandle();
        failure.arm();
        const int status = connection.initCurlHandle();
        failure.disarm();
        statuses.insert(status);
        EXPECT_EQ(connection.curl == nullptr, status == 2);
      },
      AllocationKind::c);
  EXPECT_EQ(statuses, (std::set<int>{0, 2, 27}));
}

TEST_F(OutOfMemory, AHeaderThatCannotBeAppendedLeavesNoList) {
  const unsigned allocations = for_each_failing_allocation(
      [](AllocationFailure& failure) {
        failure.arm();
        const HeaderList list = make_header_list("M", "a/b");
        failure.disarm();
        EXPECT_EQ(list == nullptr, failure.happened());
      },
      AllocationKind::c);
  EXPECT_GE(allocations, 10U);
}

// Each of the five lines, and each of their copies.
TEST_F(OutOfMemory, AHeaderThatCannotBeAppendedLeavesTheStatus) {
  CIMconnection connection;
  const _THR_SERVER_ server{"127.0.0.1", "u", "p", "1", "", "", ""};
  connection.setHostUserPasswd(&server);
  connection.esxiBusy = connection.skipIpCheck = true;
  int unsent = 0;
  for_each_failing_allocation(
      [&](AllocationFailure& failure) {
        ASSERT_EQ(connection.initCurlHandle(), 0);
        TraceRecorder traces(2 | 4 | 16);
        failure.arm();
        const int status = connection.sendRequest_recvResponse("M", "a/b");
        failure.disarm();
        if (status != 0) return;
        ++unsent;
        EXPECT_EQ(connection.headers, nullptr);
        EXPECT_NE(traces.texts().back().find("  ErrCode:0 No error"), std::string::npos);
        EXPECT_EQ(traces.count(16, source, "[127.0.0.1]       Before curl_easy_perform()"), 0);
      },
      AllocationKind::c);
  EXPECT_EQ(unsent, 10);
}

}  // namespace
}  // namespace zuCIM

#endif
