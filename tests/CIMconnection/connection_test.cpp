#include "zuCIM/connection.h"

#include <curl/curl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "CIMconnection/fixed_clock.h"
#include "CIMconnection/request_headers.h"
#include "CIMconnection/sample_server.h"
#include "support/trace_recorder.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned warning = 4;
constexpr unsigned detail = 16;
constexpr const char* source = "Src/CIMconnection";

// A connection that may make a transfer handle.
struct ReadyConnection : CIMconnection {
  ReadyConnection() {
    host = "far";
    localIP = "10.0.0.1";
    serverIP = "10.0.0.2";
    esxiBusy = true;
  }
};

std::vector<std::string> lines_of(const curl_slist* list) {
  std::vector<std::string> lines;
  for (; list != nullptr; list = list->next) lines.emplace_back(list->data);
  return lines;
}

TEST(Connection, StartsEmptyAndRefusing) {
  const FixedClock clock(1234567890);
  const CIMconnection connection;
  for (const std::string* text :
       {&connection.host, &connection.user, &connection.password, &connection.scheme,
        &connection.port, &connection.caFile, &connection.sslCert, &connection.sslKey,
        &connection.request, &connection.responseHeader, &connection.responseBody,
        &connection.localIP, &connection.serverIP, &connection.serverName, &connection.osName})
    EXPECT_THAT(*text, IsEmpty());
  EXPECT_EQ(connection.verifyPeer, 0);
  EXPECT_EQ(connection.cimStatus, 0);
  EXPECT_EQ(connection.infoFlags, 0U);
  EXPECT_EQ(connection.messageId, 1000);
  EXPECT_EQ(connection.createdAt, 1234567890U);
  EXPECT_EQ(connection.extraTimeOut, 0);
  EXPECT_EQ(connection.reservedInt, 0);
  EXPECT_FALSE(connection.esxiBusy);
  EXPECT_FALSE(connection.skipIpCheck);
  EXPECT_EQ(connection.result.name, nullptr);
  EXPECT_EQ(connection.curl, nullptr);
  EXPECT_EQ(connection.headers, nullptr);
}

TEST(Connection, CopiesTheServerRecord) {
  const _THR_SERVER_ server{"h", "u", "p", "5989", "ca.pem", "cert.pem", "key.pem"};
  CIMconnection connection;
  connection.setHostUserPasswd(&server);
  EXPECT_EQ(connection.host, "h");
  EXPECT_EQ(connection.user, "u");
  EXPECT_EQ(connection.password, "p");
  EXPECT_EQ(connection.port, "5989");
  EXPECT_EQ(connection.scheme, "https");
  EXPECT_EQ(connection.caFile, "ca.pem");
  EXPECT_NE(connection.verifyPeer, 0);
  EXPECT_EQ(connection.sslCert, "cert.pem");
  EXPECT_EQ(connection.sslKey, "key.pem");
}

TEST(Connection, SpeaksHttpsOnPort5989Only) {
  for (const char* port : {"443", "5988", "", "05989", "5989 ", "59890"}) {
    const _THR_SERVER_ server{"", "", "", port, "", "", ""};
    CIMconnection connection;
    connection.setHostUserPasswd(&server);
    EXPECT_EQ(connection.scheme, "http") << port;
    EXPECT_EQ(connection.port, port);
  }
}

TEST(Connection, VerifiesThePeerExactlyWithACaFile) {
  CIMconnection connection;
  const _THR_SERVER_ with{"", "", "", "", "any", "", ""};
  const _THR_SERVER_ without{"", "", "", "", "", "", ""};
  connection.setHostUserPasswd(&with);
  EXPECT_EQ(connection.verifyPeer, 1);
  connection.setHostUserPasswd(&without);
  EXPECT_EQ(connection.verifyPeer, 0);
}

TEST(Connection, TakesMissingTextsForEmptyOnes) {
  const _THR_SERVER_ nothing{};
  CIMconnection connection;
  connection.host = "old";
  connection.setHostUserPasswd(&nothing);
  EXPECT_EQ(connection.host, "");
  connection.host = "old";
  connection.setHostUserPasswd(nullptr);
  EXPECT_EQ(connection.host, "");
  EXPECT_EQ(connection.scheme, "http");
}

