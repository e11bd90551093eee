#pragma once

#include <string>

#include "support/certificates.h"
#include "support/http_answer.h"
#include "wire/wire_client.h"

// Port 5989 alone means HTTPS, so every test here takes an address of its own.
struct TlsServer : ScriptedServer {
  TlsServer(const char* address, const TlsOptions& options)
      : ScriptedServer(always_answer(http_answer(good_document)),
                       {.address = address, .port = 5989, .tls = options}) {}
};

struct TlsClient : WireClient {
  explicit TlsClient(const ScriptedServer& server) : WireClient(server) { SetExtraTimeOut(0); }
  void trust(const std::string& authority) {
    caFile = authority;
    verifyPeer = 1;
  }
  void identify(const CertificateFiles& files) {
    sslCert = files.certificate;
    sslKey = files.key;
  }
};

// A server that shows this certificate.
inline TlsOptions options_with(const CertificateFiles& files) {
  TlsOptions options = test_tls_options();
  options.certificate_file = files.certificate;
  options.key_file = files.key;
  return options;
}

inline TlsOptions options_that_require_a_client() {
  TlsOptions options = test_tls_options();
  options.client_authority_file = test_certificates().authority;
  options.client_certificate = ClientCertificate::required;
  return options;
}
