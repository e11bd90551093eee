#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/http_answer.h"
#include "support/trace_recorder.h"
#include "wire/wire_client.h"

// What an answer becomes as a status, and in which order its faults are found.

namespace zuCIM {
namespace {

using testing::ElementsAreArray;

constexpr unsigned warning = 4;

// The codes and texts of all records, in order.
std::vector<std::string> records(const TraceRecorder& traces) {
  std::vector<std::string> result;
  for (const std::string& text : traces.texts(warning))
    if (const std::size_t at = text.find("  ErrCode:"); at != std::string::npos)
      result.push_back(text.substr(at + 10));
  return result;
}

int dumps(const TraceRecorder& traces) {
  int count = 0;
  for (const std::string& text : traces.texts(warning))
    if (text.find("] ------ REQUEST:\n") != std::string::npos) ++count;
  return count;
}

struct VerdictCase {
  std::string answer;
  int status;
  unsigned info;
  std::vector<std::string> records;
};

void expect_verdict(const VerdictCase& entry) {
  const ScriptedServer server(answer_with(entry.answer));
  WireClient client(server);
  TraceRecorder traces;
  EXPECT_EQ(client.exchange(), entry.status) << entry.answer;
  EXPECT_EQ(client.cimStatus, entry.status);
  EXPECT_EQ(client.infoFlags, entry.info) << entry.answer;
  EXPECT_THAT(records(traces), ElementsAreArray(entry.records)) << entry.answer;
  EXPECT_EQ(dumps(traces), entry.records.empty() ? 0 : 1);
  EXPECT_EQ(traces.texts(2).back(), "[127.0.0.2]    Leave sendRequest_recvResponse() errCode=" +
                                        std::to_string(entry.status));
}

const std::string error_document_6 = error_document("<ERROR CODE=\"6\" DESCRIPTION=\"x\"/>");
const std::string curl_22 = "22 HTTP response code said error";
const std::string no_data = "5001 No data received from server";
const std::string bad_document = "5002 Can't parse the response";

TEST(Verdict, OfAnErrorElement) {
  const std::string none = " No Description found in response";
  const std::pair<const char*, std::string> cases[] = {
      {"<ERROR CODE=\"6\" DESCRIPTION=\"x\"/>", "6 x"},
      {"<ERROR CODE=\"0\" DESCRIPTION=\"x\"/>", "1001 x"},
      {"<ERROR CODE=\"-1\" DESCRIPTION=\"x\"></ERROR>", "1001 x"},
      {"<ERROR CODE=\"six\" DESCRIPTION=\"x\"/>", "1001 x"},
      {"<ERROR CODE=\"\" DESCRIPTION=\"\"/>", "1001 "},
      {"<ERROR CODE=\"99999999999999999999\" DESCRIPTION=\"x\"/>", "2147483647 x"},
      {"<ERROR CODE=\"6\"/>", "6" + none},
      {"<ERROR DESCRIPTION=\"x\" CODE=\"6\"/>", "1001" + none},
      {"<ERROR/>", "1001" + none},
      {"<ERROR></ERROR>", "1001" + none},
      {"<ERROR >text</ERROR>", "1001" + none},
      {"<ERROR CODE='6' DESCRIPTION='x'/>", "1001" + none},
      {"<ERROR CODE=\"6\" OTHER=\"o\" DESCRIPTION=\"x\"/>", "6" + none},
      {"<ERROR CODE=\"6\" DESCRIPTION=\"x\"/><ERROR CODE=\"7\" DESCRIPTION=\"y\"/>", "6 x"},
      {"<ERROR CODE=\"6\"  DESCRIPTION=\"&lt;x&gt;\"><INSTANCE CLASSNAME=\"C\"/></ERROR>",
       "6 &lt;x&gt;"},
  };
  for (const auto& [error, record] : cases)
    expect_verdict({http_answer(error_document(error)), std::atoi(record.c_str()), 0, {record}});
}

TEST(Verdict, OfAnErrorElementInABrokenDocument) {
  std::string broken = error_document_6;
  broken.replace(broken.rfind("</CIM>"), 6, "</CIM>?");
  expect_verdict({http_answer(broken), 5002, 0, {bad_document, "6 x"}});
}

TEST(Verdict, OfAnHttpStatus) {
  for (const std::string status : {"400 Bad Request", "403 Forbidden", "404 Not Found",
                                   "500 Internal Server Error", "503 Service Unavailable"}) {
    const std::string line = "HTTP/1.1 " + status;
    const std::string late = std::to_string(10000 + std::atoi(status.c_str())) + " " + line;
    for (const char* body : {"", "<html>no</html>"})
      expect_verdict({http_answer(body, line), 22, 0, {curl_22, no_data, late}});
  }
}

TEST(Verdict, OfRefusedCredentials) {
  for (const char* body : {"", "<html>no</html>"})
    expect_verdict(
        {http_answer(body, "HTTP/1.1 401 Unauthorized"),
         22,
         0x200,
         {curl_22, "5000 Invalid username/password", no_data, "10401 HTTP/1.1 401 Unauthorized"}});
}

TEST(Verdict, OfAStatusLineThatLibcurlTakes) {
  const std::string good = good_document;
  const VerdictCase cases[] = {
      {http_answer(good, "HTTP/1.1 201 Created"), 10201, 0, {"10201 HTTP/1.1 201 Created"}},
      {http_answer(good, "HTTP/1.0 200 OK"), 0, 0, {}},
      {http_answer(good, "HTTP/1.1 302 Found"), 10302, 0, {"10302 HTTP/1.1 302 Found"}},
      {"HTTP/1.1 100 Continue\r\n\r\n" + http_answer(good),
       10100,
       0,
       {"10100 HTTP/1.1 100 Continue"}},
      {http_answer("", "HTTP/1.1 200 OK"), 5001, 0, {no_data}},
      {http_answer("", "HTTP/1.1 204 No Content"),
       5001,
       0,
       {no_data, "10204 HTTP/1.1 204 No Content"}},
  };
  for (const VerdictCase& entry : cases) expect_verdict(entry);
}

TEST(Verdict, OfACimStatusCodeHeader) {
  const std::string line = "HTTP/1.1 200 OK";
  expect_verdict({http_answer(good_document, line, "CIMStatusCode: 7\r\n"),
                  10007,
                  0,
                  {"10007 CIMStatusCode: 7\r\n\r\n"}});
  expect_verdict({http_answer(good_document, line, "CIMStatusCode: 0\r\n"), 0, 0, {}});
  expect_verdict({http_answer(good_document, line, "CIMStatusCode: 99999999999\r\n"),
                  2147483647,
                  0,
                  {"2147483647 CIMStatusCode: 99999999999\r\n\r\n"}});
}

TEST(Verdict, TakesTheFirstFaultAndTracesTheOthers) {
  expect_verdict({http_answer(error_document_6, "HTTP/1.1 201 Created", "CIMStatusCode: 7\r\n"),
                  6,
                  0,
                  {"6 x", "10201 HTTP/1.1 201 Created", "10007 CIMStatusCode: 7\r\n\r\n"}});
  expect_verdict({http_answer("<html/>", "HTTP/1.1 201 Created", "CIMStatusCode: 7\r\n"),
                  5002,
                  0,
                  {bad_document, "10201 HTTP/1.1 201 Created", "10007 CIMStatusCode: 7\r\n\r\n"}});
  expect_verdict({http_answer(error_document_6, "HTTP/1.1 500 Oops", "CIMStatusCode: 7\r\n"),
                  22,
                  0,
                  {curl_22, no_data, "10500 HTTP/1.1 500 Oops", "10007 CIMStatusCode: 7\r\n\r\n"}});
}

TEST(Verdict, OfADocumentThatIsNone) {
  const std::string bodies[] = {
      "<html><body>It works!</body></html>",
      "garbage",
      std::string("\0\0\0", 3),
      "<?xml version=\"1.0\"?>",
      "<CIM CIMVERSION=\"2.0\"></CIM>",
      good_document + "x",
      good_document + "<VALUE>1</VALUE>",
      "<?xml version=\"1.0\"?><cim ></cim>",
      " ",
      std::string(100000, '<'),
  };
  for (const std::string& body : bodies)
    expect_verdict({http_answer(body), 5002, 0, {bad_document}});
}

}  // namespace
}  // namespace zuCIM
