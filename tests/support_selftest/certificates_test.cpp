#include "support/certificates.h"

#include <curl/curl.h>
#include <gtest/gtest.h>
#include <openssl/ssl.h>

#include <memory>

#include "support/scripted_server.h"

namespace {

struct Client {
  std::string authority = {};
  CertificateFiles identity = {};
  bool verify_host = true;
};

ServerOptions with(const TlsOptions& tls) {
  return ServerOptions{.address = "127.0.0.2", .port = 0, .tls = tls};
}

script::Steps answering_script() {
  return {script::ReadRequest{}, script::Send{http_answer("secret")}};
}

std::size_t ignore(const char*, std::size_t size, std::size_t count, void*) {
  return size * count;
}

// Asks a TLS server for its page with libcurl.
CURLcode ask(const ScriptedServer& server, const Client& client) {
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(),
                                                                   &curl_easy_cleanup);
  CURL* const curl = handle.get();
  const std::string url = "https://" + server.address() + ":" + server.port_text() + "/";
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_PROXY, "");
  curl_easy_setopt(curl, CURLOPT_CAINFO, client.authority.c_str());
  curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, client.verify_host ? 2L : 0L);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, ignore);
  if (!client.identity.certificate.empty()) {
    curl_easy_setopt(curl, CURLOPT_SSLCERT, client.identity.certificate.c_str());
    curl_easy_setopt(curl, CURLOPT_SSLKEY, client.identity.key.c_str());
  }
  return curl_easy_perform(curl);
}

// What OpenSSL says of the first read from a server that sends nothing.
int first_read_error(const ScriptedServer& server) {
  const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(SSL_CTX_new(TLS_client_method()),
                                                                  &SSL_CTX_free);
  const std::unique_ptr<SSL, decltype(&SSL_free)> ssl(SSL_new(context.get()), &SSL_free);
  const Descriptor socket = connect_to(server.address(), server.port());
  SSL_set_fd(ssl.get(), socket.number());
  char byte = 0;
  if (SSL_connect(ssl.get()) != 1) return -1;
  return SSL_get_error(ssl.get(), SSL_read(ssl.get(), &byte, 1));
}

TEST(TestCertificates, AClientThatTrustsTheAuthorityIsServed) {
  const ScriptedServer server(answering_script(), with(test_tls_options()));
  EXPECT_EQ(ask(server, {test_certificates().authority}), CURLE_OK);
  EXPECT_EQ(server.requests().size(), 1U);
}

TEST(TestCertificates, AClientThatTrustsAnotherAuthorityIsNot) {
  const ScriptedServer server(answering_script(), with(test_tls_options()));
  EXPECT_EQ(ask(server, {test_certificates().other_authority}), CURLE_PEER_FAILED_VERIFICATION);
  ASSERT_TRUE(server.wait_for_ended_connections(1));
  EXPECT_TRUE(server.requests().empty());
}

TEST(TestCertificates, AnExpiredCertificateIsRefused) {
  TlsOptions tls = test_tls_options();
  tls.certificate_file = test_certificates().expired_server.certificate;
  tls.key_file = test_certificates().expired_server.key;
  const ScriptedServer server(answering_script(), with(tls));
  EXPECT_EQ(ask(server, {test_certificates().authority}), CURLE_PEER_FAILED_VERIFICATION);
}

TEST(TestCertificates, ACertificateForAnotherHostIsRefusedWhereTheHostIsChecked) {
  const CertificateFiles other = make_server_certificate("other-host", {"DNS:other.test"});
  const ScriptedServer server(answering_script(), with({other.certificate, other.key}));
  const std::string& authority = test_certificates().authority;
  EXPECT_EQ(ask(server, {authority}), CURLE_PEER_FAILED_VERIFICATION);
  EXPECT_EQ(ask(server, {.authority = authority, .verify_host = false}), CURLE_OK);
}

TEST(TestCertificates, ARequiredClientCertificateMustComeFromTheAuthority) {
  TlsOptions tls = test_tls_options();
  tls.client_certificate = ClientCertificate::required;
  const ScriptedServer server(answering_script(), with(tls));
  const TestCertificates& files = test_certificates();
  EXPECT_NE(ask(server, {files.authority}), CURLE_OK);
  EXPECT_NE(ask(server, {files.authority, files.unknown_client}), CURLE_OK);
  EXPECT_TRUE(server.requests().empty());
  EXPECT_EQ(ask(server, {files.authority, files.client}), CURLE_OK);
}

TEST(TestCertificates, AnAskedForClientCertificateMayBeMissing) {
  TlsOptions tls = test_tls_options();
  tls.client_certificate = ClientCertificate::asked_for;
  const ScriptedServer server(answering_script(), with(tls));
  EXPECT_EQ(ask(server, {test_certificates().authority}), CURLE_OK);
  EXPECT_EQ(ask(server, {test_certificates().authority, test_certificates().client}), CURLE_OK);
}

TEST(TestCertificates, AServerMayCloseMidwayThroughTheHandshake) {
  TlsOptions tls = test_tls_options();
  tls.handshake = Handshake::closed_midway;
  const ScriptedServer server(answering_script(), with(tls));
  EXPECT_NE(ask(server, {test_certificates().authority}), CURLE_OK);
  ASSERT_TRUE(server.wait_for_ended_connections(1));
  EXPECT_EQ(server.connection(0).ending, Ending::refused);
}

TEST(TestCertificates, AServerMayHangMidwayThroughTheHandshake) {
  TlsOptions tls = test_tls_options();
  tls.handshake = Handshake::hung_midway;
  const ScriptedServer server(answering_script(), with(tls));
  const Descriptor socket = connect_to(server.address(), server.port());
  ASSERT_TRUE(server.wait_for_connections(1));
  EXPECT_FALSE(server.wait_for_ended_connections(1, std::chrono::milliseconds(1)));
}

TEST(TestCertificates, ADroppedTlsConnectionLooksTruncatedAndAClosedOneDoesNot) {
  const ScriptedServer dropping({script::Drop{}}, with(test_tls_options()));
  EXPECT_EQ(first_read_error(dropping), SSL_ERROR_SSL);
  const ScriptedServer closing({script::Close{}}, with(test_tls_options()));
  EXPECT_EQ(first_read_error(closing), SSL_ERROR_ZERO_RETURN);
}

}  // namespace