TEST(Connection, TakesARecordThatPointsToItsOwnTexts) {
  const std::string host = "a host name that needs memory of its own.example";
  CIMconnection connection;
  connection.host = host;
  connection.user = "5989";
  connection.password = "authority";
  const _THR_SERVER_ own{connection.password.c_str(), connection.host.c_str(),
                         connection.user.c_str(),     connection.user.c_str(),
                         connection.password.c_str(), connection.host.c_str(),
                         connection.host.c_str()};
  connection.setHostUserPasswd(&own);
  EXPECT_EQ(connection.host, "authority");
  EXPECT_EQ(connection.user, host);
  EXPECT_EQ(connection.password, "5989");
  EXPECT_EQ(connection.port, "5989");
  EXPECT_EQ(connection.scheme, "https");
  EXPECT_EQ(connection.caFile, "authority");
  EXPECT_EQ(connection.sslCert, host);
  EXPECT_EQ(connection.sslKey, host);
}

TEST(Connection, StoresWhatItsSettersGet) {
  CIMconnection connection;
  connection.setOSName("ESXi");
  EXPECT_EQ(connection.osName, "ESXi");
  connection.SetExtraTimeOut(-20);
  EXPECT_EQ(connection.extraTimeOut, -20);
  connection.cimStatus = 5;
  EXPECT_EQ(connection.ChkCimStatus(), 5);
}

TEST(Connection, EmptiesTheBuffers) {
  CIMconnection connection;
  connection.request = "a";
  connection.responseHeader = "b";
  connection.responseBody = "c";
  connection.result.name = known_cim_elements[elem::CIM];
  connection.result.makeNextElement();
  connection.cleanXMLbuffer();
  EXPECT_THAT(connection.request + connection.responseHeader + connection.responseBody, IsEmpty());
  EXPECT_EQ(connection.result.name, nullptr);
  EXPECT_EQ(connection.result.next, nullptr);
}

TEST(TransferHandle, IsMadeOnceAndRenewsTheHeaderListEachTime) {
  ReadyConnection connection;
  connection.cimStatus = 77;
  TraceRecorder traces;
  EXPECT_EQ(connection.initCurlHandle(), 0);
  EXPECT_EQ(connection.cimStatus, 0);
  void* const handle = connection.curl;
  ASSERT_NE(handle, nullptr);
  EXPECT_THAT(traces.texts(), ElementsAre("[far]       initCurlHandle: CURL_EASY_INIT done",
                                          "[far]       initCurlHandle: SSL=0x0"));
  EXPECT_EQ(traces.texts(detail).size(), 2U);
  replace_header_list(connection, make_header_list("M", "o"));
  EXPECT_EQ(connection.initCurlHandle(), 0);
  EXPECT_EQ(connection.curl, handle);
  EXPECT_EQ(connection.headers, nullptr);
  EXPECT_EQ(traces.lines().size(), 2U);
}

TEST(TransferHandle, IsRefusedWhileTheConnectionIsNotBusy) {
  ReadyConnection connection;
  connection.esxiBusy = false;
  connection.cimStatus = 77;
  replace_header_list(connection, make_header_list("M", "o"));
  TraceRecorder traces(warning);
  EXPECT_EQ(connection.initCurlHandle(), 27);
  EXPECT_EQ(connection.cimStatus, 27);
  EXPECT_EQ(connection.curl, nullptr);
  EXPECT_NE(connection.headers, nullptr);
  EXPECT_THAT(traces.texts().back(),
              testing::MatchesRegex("\\[far\\] SetCimStatus: CIMconnection@[0-9]+  ErrCode:27 "
                                    "initCurlHandle: ERROR ESXi_Busy"));
}

