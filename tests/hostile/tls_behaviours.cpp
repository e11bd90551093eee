#include <openssl/ssl.h>

#include "hostile/behaviour.h"
#include "support/certificates.h"
#include "support/http_answer.h"

// What a TLS server does, or one that should be one.

namespace {

using Tls = std::optional<TlsOptions>;
using Steps = script::Steps;

constexpr unsigned no_connection = 0x400;

void trust(WireClient& client) {
  client.caFile = test_certificates().authority;
  client.verifyPeer = 1;
}

void trust_with_name(WireClient& client) {
  trust(client);
  client.verifyHost = true;
}

void want_new_version(WireClient& client) {
  client.oldestTls = zuCIM::OldestTls::version_1_3;
}

Tls plainly() {
  return std::nullopt;
}

Tls as_usual() {
  return test_tls_options();
}

Tls shows(const CertificateFiles& files) {
  TlsOptions options = test_tls_options();
  options.certificate_file = files.certificate;
  options.key_file = files.key;
  return options;
}

Tls stops(Handshake handshake) {
  TlsOptions options = test_tls_options();
  options.handshake = handshake;
  return options;
}

// Speaks plainly: reads the greeting of the client and sends these bytes.
TlsBehaviour greets(const std::string& name, const std::vector<int>& statuses,
                    const std::string& bytes) {
  return {{{name, statuses},
           [bytes] {
             return Steps{script::ReadUntil{"\x16\x03"}, script::Send{bytes}, script::Close{}};
           }},
          plainly};
}

Steps good_answer() {
  return answer_with(http_answer(good_document));
}

TlsBehaviour has_certificate(const std::string& name, int status,
                             const std::function<CertificateFiles()>& files,
                             const std::function<void(WireClient&)>& prepare) {
  return {{{name, {status}}, good_answer, 0, "", prepare}, [files] { return shows(files()); }};
}

CertificateFiles of_another_name() {
  return make_server_certificate("hostile", {"DNS:another.example"});
}

}  // namespace

std::vector<TlsBehaviour> tls_behaviours() {
  const std::string answer = http_answer(good_document);
  const std::string open_end = http_answer_until_close(good_document);
  const auto expired = [] { return test_certificates().expired_server; };
  const auto self_made = [] { return test_certificates().unknown_client; };
  return {
      greets("plain HTTP where TLS is expected", {35}, answer),
      greets("a fatal alert", {35}, std::string("\x15\x03\x03\x00\x02\x02\x28", 7)),
      greets("a warning alert without end of it", {35, 56},
             std::string("\x15\x03\x03\x00\x02\x01\x5A", 7)),
      greets("an alert that is cut short", {35}, std::string("\x15\x03\x03\x00\x02\x02", 6)),
      greets("a record of another kind", {35}, std::string("\x63\x03\x03\x00\x01\x00", 6)),
      greets("a record beyond the largest size", {35},
             std::string("\x16\x03\x03\xFF\xFF", 5) + std::string(65535, '\x01')),
      greets("a handshake message of 16 MiB", {35},
             std::string("\x16\x03\x03\x40\x00\x02\xFF\xFF\xFF", 9) + std::string(16380, '\x01')),
      greets("an empty record", {35}, std::string("\x16\x03\x03\x00\x00", 5)),
      greets("garbage where TLS is expected", {35}, std::string(100000, '\xA5')),
      greets("zeros where TLS is expected", {35}, std::string(100000, '\0')),
      {{{"a handshake that stops and closes", {35, 56}}, good_answer},
       [] { return stops(Handshake::closed_midway); }},
      {{{"a handshake that stops and hangs", {42}, EndedBy::clock}, good_answer, no_connection},
       [] { return stops(Handshake::hung_midway); }},
      has_certificate("a certificate that is over", 60, expired, trust),
      has_certificate("a certificate that is over, to a client that trusts anybody", 0, expired,
                      [](WireClient&) {}),
      has_certificate("a certificate that it made itself", 60, self_made, trust),
      has_certificate("a certificate of another name, to a client that compares", 60,
                      of_another_name, trust_with_name),
      has_certificate("a certificate of another name", 0, of_another_name, trust),
      {{{"an old version, to a client that refuses it", {35}},
        good_answer,
        0,
        "",
        want_new_version},
       [] {
         TlsOptions options = test_tls_options();
         options.newest_version = TLS1_2_VERSION;
         return Tls(options);
       }},
      {{{"its end without a notice, behind a length", {0}},
        [answer] {
          return Steps{script::ReadRequest{}, script::Send{answer}, script::Drop{}};
        }},
       as_usual},
      {{{"its end without a notice, as the end of the body", {0, 56}},
        [open_end] {
          return Steps{script::ReadRequest{}, script::Send{open_end}, script::Drop{}};
        }},
       as_usual},
      {{{"a body over TLS without end", {23}, EndedBy::limit},
        [] {
          return Steps{script::ReadRequest{}, script::Send{"HTTP/1.1 200 OK\r\n\r\n"},
                       script::SendRepeatedly{std::string(65536, ' '), 0}};
        },
        0,
        "sendRequest_recvResponse: the answer is too large",
        [](WireClient& client) { client.largestBody = 1024 * 1024; }},
       as_usual},
      {{{"nothing after the handshake", {42}, EndedBy::clock},
        [] { return Steps{script::WaitForPeerClose{}}; },
        no_connection},
       as_usual},
      {{{"a closed connection after the handshake", {52, 55, 56}, EndedBy::peer},
        [] {
          return Steps{script::ReadRequest{}, script::Drop{}};
        },
        no_connection},
       as_usual},
  };
}
