#pragma once

#include <string>
#include <vector>

#include "support/tls_channel.h"

// A certificate and its private key, as PEM files.
struct CertificateFiles {
  std::string certificate;
  std::string key;
};

// Throw-away certificates with elliptic-curve keys. They are made when they are first asked for, in
// a temporary folder that is removed when the program exits.
struct TestCertificates {
  // The authority that signed everything below but `other_authority`.
  std::string authority;
  // An authority that signed nothing.
  std::string other_authority;
  // For the addresses 127.0.0.1 to 127.0.0.20 and the name localhost.
  CertificateFiles server;
  // The same, but its time is over.
  CertificateFiles expired_server;
  // For TLS clients.
  CertificateFiles client;
  // A client certificate that signed itself.
  CertificateFiles unknown_client;
};

// The certificates of this program. Throws std::runtime_error when they cannot be made.
const TestCertificates& test_certificates();

// Makes a server certificate for `names`, written as OpenSSL writes them ("IP:127.0.0.7",
// "DNS:host.example"). `file_stem` names its files and must be used once.
CertificateFiles make_server_certificate(const std::string& file_stem,
                                         const std::vector<std::string>& names);

// A TLS server with the certificate for the loopback addresses.
TlsOptions test_tls_options();