TEST(TransferHandle, NeedsTheLocalAddressFirstAndThenTheServers) {
  ReadyConnection connection;
  connection.localIP.clear();
  connection.serverIP.clear();
  TraceRecorder traces(warning);
  EXPECT_EQ(connection.initCurlHandle(), 5004);
  EXPECT_THAT(traces.texts().back(),
              testing::EndsWith("  ErrCode:5004 initCurlHandle: bad local-IP-Address"));
  connection.localIP = "10.0.0.1";
  EXPECT_EQ(connection.initCurlHandle(), 5003);
  EXPECT_THAT(traces.texts().back(),
              testing::EndsWith("  ErrCode:5003 initCurlHandle: bad server-IP-Address"));
  EXPECT_EQ(connection.curl, nullptr);
}

TEST(TransferHandle, NeedsNoAddressesWhenTheCheckIsSkipped) {
  ReadyConnection connection;
  connection.localIP.clear();
  connection.serverIP.clear();
  connection.skipIpCheck = true;
  EXPECT_EQ(connection.initCurlHandle(), 0);
  EXPECT_NE(connection.curl, nullptr);
}

struct TlsCase {
  const char* certificate;
  const char* key;
  const char* authority;
  const char* value;
};

TEST(TransferHandle, TracesTheLastTlsFileItSet) {
  const TlsCase cases[] = {
      {"", "", "", "0x0"},        {"cert", "", "", "0x1"},      {"", "key", "", "0x2"},
      {"cert", "key", "", "0x2"}, {"", "", "authority", "0x4"}, {"cert", "key", "authority", "0x4"},
  };
  for (const TlsCase& entry : cases) {
    ReadyConnection connection;
    connection.sslCert = entry.certificate;
    connection.sslKey = entry.key;
    connection.caFile = entry.authority;
    TraceRecorder traces;
    EXPECT_EQ(connection.initCurlHandle(), 0);
    EXPECT_EQ(
        traces.count(detail, source, std::string("[far]       initCurlHandle: SSL=") + entry.value),
        1);
  }
}

TEST(TransferHandle, RecordsAFailingOptionAndSetsTheOthers) {
  ReadyConnection connection;
  // libcurl refuses texts of 8 MB and more.
  connection.sslCert.assign(9000000, 'x');
  connection.caFile = "authority";
  TraceRecorder traces;
  EXPECT_EQ(connection.initCurlHandle(), CURLE_BAD_FUNCTION_ARGUMENT);
  EXPECT_NE(connection.curl, nullptr);
  EXPECT_EQ(traces.count(detail, source, "[far]       initCurlHandle: SSL=0x4"), 1);
}

TEST(TransferHandle, IsReleasedWithHeadersAndBuffers) {
  ReadyConnection connection;
  connection.initCurlHandle();
  replace_header_list(connection, make_header_list("M", "o"));
  connection.request = "r";
  connection.cimStatus = 6;
  TraceRecorder traces;
  connection.releaseCurlHandle();
  EXPECT_EQ(connection.curl, nullptr);
  EXPECT_EQ(connection.headers, nullptr);
  EXPECT_EQ(connection.request, "");
  EXPECT_EQ(connection.cimStatus, 6);
  EXPECT_THAT(traces.texts(), ElementsAre("[far] releaseCurlHandle: CURL_EASY_CLEANUP   done"));
  connection.releaseCurlHandle();
  EXPECT_EQ(traces.count(detail, source, "[far] releaseCurlHandle: CURL_EASY_CLEANUP   done"), 1);
  EXPECT_EQ(traces.lines().size(), 1U);
}

TEST(TransferHandle, StaysWhenTheConnectionIsNotBusy) {
  ReadyConnection connection;
  connection.initCurlHandle();
  replace_header_list(connection, make_header_list("M", "o"));
  connection.request = "r";
  connection.responseHeader = "h";
  connection.responseBody = "b";
  connection.result.name = known_cim_elements[elem::CIM];
  connection.esxiBusy = false;
  connection.cimStatus = 6;
  TraceRecorder traces;
  connection.releaseCurlHandle();
  EXPECT_NE(connection.curl, nullptr);
  EXPECT_EQ(lines_of(connection.headers).size(), 5U);
  EXPECT_EQ(connection.request, "r");
  EXPECT_EQ(connection.responseHeader, "h");
  EXPECT_EQ(connection.responseBody, "b");
  EXPECT_EQ(connection.result.name, known_cim_elements[elem::CIM]);
  EXPECT_EQ(connection.cimStatus, 27);
  EXPECT_EQ(traces.count(detail, source, "releaseCurlHandle: ERROR ESXi_Busy"), 1);
  EXPECT_EQ(traces.lines().size(), 1U);
}

