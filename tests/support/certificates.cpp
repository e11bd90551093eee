#include "support/certificates.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace {

struct Free {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(X509* certificate) const { X509_free(certificate); }
  void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
  void operator()(std::FILE* file) const { std::fclose(file); }
};
template <class T>
using Owned = std::unique_ptr<T, Free>;

void require(bool good, const std::string& what) {
  if (!good) throw std::runtime_error("cannot make a certificate: " + what);
}

// A folder that lives as long as the process that made it; a fork leaves it alone.
class TemporaryFolder {
 public:
  TemporaryFolder() : owner_(::getpid()) {
    std::string name = (std::filesystem::temp_directory_path() / "zucim-test-XXXXXX").string();
    require(::mkdtemp(name.data()) != nullptr, name);
    path_ = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    if (::getpid() == owner_) std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  pid_t owner_;
  std::filesystem::path path_;
};

const TemporaryFolder& folder() {
  static const TemporaryFolder made;
  return made;
}

// A key with the certificate that belongs to it.
struct Identity {
  Owned<EVP_PKEY> key;
  Owned<X509> certificate;
};

// What a certificate says.
struct Content {
  std::string common_name;
  std::string constraints;
  std::string names = {};
  // Seconds from now.
  long valid_from = -86400;
  long valid_until = 86400;
};

void add_extension(X509* certificate, X509* issuer, int kind, const std::string& value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  const Owned<X509_EXTENSION> extension(
      X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str()));
  require(extension != nullptr && X509_add_ext(certificate, extension.get(), -1) == 1, value);
}

long next_serial_number() {
  static std::atomic<long> last{0};
  return ++last;
}

void name_subject(X509* certificate, const std::string& common_name) {
  X509_NAME* const subject = X509_get_subject_name(certificate);
  const auto* text = reinterpret_cast<const unsigned char*>(common_name.c_str());
  require(X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8, text, -1, -1, 0) == 1,
          common_name);
}

// Makes an identity that `issuer` signs, or that signs itself when there is none.
Identity make_identity(const Content& content, const Identity* issuer) {
  Identity made{Owned<EVP_PKEY>(EVP_EC_gen("P-256")), Owned<X509>(X509_new())};
  require(made.key != nullptr && made.certificate != nullptr, content.common_name);
  X509* const certificate = made.certificate.get();
  X509_set_version(certificate, X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate), next_serial_number());
  X509_gmtime_adj(X509_getm_notBefore(certificate), content.valid_from);
  X509_gmtime_adj(X509_getm_notAfter(certificate), content.valid_until);
  X509_set_pubkey(certificate, made.key.get());
  name_subject(certificate, content.common_name);
  const Identity& signer = issuer != nullptr ? *issuer : made;
  X509_set_issuer_name(certificate, X509_get_subject_name(signer.certificate.get()));
  add_extension(certificate, signer.certificate.get(), NID_basic_constraints, content.constraints);
  add_extension(certificate, signer.certificate.get(), NID_subject_key_identifier, "hash");
  if (!content.names.empty())
    add_extension(certificate, signer.certificate.get(), NID_subject_alt_name, content.names);
  require(X509_sign(certificate, signer.key.get(), EVP_sha256()) > 0, content.common_name);
  return made;
}

CertificateFiles write_files(const Identity& identity, const std::string& stem) {
  CertificateFiles files{folder().file(stem + ".pem"), folder().file(stem + ".key.pem")};
  const Owned<std::FILE> certificate(std::fopen(files.certificate.c_str(), "we"));
  require(certificate && PEM_write_X509(certificate.get(), identity.certificate.get()) == 1, stem);
  const Owned<std::FILE> key(std::fopen(files.key.c_str(), "we"));
  require(key && PEM_write_PrivateKey(key.get(), identity.key.get(), nullptr, nullptr, 0, nullptr,
                                      nullptr) == 1,
          stem);
  return files;
}

Identity make_authority(const std::string& common_name) {
  return make_identity({.common_name = common_name, .constraints = "critical,CA:TRUE"}, nullptr);
}

const Identity& authority() {
  static const Identity made = make_authority("Test authority");
  return made;
}

std::string loopback_names() {
  std::string names = "DNS:localhost";
  for (int last = 1; last <= 20; ++last) names += ",IP:127.0.0." + std::to_string(last);
  return names;
}

TestCertificates make_all() {
  const Content server{"Test server", "CA:FALSE", loopback_names()};
  const Content expired{"Expired server", "CA:FALSE", loopback_names(), -172800, -86400};
  const Content client{"Test client", "CA:FALSE"};
  return TestCertificates{
      .authority = write_files(authority(), "authority").certificate,
      .other_authority = write_files(make_authority("Other authority"), "other").certificate,
      .server = write_files(make_identity(server, &authority()), "server"),
      .expired_server = write_files(make_identity(expired, &authority()), "expired"),
      .client = write_files(make_identity(client, &authority()), "client"),
      .unknown_client = write_files(make_identity(client, nullptr), "unknown-client"),
  };
}

}  // namespace

const TestCertificates& test_certificates() {
  static const TestCertificates made = make_all();
  return made;
}

CertificateFiles make_server_certificate(const std::string& file_stem,
                                         const std::vector<std::string>& names) {
  Content content{file_stem, "CA:FALSE"};
  for (const std::string& name : names) content.names += (content.names.empty() ? "" : ",") + name;
  return write_files(make_identity(content, &authority()), file_stem);
}

TlsOptions test_tls_options() {
  const CertificateFiles& server = test_certificates().server;
  return TlsOptions{server.certificate, server.key, test_certificates().authority};
}
