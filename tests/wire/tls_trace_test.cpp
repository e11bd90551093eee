#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/tls1.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <ostream>
#include <string>

#include "support/trace_recorder.h"
#include "wire/tls_client.h"

// What a trace tells about a TLS connection that did not come about.

namespace zuCIM {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

struct Refusal {
  std::string name;
  int status;
  // What libcurl says about it, in part.
  std::string detail;
  std::function<TlsOptions()> server;
  std::function<void(TlsClient&)> client;
};

void PrintTo(const Refusal& refusal, std::ostream* out) {
  *out << refusal.name;
}

void trust(TlsClient& client) {
  client.trust(test_certificates().authority);
}

const Refusal refusals[] = {
    {"AnotherAuthority", 60,
     "SSL certificate problem: self-signed certificate in certificate chain", test_tls_options,
     [](TlsClient& client) { client.trust(test_certificates().other_authority); }},
    {"ACertificateThatIsOver", 60, "SSL certificate problem: certificate has expired",
     [] { return options_with(test_certificates().expired_server); }, trust},
    {"ACertificateThatSignedItself", 60, "SSL certificate problem: self-signed certificate",
     [] { return options_with(test_certificates().unknown_client); }, trust},
    {"AnotherName", 60, "SSL: no alternative certificate subject name matches target host name",
     [] { return options_with(make_server_certificate("traced", {"DNS:traced.example"})); },
     [](TlsClient& client) {
       trust(client);
       client.verifyHost = true;
     }},
    {"AMissingAuthorityFile", 77, "error setting certificate file", test_tls_options,
     [](TlsClient& client) { client.trust("/no/such/file.pem"); }},
    {"AClientCertificateThatIsMissing", 58, "could not load PEM client certificate",
     options_that_require_a_client,
     [](TlsClient& client) {
       trust(client);
       client.identify({"/no/such/file.pem", "/no/such/key.pem"});
     }},
    {"AClientKeyOfAnotherCertificate", 58, "unable to set private key file",
     options_that_require_a_client,
     [](TlsClient& client) {
       trust(client);
       client.identify({test_certificates().client.certificate, test_certificates().server.key});
     }},
    {"NoClientCertificateWhereOneIsRequired", 56, "alert certificate required",
     options_that_require_a_client, trust},
    {"AClientCertificateOfAnotherAuthority", 56, "alert unknown ca", options_that_require_a_client,
     [](TlsClient& client) {
       trust(client);
       client.identify(test_certificates().unknown_client);
     }},
    {"NoClientCertificateInAnOldVersion", 35, "alert handshake failure",
     [] {
       TlsOptions options = options_that_require_a_client();
       options.newest_version = TLS1_2_VERSION;
       return options;
     },
     trust},
};

class TlsTrace : public testing::TestWithParam<Refusal> {
 protected:
  // One for each, since the tests may run at the same time and all need port 5989.
  static std::string address() {
    const auto is_tested = [](const Refusal& refusal) { return refusal.name == GetParam().name; };
    const auto* const found = std::ranges::find_if(refusals, is_tested);
    return "127.0.45." + std::to_string(found - std::begin(refusals) + 1);
  }
};

TEST_P(TlsTrace, TellsWhichCheckFailedAndWithWhichAuthorities) {
  const TlsServer server(address().c_str(), GetParam().server());
  TlsClient client(server);
  GetParam().client(client);
  const TraceRecorder traces(4);
  EXPECT_EQ(client.exchange(), GetParam().status);
  EXPECT_THAT(traces.texts(),
              Contains(AllOf(StartsWith("[" + address() + "] TLS: "), HasSubstr(GetParam().detail),
                             EndsWith(" (CA file '" + client.caFile + "')"))));
}

INSTANTIATE_TEST_SUITE_P(All, TlsTrace, testing::ValuesIn(refusals),
                         [](const auto& test) { return test.param.name; });

// The same status as that of a refusal after the handshake.
TEST(TlsTraceOf, ABrokenAnswerDoesNotBlameTls) {
  const ScriptedServer server(
      answer_with("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nno number\r\n"),
      {.address = "127.0.45.100", .port = 5989, .tls = test_tls_options()});
  TlsClient client(server);
  trust(client);
  const TraceRecorder traces(4);
  EXPECT_EQ(client.exchange(), 56);
  EXPECT_THAT(traces.texts(), Not(Contains(HasSubstr("TLS: "))));
}

}  // namespace
}  // namespace zuCIM