TEST(TransferHandle, IsReleasedByTheDestructorWhateverTheBusyFlagSays) {
  for (const bool busy : {true, false}) {
    auto connection = std::make_unique<ReadyConnection>();
    connection->initCurlHandle();
    connection->esxiBusy = busy;
    TraceRecorder traces;
    connection.reset();
    EXPECT_THAT(traces.texts(), ElementsAre("[far] releaseCurlHandle: CURL_EASY_CLEANUP   done"));
  }
}

TEST(TransferHandle, IsDuplicatedFromAnother) {
  ReadyConnection source_connection;
  source_connection.initCurlHandle();
  ReadyConnection connection;
  TraceRecorder traces;
  connection.duplicateCurlHandle(source_connection.curl);
  EXPECT_NE(connection.curl, nullptr);
  EXPECT_NE(connection.curl, source_connection.curl);
  EXPECT_EQ(traces.count(warning, source, "[far] duplicateCurlHandle: CURLhandle duplicated"), 1);
  connection.duplicateCurlHandle(connection.curl);
  EXPECT_NE(connection.curl, nullptr);
  connection.duplicateCurlHandle(nullptr);
  EXPECT_EQ(connection.curl, nullptr);
  EXPECT_EQ(traces.lines().size(), 2U);
}

// A connection in which every field has a value of its own.
struct FullConnection : ReadyConnection {
  using CIMconnection::operator=;

  FullConnection() {
    host = "host";
    user = "user";
    password = "password";
    scheme = "scheme";
    port = "port";
    caFile = "caFile";
    sslCert = "sslCert";
    sslKey = "sslKey";
    verifyPeer = 1;
    cimStatus = 6;
    infoFlags = 0x640;
    messageId = 1017;
    createdAt = 99;
    extraTimeOut = -7;
    reservedInt = 8;
    skipIpCheck = true;
    request = "request";
    responseHeader = "header";
    responseBody = "body";
    result.name = known_cim_elements[elem::CIM];
    result.makeNextElement()->name = known_cim_elements[elem::MESSAGE];
    serverName = "serverName";
    osName = "osName";
    curl = curl_easy_init();
    replace_header_list(*this, make_header_list("M", "a/b"));
  }
};

void expect_equal(const CIMconnection& one, const CIMconnection& other) {
  EXPECT_EQ(one.host, other.host);
  EXPECT_EQ(one.user, other.user);
  EXPECT_EQ(one.password, other.password);
  EXPECT_EQ(one.scheme, other.scheme);
  EXPECT_EQ(one.port, other.port);
  EXPECT_EQ(one.caFile, other.caFile);
  EXPECT_EQ(one.sslCert, other.sslCert);
  EXPECT_EQ(one.sslKey, other.sslKey);
  EXPECT_EQ(one.verifyPeer, other.verifyPeer);
  EXPECT_EQ(one.cimStatus, other.cimStatus);
  EXPECT_EQ(one.infoFlags, other.infoFlags);
  EXPECT_EQ(one.messageId, other.messageId);
  EXPECT_EQ(one.createdAt, other.createdAt);
  EXPECT_EQ(one.extraTimeOut, other.extraTimeOut);
  EXPECT_EQ(one.reservedInt, other.reservedInt);
  EXPECT_EQ(one.esxiBusy, other.esxiBusy);
  EXPECT_EQ(one.skipIpCheck, other.skipIpCheck);
  EXPECT_EQ(one.request, other.request);
  EXPECT_EQ(one.responseHeader, other.responseHeader);
  EXPECT_EQ(one.responseBody, other.responseBody);
  EXPECT_EQ(one.localIP, other.localIP);
  EXPECT_EQ(one.serverIP, other.serverIP);
  EXPECT_EQ(one.serverName, other.serverName);
  EXPECT_EQ(one.osName, other.osName);
  EXPECT_EQ(lines_of(one.headers), lines_of(other.headers));
}

