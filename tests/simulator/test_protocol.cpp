#include <gtest/gtest.h>
#include <sys/socket.h>

#include "shared_simulator.h"
#include "support/loopback.h"

namespace {

class Protocol : public SimulatorTest {};

const CimRequest orderly{"EnumerateClassNames", "root/cimv2", {}};

// The orderly message with one text in it replaced.
std::string with(const std::string& from, const std::string& to) {
  std::string message = orderly.message();
  const std::size_t place = message.find(from);
  EXPECT_NE(place, std::string::npos) << from;
  return message.replace(place, from.size(), to);
}

httplib::Headers headers_with(const std::string& name, const std::string& value) {
  httplib::Headers headers{{"Authorization", "Basic cm9vdDpzZWNyZXQ="},
                           {"CIMOperation", "MethodCall"},
                           {"CIMMethod", "EnumerateClassNames"},
                           {"CIMObject", "root/cimv2"}};
  headers.erase(name);
  if (!value.empty()) headers.emplace(name, value);
  return headers;
}

TEST_F(Protocol, AnswersCarryTheHeadersOfAMethodResponse) {
  const auto answer = client.post(orderly.message(), orderly);
  EXPECT_EQ(answer.http_status, 200);
  EXPECT_EQ(answer.header("Content-Type"), "application/xml; charset=\"utf-8\"");
  EXPECT_EQ(answer.header("CIMOperation"), "MethodResponse");
  EXPECT_EQ(answer.header("Content-Length"), std::to_string(answer.body.size()));
}

TEST_F(Protocol, AnswersAreFramedLineByLine) {
  const auto answer = client.call("EnumerateClassNames", class_parameter("CIM_NumericSensor"));
  EXPECT_EQ(answer.body,
            "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
            "<MESSAGE ID=\"4711\" PROTOCOLVERSION=\"1.0\">\n"
            "<SIMPLERSP>\n"
            "<IMETHODRESPONSE NAME=\"EnumerateClassNames\">\n"
            "<IRETURNVALUE>\n"
            "<CLASSNAME NAME=\"HOST_NumericSensor\"/>\n"
            "</IRETURNVALUE>\n"
            "</IMETHODRESPONSE>\n"
            "</SIMPLERSP>\n"
            "</MESSAGE>\n"
            "</CIM>\n");
}

TEST_F(Protocol, ErrorsCarryCodeAndDescriptionInThatOrder) {
  const auto answer = client.call("GetClass", class_parameter("No_&amp;_Such"));
  EXPECT_EQ(answer.http_status, 200);
  EXPECT_NE(answer.body.find("<IMETHODRESPONSE NAME=\"GetClass\">\n"
                             "<ERROR CODE=\"6\" DESCRIPTION=\"CIM_ERR_NOT_FOUND: "
                             "No_&amp;_Such\"/>\n</IMETHODRESPONSE>\n"),
            std::string::npos)
      << answer.body;
}

TEST_F(Protocol, TheMessageIdIsEchoed) {
  const auto answer = client.post(with("4711", "a&quot;b"), orderly);
  EXPECT_STREQ(answer.document.child("CIM").child("MESSAGE").attribute("ID").value(), "a\"b");
}

struct RefusedMessage {
  const char* what;
  std::string body;
  int status;
  const char* cim_error;
};

TEST_F(Protocol, MessagesThatAreNoRequestsAreRefusedOnTheLevelOfHttp) {
  const std::string call = orderly.message().substr(orderly.message().find("<SIMPLEREQ>"));
  const std::vector<RefusedMessage> cases{
      {"cut off", "<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\"", 400, "request-not-well-formed"},
      {"empty", "", 400, "request-not-well-formed"},
      {"no XML", "hello", 400, "request-not-well-formed"},
      {"end tag of another", "<CIM></MIC>", 400, "request-not-well-formed"},
      {"another document", "<html></html>", 400, "request-not-valid"},
      {"no message", "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"></CIM>", 400, "request-not-valid"},
      {"no id", with(" ID=\"4711\"", ""), 400, "request-not-valid"},
      {"no versions", with(" CIMVERSION=\"2.0\"", ""), 400, "request-not-valid"},
      {"no call", with("IMETHODCALL NAME=\"EnumerateClassNames\"", "X"), 400,
       "request-not-well-formed"},
      {"an export",
       "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
       "PROTOCOLVERSION=\"1.0\"><SIMPLEEXPREQ/></MESSAGE></CIM>",
       400, "request-not-valid"},
      {"nothing to do",
       "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
       "PROTOCOLVERSION=\"1.0\"><SIMPLEREQ/></MESSAGE></CIM>",
       400, "request-not-valid"},
      {"a batch",
       "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
       "PROTOCOLVERSION=\"1.0\"><MULTIREQ/></MESSAGE></CIM>",
       501, "multiple-requests-unsupported"},
      {"CIM 3", with("CIMVERSION=\"2.0\"", "CIMVERSION=\"3.0\""), 501, "unsupported-cim-version"},
      {"DTD 1", with("DTDVERSION=\"2.0\"", "DTDVERSION=\"1.0\""), 501, "unsupported-dtd-version"},
      {"protocol 2", with("PROTOCOLVERSION=\"1.0\"", "PROTOCOLVERSION=\"2.0\""), 501,
       "unsupported-protocol-version"},
      {"another method", with("EnumerateClassNames", "GetClass"), 400, "header-mismatch"},
      {"another namespace", with("NAME=\"cimv2\"", "NAME=\"cimv3\""), 400, "header-mismatch"},
  };
  for (const RefusedMessage& each : cases) {
    const auto answer = client.post(each.body, orderly);
    EXPECT_EQ(answer.http_status, each.status) << each.what;
    EXPECT_EQ(answer.header("CIMError"), each.cim_error) << each.what;
    EXPECT_EQ(answer.body, "") << each.what;
  }
}

TEST_F(Protocol, MinorVersionsMakeNoDifference) {
  const auto answer =
      client.post(with("PROTOCOLVERSION=\"1.0\"", "PROTOCOLVERSION=\"1.4\""), orderly);
  EXPECT_TRUE(answer.returned());
}

TEST_F(Protocol, HeadersMustAnnounceWhatTheBodySays) {
  const auto post = [&](const std::string& name, const std::string& value) {
    return client.post("/cimom", headers_with(name, value), orderly.message());
  };
  EXPECT_EQ(post("CIMOperation", "").header("CIMError"), "unsupported-operation");
  EXPECT_EQ(post("CIMOperation", "MethodReply").header("CIMError"), "unsupported-operation");
  EXPECT_EQ(post("CIMMethod", "").header("CIMError"), "header-mismatch");
  EXPECT_EQ(post("CIMObject", "").header("CIMError"), "header-mismatch");
  EXPECT_EQ(post("CIMObject", "root/interop").header("CIMError"), "header-mismatch");
  EXPECT_EQ(post("CIMOperation", "methodcall").http_status, 200);
  EXPECT_EQ(post("CIMObject", "root%2Fcimv2").http_status, 200);
  EXPECT_EQ(post("CIMMethod", "EnumerateClass%4eames").http_status, 200);
}

TEST_F(Protocol, OneNamespaceElementMayHoldSeveralLevels) {
  EXPECT_TRUE(client
                  .post(with("<NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/>",
                             "<NAMESPACE NAME=\"root/cimv2\"/>"),
                        orderly)
                  .returned());
}

struct RefusedCall {
  const char* method;
  std::string parameters;
  int code;
};

TEST_F(Protocol, OperationsAnswerWithTheCodesOfTheStandard) {
  const std::string sensor = class_parameter("CIM_Sensor");
  const std::string no_class = class_parameter("CIM_Nonesuch");
  const std::vector<RefusedCall> cases{
      {"GetClass", no_class, 6},
      {"EnumerateClasses", no_class, 5},
      {"EnumerateClassNames", no_class, 5},
      {"EnumerateInstances", no_class, 5},
      {"EnumerateInstanceNames", no_class, 5},
      {"GetInstance", instance_parameter("CIM_Nonesuch", {{"Name", "x"}}), 5},
      {"GetInstance", instance_parameter("HOST_RecordLog", {{"InstanceID", "x"}}), 6},
      {"GetInstance", instance_parameter("HOST_RecordLog", {{"Name", "HOST:log:sel"}}), 4},
      {"GetInstance", instance_parameter("HOST_RecordLog", {}), 4},
      {"GetInstance",
       instance_parameter("HOST_RecordLog", {{"InstanceID", "HOST:log:sel"}, {"Name", "x"}}), 4},
      {"GetClass", "", 4},
      {"GetInstance", "", 4},
      {"GetInstance", "<IPARAMVALUE NAME=\"InstanceName\"/>", 4},
      {"GetInstance", class_parameter("CIM_Sensor"), 4},
      {"EnumerateInstances", "", 4},
      {"EnumerateInstanceNames", "", 4},
      {"GetClass", "<IPARAMVALUE NAME=\"ClassName\"><VALUE>CIM_Sensor</VALUE></IPARAMVALUE>", 4},
      {"GetClass", sensor + sensor, 4},
      {"GetClass", sensor + boolean_parameter("Nonesuch", "true"), 4},
      {"GetClass", sensor + boolean_parameter("DeepInheritance", "true"), 4},
      {"EnumerateInstanceNames", sensor + boolean_parameter("LocalOnly", "true"), 4},
      {"EnumerateInstances", sensor + boolean_parameter("LocalOnly", "perhaps"), 4},
      {"EnumerateInstances", sensor + boolean_parameter("PropertyList", "Name"), 4},
      {"Associators", "", 7},
      {"AssociatorNames", "", 7},
      {"References", "", 7},
      {"ReferenceNames", "", 7},
      {"GetQualifier", "", 7},
      {"SetQualifier", "", 7},
      {"DeleteQualifier", "", 7},
      {"EnumerateQualifiers", "", 7},
      {"NoSuchOperation", "", 7},
  };
  for (const RefusedCall& each : cases) {
    const auto answer = client.call(each.method, each.parameters);
    EXPECT_EQ(answer.error_code(), each.code) << each.method << each.parameters;
    EXPECT_STREQ(answer.response().attribute("NAME").value(), each.method);
    EXPECT_EQ(answer.error_text().rfind("CIM_ERR_", 0), 0U) << answer.error_text();
    EXPECT_FALSE(answer.returned());
  }
}

TEST_F(Protocol, ParametersWithoutAValueCountAsAbsent) {
  const auto answer = client.call("EnumerateInstances",
                                  class_parameter("HOST_RecordLog") +
                                      "<IPARAMVALUE NAME=\"PropertyList\"></IPARAMVALUE>"
                                      "<IPARAMVALUE NAME=\"LocalOnly\"/>"
                                      "<IPARAMVALUE NAME=\"DeepInheritance\">\n</IPARAMVALUE>");
  EXPECT_TRUE(answer.returned()) << answer.error_text();
}

TEST_F(Protocol, AnUnknownNamespaceIsAnError) {
  const auto answer = client.call("EnumerateClassNames", {}, "root/nonesuch");
  EXPECT_EQ(answer.error_code(), 3);
  EXPECT_EQ(answer.error_text(), "CIM_ERR_INVALID_NAMESPACE: root/nonesuch");
  EXPECT_TRUE(client.call("EnumerateClassNames", {}, "ROOT/CimV2").returned());
}

TEST_F(Protocol, ReferencesThatNestWithoutEndAreRefused) {
  std::string begin;
  std::string end;
  for (int depth = 0; depth < 5000; ++depth) {
    begin += "<VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"CIM_Log\">";
    end += "</INSTANCENAME></VALUE.REFERENCE>";
  }
  const auto answer = client.call("GetInstance",
                                  "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME "
                                  "CLASSNAME=\"CIM_Log\"><KEYBINDING NAME=\"x\">" +
                                      begin + "<KEYVALUE>x</KEYVALUE>" + end +
                                      "</KEYBINDING></INSTANCENAME></IPARAMVALUE>");
  EXPECT_EQ(answer.http_status, 400);
  EXPECT_EQ(answer.header("CIMError"), "request-not-valid");
}

std::string extrinsic(const std::string& class_name, const std::string& method) {
  return "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
         "<SIMPLEREQ><METHODCALL NAME=\"" +
         method +
         "\"><LOCALCLASSPATH><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE "
         "NAME=\"cimv2\"/></LOCALNAMESPACEPATH><CLASSNAME NAME=\"" +
         class_name + "\"/></LOCALCLASSPATH></METHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

TEST_F(Protocol, ExtrinsicCallsAreAnsweredAsSuch) {
  const auto call = [&](const std::string& class_name, const std::string& method) {
    return client.post(extrinsic(class_name, method), {method, "root/cimv2:" + class_name, {}});
  };
  const auto known = call("CIM_RecordLog", "ClearLog");
  EXPECT_STREQ(known.response().name(), "METHODRESPONSE");
  EXPECT_EQ(known.error_code(), 16);
  EXPECT_EQ(call("CIM_RecordLog", "Nonesuch").error_code(), 17);
  EXPECT_EQ(call("CIM_Nonesuch", "ClearLog").error_code(), 5);
}

TEST_F(Protocol, OnlyCimomIsServedAndOnlyByPost) {
  EXPECT_EQ(client.post("/other", headers_with("", ""), orderly.message()).http_status, 404);
  EXPECT_EQ(client.post("/", headers_with("", ""), orderly.message()).http_status, 404);
  const auto get = client.http().Get("/cimom");
  ASSERT_TRUE(get);
  EXPECT_EQ(get->status, 405);
  EXPECT_EQ(get->get_header_value("Allow"), "POST");
  EXPECT_EQ(client.http().Head("/cimom")->status, 405);
  EXPECT_EQ(client.http().Put("/cimom", "x", "text/plain")->status, 405);
  EXPECT_EQ(client.http().Delete("/cimom")->status, 405);
}

// The start of the status line that comes back for these bytes.
std::string status_line_for(const std::string& bytes) {
  const Descriptor socket = connect_to(shared_simulator().address(),
                                       static_cast<std::uint16_t>(shared_simulator().port()));
  send_all(socket, bytes);
  std::string answer(12, '\0');
  const auto count = ::recv(socket.number(), answer.data(), answer.size(), MSG_WAITALL);
  return answer.substr(0, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
}

TEST_F(Protocol, MethodsThatHttpDoesNotKnowAreNotImplemented) {
  EXPECT_EQ(status_line_for("M-POST /cimom HTTP/1.1\r\n\r\n"), "HTTP/1.1 501");
  EXPECT_EQ(status_line_for("TRACE /cimom HTTP/1.1\r\n\r\n"), "HTTP/1.1 501");
}

TEST_F(Protocol, BodiesHaveALimit) {
  constexpr std::size_t limit = std::size_t{16} << 20U;
  const auto post = [&](std::size_t size) {
    return client.post(std::string(size, ' '), orderly).http_status;
  };
  EXPECT_EQ(post(limit), 400);
  EXPECT_EQ(post(limit + 1), 413);
}

TEST_F(Protocol, WrongOrMissingCredentialsAreAskedForAgain) {
  for (const char* credentials : {"", "Basic cm9vdDp3cm9uZw==", "Basic", "Basic ", "Digest x",
                                  "Basic cm9vdDpzZWNyZXQ=x", "Bearer cm9vdDpzZWNyZXQ="}) {
    const auto answer =
        client.post("/cimom", headers_with("Authorization", credentials), orderly.message());
    EXPECT_EQ(answer.http_status, 401) << credentials;
    EXPECT_EQ(answer.header("WWW-Authenticate"), "Basic realm=\"zucim-simulator\"");
    EXPECT_EQ(answer.body, "");
  }
  EXPECT_EQ(client
                .post("/cimom", headers_with("Authorization", "basic cm9vdDpzZWNyZXQ="),
                      orderly.message())
                .http_status,
            200);
}

TEST_F(Protocol, AConnectionServesManyRequests) {
  int connections = 0;
  client.http().set_socket_options([&](int) { ++connections; });
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(client.post(i % 2 == 0 ? orderly.message() : "rubbish", orderly).http_status,
              i % 2 == 0 ? 200 : 400);
  }
  EXPECT_EQ(connections, 1);
}

TEST_F(Protocol, IdleConnectionsLockNobodyOut) {
  std::vector<Descriptor> idle;
  const auto port = static_cast<std::uint16_t>(shared_simulator().port());
  for (int i = 0; i < 60; ++i) idle.push_back(connect_to(shared_simulator().address(), port));
  EXPECT_TRUE(client.post(orderly.message(), orderly).returned());
}

}  // namespace
