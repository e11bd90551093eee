#include <gtest/gtest.h>
#include <netdb.h>

#include <cerrno>
#include <string>
#include <vector>

#include "CIMconnection/data_callback.h"
#include "CIMconnection/out_of_memory.h"
#include "CIMconnection/registry.h"
#include "CIMconnection/request_headers.h"
#include "CIMconnection/sample_server.h"
#include "support/failing_allocator.h"
#include "support/hosts_table.h"
#include "support/trace_recorder.h"

namespace zuCIM {
namespace {

constexpr unsigned error_level = 0x40000000;

_THR_SERVER_ server_of(const char* text) {
  return {text, text, text, text, text, text, text};
}

TEST_F(OutOfMemory, MakeContainerLeavesTheRegistryAsItWas) {
  const _THR_SERVER_ server = server_of(long_text);
  const std::uint32_t before = makeContainer(&server, 0);
  const unsigned allocations = for_each_failing_allocation(
      [&](AllocationFailure& failure) {
        const int size = getContainerSize();
        TraceRecorder traces(error_level);
        failure.arm();
        const std::uint32_t index = makeContainer(&server, 0);
        failure.disarm();
        if (!failure.happened()) {
          EXPECT_EQ(index, before + 1);
          return;
        }
        EXPECT_EQ(index, no_index);
        EXPECT_EQ(getContainerSize(), size);
        EXPECT_EQ(
            traces.count(error_level, source, "makeContainer: Exception raised: std::bad_alloc"),
            1);
      },
      AllocationKind::cpp);
  EXPECT_GE(allocations, 7U);
  EXPECT_EQ(getContainerSize(), 2);
}

// The texts of a connection that a failed change must not mix with new ones.
std::vector<std::string> texts_of(const CIMconnection& connection) {
  return {connection.host,       connection.user,
          connection.password,   connection.scheme,
          connection.port,       connection.caFile,
          connection.sslCert,    connection.sslKey,
          connection.serverIP,   connection.osName,
          connection.localIP,    connection.request,
          connection.serverName, std::to_string(connection.verifyPeer)};
}

TEST_F(OutOfMemory, AssignmentChangesEverythingOrNothing) {
  CIMconnection original;
  const _THR_SERVER_ server = server_of(long_text);
  original.setHostUserPasswd(&server);
  original.osName = original.serverIP = original.serverName = original.localIP = long_text;
  original.request = original.responseHeader = original.responseBody = long_text;
  original.skipIpCheck = true;
  original.esxiBusy = true;
  replace_header_list(original, make_header_list(long_text, "a/b"));
  const unsigned allocations = for_each_failing_allocation([&](AllocationFailure& failure) {
    const _THR_SERVER_ old_server = sample_server("old");
    CIMconnection copy;
    copy.setHostUserPasswd(&old_server);
    copy.esxiBusy = copy.skipIpCheck = true;
    ASSERT_EQ(copy.initCurlHandle(), 0);
    void* const handle = copy.curl;
    copy.request = "old request";
    const std::vector<std::string> old_texts = texts_of(copy);
    TraceRecorder traces(error_level);
    failure.arm();
    copy = original;
    failure.disarm();
    if (!failure.happened()) {
      EXPECT_EQ(texts_of(copy), texts_of(original));
      return;
    }
    EXPECT_EQ(texts_of(copy), old_texts);
    EXPECT_EQ(copy.curl, handle);
    EXPECT_EQ(copy.cimStatus, 1001);
    EXPECT_EQ(traces.count(error_level, source,
                           "CIMconnection::operator=: Exception raised: std::bad_alloc"),
              1);
    EXPECT_EQ(copy.initCurlHandle(), 0);
  });
  EXPECT_GE(allocations, 13U);
}

TEST_F(OutOfMemory, ACopyThatFailsIsEmpty) {
  CIMconnection original;
  original.host = original.request = long_text;
  const unsigned allocations = for_each_failing_allocation(
      [&](AllocationFailure& failure) {
        TraceRecorder traces(error_level);
        failure.arm();
        const CIMconnection copy(original);
        failure.disarm();
        EXPECT_EQ(copy.host, failure.happened() ? "" : long_text);
        EXPECT_EQ(copy.cimStatus, failure.happened() ? 1001 : 0);
        EXPECT_EQ(traces.count(error_level, source,
                               "CIMconnection::CIMconnection: Exception raised: std::bad_alloc"),
                  failure.happened() ? 1 : 0);
      },
      AllocationKind::cpp);
  EXPECT_GE(allocations, 2U);
}

// A copy of a context may miss what found no memory, and a second try brings it.
TEST_F(OutOfMemory, AContextIsCopiedInSoundParts) {
  CIMcontainer original;
  original.host = original.request = long_text;
  original.setCurrentClass("CIM_Fan", long_text);
  original.callerValue = 5;
  const TraceRecorder silent(0);
  const unsigned allocations = for_each_failing_allocation([&](AllocationFailure& failure) {
    failure.arm();
    CIMcontainer copy(original);
    failure.disarm();
    EXPECT_TRUE(copy.host.empty() || copy.host == long_text);
    EXPECT_EQ(copy.host.empty(), copy.request.empty());
    EXPECT_EQ(copy.cimStatus, copy.host.empty() ? 1001 : 0);
    EXPECT_EQ(copy.callerValue, 5U);
    EXPECT_EQ(copy.listener, nullptr);
    EXPECT_TRUE(failure.happened() || copy.classes.findClassName("CIM_Fan", long_text) != nullptr);
    copy = original;
    EXPECT_EQ(copy.host, long_text);
    EXPECT_NE(copy.classes.findClassName("CIM_Fan", long_text), nullptr);
  });
  EXPECT_GE(allocations, malloc_can_fail ? 4U : 2U);
}

TEST_F(OutOfMemory, AContextIsAssignedInSoundParts) {
  CIMcontainer original;
  original.host = original.request = long_text;
  original.setCurrentClass("CIM_Fan", long_text);
  const TraceRecorder silent(0);
  const unsigned allocations = for_each_failing_allocation([&](AllocationFailure& failure) {
    CIMcontainer copy;
    copy.host = "old";
    copy.setCurrentClass("CIM_Old", "");
    failure.arm();
    copy = original;
    failure.disarm();
    EXPECT_EQ(copy.host, copy.cimStatus == 1001 ? "old" : long_text);
    EXPECT_EQ(copy.classes.findClassName("CIM_Old", ""), nullptr);
    EXPECT_TRUE(failure.happened() || copy.classes.findClassName("CIM_Fan", long_text) != nullptr);
    copy = original;
    EXPECT_EQ(copy.host, long_text);
    EXPECT_NE(copy.classes.findClassName("CIM_Fan", long_text), nullptr);
  });
  EXPECT_GE(allocations, malloc_can_fail ? 4U : 2U);
}

TEST_F(OutOfMemory, AServerRecordIsTakenAsAWholeOrNotAtAll) {
  const _THR_SERVER_ old_server = sample_server("old");
  const _THR_SERVER_ server = server_of(long_text);
  const unsigned allocations = for_each_failing_allocation(
      [&](AllocationFailure& failure) {
        CIMconnection connection;
        connection.setHostUserPasswd(&old_server);
        const std::vector<std::string> old_texts = texts_of(connection);
        failure.arm();
        connection.setHostUserPasswd(&server);
        failure.disarm();
        EXPECT_EQ(connection.cimStatus, failure.happened() ? 1001 : 0);
        EXPECT_EQ(texts_of(connection) == old_texts, failure.happened());
      },
      AllocationKind::cpp);
  EXPECT_GE(allocations, 7U);
}

TEST_F(OutOfMemory, AnExchangeFreesTheOldHeadersFirst) {
  int failures_in_headers = 0;
  for_each_failing_allocation(
      [&](AllocationFailure& failure) {
        CIMconnection connection;
        const _THR_SERVER_ server{"127.0.0.2", "u", "p", "1", "", "", ""};
        connection.setHostUserPasswd(&server);
        connection.esxiBusy = connection.skipIpCheck = true;
        ASSERT_EQ(connection.initCurlHandle(), 0);
        replace_header_list(connection, make_header_list("Old", "o"));
        connection.extraTimeOut = 1;
        failure.arm();
        const int status = connection.sendRequest_recvResponse(long_text, long_text);
        failure.disarm();
        // The extra time is used up just before the headers are made.
        if (status != 1001 || connection.extraTimeOut != 0) return;
        ++failures_in_headers;
        EXPECT_EQ(connection.headers, nullptr);
      },
      AllocationKind::cpp);
  EXPECT_GE(failures_in_headers, 2);
}

TEST_F(OutOfMemory, SettersTraceWhatTheyCouldNotStore) {
  CIMconnection connection;
  const _THR_SERVER_ server = server_of(long_text);
  const std::string name = long_text;
  TraceRecorder traces(error_level);
  {
    AllocationFailure failure(1, AllocationKind::cpp);
    connection.setHostUserPasswd(&server);
    failure.disarm();
    EXPECT_TRUE(failure.happened());
  }
  {
    AllocationFailure failure(1, AllocationKind::cpp);
    connection.setOSName(name);
    failure.disarm();
    EXPECT_TRUE(failure.happened());
  }
  EXPECT_EQ(
      traces.count(error_level, source, "setHostUserPasswd: Exception raised: std::bad_alloc"), 1);
  EXPECT_EQ(traces.count(error_level, source, "setOSName: Exception raised: std::bad_alloc"), 1);
  EXPECT_EQ(connection.osName, "");
  EXPECT_EQ(connection.cimStatus, 1001);
}

TEST_F(OutOfMemory, TheDataCallbackTakesNothing) {
  std::string text = "a";
  std::string data = long_text;
  AllocationFailure failure(1, AllocationKind::cpp);
  const std::size_t taken = append_data(data.data(), 1, 40, &text);
  failure.disarm();
  EXPECT_EQ(taken, 0U);
  EXPECT_EQ(text, "a");
}

TEST_F(OutOfMemory, AdmissionRefusesWithATrace) {
  const std::string machine = std::string(60, 'm') + ".test";
  const std::string far = std::string(60, 'f') + ".test";
  const std::string address = "2001:db8:1111:2222:3333:4444:5555:6666";
  int failed_admissions = 0;
  int failed_resolutions = 0;
  for_each_failing_allocation([&](AllocationFailure& failure) {
    // A new table each time, so that it asks for memory as often as the last one.
    HostsTable hosts;
    hosts.set_host_name(machine).add(machine, {"10.9.9.9"}).add(far, {address});
    hosts.add_reverse(address, {ReverseAnswer::name(far)});
    CIMcontainer* const context = make_context(sample_server(far.c_str()));
    TraceRecorder traces(error_level);
    failure.arm();
    context->addContainer();
    failure.disarm();
    // Of several failures one is traced as such, the others leave an address empty.
    EXPECT_EQ(context->cimStatus != 0, failure.happened());
    EXPECT_EQ(context->serverIP.empty() && context->cimStatus == 0, false);
    failed_admissions +=
        traces.count(error_level, source, "addContainer: Exception raised: std::bad_alloc");
    failed_resolutions +=
        traces.count(error_level, source, "setIPAddress: Exception raised: std::bad_alloc");
    context->addContainer();
    EXPECT_EQ(context->cimStatus, 0);
    remove_context(0);
  });
  EXPECT_GE(failed_admissions, 1);
  EXPECT_GE(failed_resolutions, 2);
}

TEST_F(OutOfMemory, ResolutionFindsNeitherAddressNorName) {
  HostsTable hosts;
  const std::string far = std::string(60, 'f') + ".test";
  hosts.add(far, {"10.1.2.3", "10.1.2.4"});
  hosts.add_reverse("10.1.2.3", {ReverseAnswer::name(far)});
  const std::string lost =
      "[" + far + "] setIPAddress: cannot get IP-Address. ret=" + std::to_string(EAI_MEMORY) +
      " WSAGetLastError=" + std::to_string(EXDEV);
  int exceptions = 0;
  for_each_failing_allocation([&](AllocationFailure& failure) {
    CIMconnection connection;
    std::string ip = "old";
    std::string fqdn = "old";
    TraceRecorder traces(error_level | 4);
    errno = EXDEV;
    failure.arm();
    connection.setIPAddress(far, ip, &fqdn);
    failure.disarm();
    if (traces.count(error_level, source, "setIPAddress: Exception raised: std::bad_alloc") == 0)
      return;
    ++exceptions;
    EXPECT_EQ(ip, "");
    EXPECT_EQ(fqdn, "");
    EXPECT_EQ(connection.cimStatus, 5003);
    EXPECT_EQ(traces.count(4, source, lost), 1);
    connection.setIPAddress(far, ip, &fqdn);
    EXPECT_EQ(ip, "10.1.2.3");
    EXPECT_EQ(fqdn, far);
  });
  EXPECT_GE(exceptions, 1);
}

// The dump is whole and masked, or missing.
TEST_F(OutOfMemory, TheDumpOfAnExchangeIsWholeOrMissing) {
  CIMconnection connection;
  connection.host = "h";
  connection.user = "reader";
  connection.password = "open-sesame";
  connection.request = connection.responseHeader = long_text;
  // What it sends as its credentials.
  connection.responseBody = "cmVhZGVyOm9wZW4tc2VzYW1l";
  std::string whole;
  {
    const TraceRecorder traces(4);
    connection.Debug_Request_Response();
    whole = traces.texts().at(0);
  }
  EXPECT_EQ(whole.find(connection.responseBody), std::string::npos);
  const unsigned allocations = for_each_failing_allocation([&](AllocationFailure& failure) {
    const TraceRecorder traces(4);
    failure.arm();
    connection.Debug_Request_Response();
    failure.disarm();
    const std::vector<std::string> texts = traces.texts();
    EXPECT_TRUE(failure.happened() || !texts.empty());
    EXPECT_TRUE(texts.empty() || texts == std::vector<std::string>{whole});
  });
  EXPECT_GE(allocations, 4U);
}

TEST_F(OutOfMemory, AStatusIsRecordedAllTheSame) {
  for_each_failing_allocation(
      [&](AllocationFailure& failure) {
        CIMconnection connection;
        TraceRecorder traces(4);
        failure.arm();
        EXPECT_EQ(connection.SetCimStatus_FL(5001, long_text, "x", 1), 5001);
        failure.disarm();
      },
      AllocationKind::cpp);
}

}  // namespace
}  // namespace zuCIM