TEST(ConnectionCopy, HasEverythingInCopiesOfItsOwn) {
  const FullConnection original;
  CIMconnection copy;
  copy.esxiBusy = true;
  copy = original;
  expect_equal(copy, original);
  EXPECT_NE(copy.curl, nullptr);
  EXPECT_NE(copy.curl, original.curl);
  EXPECT_NE(copy.headers, original.headers);
  EXPECT_EQ(copy.result.name, original.result.name);
  ASSERT_NE(copy.result.next, nullptr);
  EXPECT_NE(copy.result.next, original.result.next);
  EXPECT_EQ(copy.result.next->name, known_cim_elements[elem::MESSAGE]);
  EXPECT_EQ(lines_of(original.headers).size(), 5U);
}

TEST(ConnectionCopy, IsMadeByTheCopyConstructorToo) {
  const FullConnection original;
  const TraceRecorder traces;
  const CIMconnection copy(original);
  expect_equal(copy, original);
  EXPECT_NE(copy.curl, nullptr);
  EXPECT_THAT(traces.texts(), ElementsAre("[host] duplicateCurlHandle: CURLhandle duplicated"));
}

TEST(ConnectionCopy, HasNoHandleWithoutOneInTheSource) {
  const CIMconnection original;
  FullConnection copy;
  TraceRecorder traces;
  copy = original;
  EXPECT_EQ(copy.curl, nullptr);
  EXPECT_EQ(copy.headers, nullptr);
  expect_equal(copy, original);
  EXPECT_THAT(traces.texts(), ElementsAre("[host] releaseCurlHandle: CURL_EASY_CLEANUP   done"));
}

TEST(ConnectionCopy, LeavesTheHandleOfATargetThatIsNotBusy) {
  const CIMconnection original;
  FullConnection copy;
  copy.esxiBusy = false;
  void* const handle = copy.curl;
  TraceRecorder traces;
  copy = original;
  EXPECT_EQ(copy.curl, handle);
  // The 27 of the refused release is overwritten by the copy.
  EXPECT_EQ(copy.cimStatus, 0);
  EXPECT_EQ(copy.headers, nullptr);
  EXPECT_THAT(traces.texts(), ElementsAre("releaseCurlHandle: ERROR ESXi_Busy"));
}

TEST(ConnectionCopy, ReplacesTheHandleOfATargetThatIsNotBusyByADuplicate) {
  const FullConnection original;
  FullConnection copy;
  copy.esxiBusy = false;
  TraceRecorder traces;
  copy = original;
  EXPECT_NE(copy.curl, nullptr);
  EXPECT_NE(copy.curl, original.curl);
  EXPECT_EQ(copy.cimStatus, 6);
  EXPECT_TRUE(copy.esxiBusy);
  EXPECT_THAT(traces.texts(), ElementsAre("releaseCurlHandle: ERROR ESXi_Busy",
                                          "[host] duplicateCurlHandle: CURLhandle duplicated"));
}

TEST(ConnectionCopy, OntoItselfChangesNothing) {
  FullConnection connection;
  void* const handle = connection.curl;
  const CIMconnection& same = connection;
  TraceRecorder traces;
  connection = same;
  EXPECT_EQ(connection.curl, handle);
  EXPECT_EQ(connection.request, "request");
  EXPECT_EQ(lines_of(connection.headers).size(), 5U);
  EXPECT_TRUE(traces.lines().empty());
}

TEST(ConnectionTraces, NeverShowThePassword) {
  TraceRecorder traces;
  _THR_SERVER_ server = sample_server("far");
  server.password = "open-sesame";
  CIMconnection connection;
  connection.setHostUserPasswd(&server);
  connection.esxiBusy = true;
  connection.skipIpCheck = true;
  connection.initCurlHandle();
  connection.SetCimStatus_FL(6, nullptr, "x", 1);
  const CIMconnection copy(connection);
  EXPECT_FALSE(traces.lines().empty());
  for (const std::string& text : traces.texts())
    EXPECT_EQ(text.find("open-sesame"), std::string::npos) << text;
}

}  // namespace
}  // namespace zuCIM
