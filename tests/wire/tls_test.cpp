#include <curl/curl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/ssl.h>

#include "support/certificates.h"
#include "support/http_answer.h"
#include "support/trace_recorder.h"
#include "wire/stepping_clock.h"
#include "wire/tls_client.h"
#include "zuCIM/container.h"

namespace zuCIM {
namespace {

using testing::AnyOf;

TEST(Https, TakesAnyCertificateWithoutAnAuthority) {
  const TlsServer server("127.0.8.1", test_tls_options());
  TlsClient client(server);
  EXPECT_EQ(client.scheme, "https");
  EXPECT_EQ(client.exchange(), 0);
  EXPECT_EQ(client.responseBody, good_document);
}

TEST(Https, TakesACertificateOfItsAuthority) {
  const TlsServer server("127.0.8.2", test_tls_options());
  TlsClient client(server);
  client.trust(test_certificates().authority);
  TraceRecorder traces(16);
  EXPECT_EQ(client.exchange(), 0);
  EXPECT_EQ(traces.count(16, "Src/CIMconnection", "[127.0.8.2]       initCurlHandle: SSL=0x4"), 1);
}

TEST(Https, RefusesACertificateOfAnotherAuthority) {
  const TlsServer server("127.0.8.3", test_tls_options());
  TlsClient client(server);
  client.trust(test_certificates().other_authority);
  EXPECT_EQ(client.exchange(), 60);
  EXPECT_TRUE(server.requests().empty());
}

TEST(Https, RefusesACertificateThatIsOverOnlyWithAnAuthority) {
  const TlsServer server("127.0.8.4", options_with(test_certificates().expired_server));
  TlsClient strict(server);
  strict.trust(test_certificates().authority);
  EXPECT_EQ(strict.exchange(), 60);
  TlsClient lax(server);
  EXPECT_EQ(lax.exchange(), 0);
}

TEST(Https, DoesNotCompareTheNameInTheCertificate) {
  const TlsServer server(
      "127.0.8.5", options_with(make_server_certificate("elsewhere", {"DNS:elsewhere.example"})));
  TlsClient client(server);
  client.trust(test_certificates().authority);
  EXPECT_EQ(client.exchange(), 0);
}

TEST(Https, TellsOfAnAuthorityFileThatIsMissing) {
  const TlsServer server("127.0.8.6", test_tls_options());
  TlsClient client(server);
  client.trust("/no/such/file.pem");
  EXPECT_EQ(client.exchange(), 77);
  EXPECT_TRUE(server.requests().empty());
}

TEST(Https, ShowsItsOwnCertificate) {
  const TlsServer server("127.0.8.7", options_that_require_a_client());
  TlsClient client(server);
  client.trust(test_certificates().authority);
  client.identify(test_certificates().client);
  EXPECT_EQ(client.exchange(), 0);
}

TEST(Https, IsRefusedWithoutACertificateOfItsOwn) {
  const TlsServer server("127.0.8.8", options_that_require_a_client());
  TlsClient nameless(server);
  EXPECT_THAT(nameless.exchange(), AnyOf(35, 52, 55, 56));
  TlsClient unknown(server);
  unknown.identify(test_certificates().unknown_client);
  EXPECT_THAT(unknown.exchange(), AnyOf(35, 52, 55, 56));
  EXPECT_TRUE(server.requests().empty());
}

TEST(Https, TellsOfAClientCertificateThatCannotBeUsed) {
  const TlsServer server("127.0.8.9", options_that_require_a_client());
  TlsClient missing(server);
  missing.identify({"/no/such/file.pem", "/no/such/key.pem"});
  EXPECT_EQ(missing.exchange(), 58);
  TlsClient mixed(server);
  mixed.identify({test_certificates().client.certificate, test_certificates().server.key});
  EXPECT_EQ(mixed.exchange(), 58);
}

TEST(Https, FailsWithAServerThatSpeaksPlainly) {
  const ScriptedServer server({script::Send{http_answer(good_document)}, script::Close{}},
                              {.address = "127.0.8.10", .port = 5989});
  TlsClient client(server);
  EXPECT_EQ(client.exchange(), 35);
}

TEST(Https, FailsWithAHandshakeThatIsCutShort) {
  TlsOptions options = test_tls_options();
  options.handshake = Handshake::closed_midway;
  const TlsServer server("127.0.8.11", options);
  TlsClient client(server);
  EXPECT_THAT(client.exchange(), AnyOf(35, 56));
}

TEST(Https, GivesUpAHandshakeThatHangs) {
  TlsOptions options = test_tls_options();
  options.handshake = Handshake::hung_midway;
  const TlsServer server("127.0.8.12", options);
  const SteppingClock clock(10);
  TlsClient client(server);
  client.SetExtraTimeOut(-20);
  EXPECT_EQ(client.exchange(), 42);
  EXPECT_EQ(client.infoFlags, 0x400U);
}

TEST(Https, TellsOfAnAnswerThatWasCutByAnAttacker) {
  const std::string answer = http_answer(good_document);
  const ScriptedServer server(
      {script::ReadRequest{}, script::Send{answer.substr(0, answer.size() - 10)}, script::Drop{}},
      {.address = "127.0.8.13", .port = 5989, .tls = test_tls_options()});
  TlsClient client(server);
  EXPECT_THAT(client.exchange(), AnyOf(18, 56));
}

TEST(Https, ComparesTheNameInTheCertificateOnDemand) {
  const TlsServer server("127.0.0.15", test_tls_options());
  TlsClient client(server);
  client.trust(test_certificates().authority);
  client.verifyHost = true;
  EXPECT_EQ(client.exchange(), 0);
  const TlsServer other("127.0.8.16",
                        options_with(make_server_certificate("another", {"DNS:another.example"})));
  TlsClient strict(other);
  strict.trust(test_certificates().authority);
  strict.verifyHost = true;
  EXPECT_EQ(strict.exchange(), 60);
  EXPECT_TRUE(other.requests().empty());
}

TEST(Https, RefusesOldVersionsOnDemand) {
  TlsOptions options = test_tls_options();
  options.newest_version = TLS1_2_VERSION;
  const TlsServer server("127.0.8.17", options);
  TlsClient lenient(server);
  lenient.oldestTls = OldestTls::version_1_2;
  EXPECT_EQ(lenient.exchange(), 0);
  TlsClient strict(server);
  strict.oldestTls = OldestTls::version_1_3;
  EXPECT_EQ(strict.exchange(), 35);
  EXPECT_EQ(server.requests().size(), 1U);
}

void take_weak_signatures(TlsClient& client) {
  const curl_ssl_ctx_callback take = [](CURL*, void* context, void*) {
    SSL_CTX_set_security_level(static_cast<SSL_CTX*>(context), 0);
    return CURLE_OK;
  };
  ASSERT_EQ(client.initCurlHandle(), 0);
  curl_easy_setopt(client.curl, CURLOPT_SSL_CTX_FUNCTION, take);
}

// Many systems refuse such versions by themselves, for their weak signatures above all. That is
// switched off here, so that it is the wish of the client that decides.
TEST(Https, RefusesVersionsBeforeTheOldestOneThatItTakes) {
  TlsOptions options = test_tls_options();
  options.newest_version = TLS1_1_VERSION;
  const TlsServer server("127.0.8.19", options);
  TlsClient lenient(server);
  take_weak_signatures(lenient);
  EXPECT_EQ(lenient.exchange(), 0);
  TlsClient strict(server);
  strict.oldestTls = OldestTls::version_1_2;
  take_weak_signatures(strict);
  EXPECT_EQ(strict.exchange(), 35);
  EXPECT_EQ(server.requests().size(), 1U);
}

// Anybody may have written the name, but it must be there.
TEST(Https, ComparesTheNameInACertificateOfAnybodyOnDemand) {
  const TlsServer server("127.0.0.16", test_tls_options());
  TlsClient client(server);
  client.verifyHost = true;
  EXPECT_EQ(client.exchange(), 0);
  const TlsServer other("127.0.8.20", test_tls_options());
  TlsClient strict(other);
  strict.verifyHost = true;
  EXPECT_EQ(strict.exchange(), 60);
  EXPECT_TRUE(other.requests().empty());
}

// A context whose TLS connection is open when the process ends: its handle has to go before the
// TLS library does.
TEST(HttpsDeathTest, TheProcessMayEndWithAnOpenConnection) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto end_with_an_open_connection = [] {
    static const TlsServer server("127.0.8.14", test_tls_options());
    const _THR_SERVER_ record{"127.0.8.14", "u", "p", "5989", "", "", ""};
    makeContainer(&record, 0);
    CIMcontainer* const context = getContainer(0);
    context->skipIpCheck = true;
    context->ESXi_Occupied(true);
    std::exit(context->sendRequest_recvResponse("M", "o") == 0 ? 0 : 1);
  };
  EXPECT_EXIT(end_with_an_open_connection(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace zuCIM
