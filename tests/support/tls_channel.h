#pragma once

#include <memory>
#include <string>

#include "support/channel.h"

// What a TLS server does about certificates of its clients.
enum class ClientCertificate { ignored, asked_for, required };

// How far a TLS server goes in its handshake.
enum class Handshake { completed, closed_midway, hung_midway };

// How a scripted server speaks TLS. All files are PEM.
struct TlsOptions {
  std::string certificate_file;
  std::string key_file;
  // The authority that client certificates must come from.
  std::string client_authority_file = {};
  ClientCertificate client_certificate = ClientCertificate::ignored;
  Handshake handshake = Handshake::completed;
  // The newest version it speaks, as OpenSSL numbers them; 0 for the newest there is.
  int newest_version = 0;
};

// Certificates and settings shared by the connections of one server.
class TlsContext {
 public:
  // Throws std::runtime_error when a file cannot be used.
  explicit TlsContext(const TlsOptions& options);
  ~TlsContext();
  TlsContext(const TlsContext&) = delete;
  TlsContext& operator=(const TlsContext&) = delete;

  // Makes the handshake on an accepted socket; null when it failed, was stopped midway as the
  // options ask, or the server stops.
  std::unique_ptr<Channel> accept(Descriptor socket, const WakeUp& stop) const;

 private:
  struct Settings;
  std::unique_ptr<Settings> settings_;
};
