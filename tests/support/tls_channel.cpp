#include "support/tls_channel.h"

#include <openssl/ssl.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace {

struct FreeSsl {
  void operator()(SSL* ssl) const { SSL_free(ssl); }
  void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
};
using SslPointer = std::unique_ptr<SSL, FreeSsl>;
using ContextPointer = std::unique_ptr<SSL_CTX, FreeSsl>;

// What to wait for before an OpenSSL call that returned `result` is tried again; 0 when it failed.
short awaited_events(SSL* ssl, int result) {
  switch (SSL_get_error(ssl, result)) {
    case SSL_ERROR_WANT_READ:
      return POLLIN;
    case SSL_ERROR_WANT_WRITE:
      return POLLOUT;
    default:
      return 0;
  }
}

class TlsChannel : public Channel {
 public:
  TlsChannel(Descriptor socket, SslPointer ssl, const WakeUp& stop)
      : socket_(std::move(socket)), ssl_(std::move(ssl)), stop_(stop) {}

  Transfer read(std::string& piece) override {
    std::array<char, 16384> buffer;
    int size = 0;
    const Transfer result = repeat([&] {
      return size = SSL_read(ssl_.get(), buffer.data(), static_cast<int>(buffer.size()));
    });
    piece.assign(buffer.data(), static_cast<std::size_t>(std::max(size, 0)));
    return result;
  }

  Transfer write(std::string_view bytes) override {
    while (!bytes.empty()) {
      const int size = static_cast<int>(std::min<std::size_t>(bytes.size(), 16384));
      const Transfer result = repeat([&] { return SSL_write(ssl_.get(), bytes.data(), size); });
      if (result != Transfer::done) return result;
      bytes.remove_prefix(static_cast<std::size_t>(size));
    }
    return Transfer::done;
  }

  void end_sending() override { SSL_shutdown(ssl_.get()); }
  void close() override {
    SSL_shutdown(ssl_.get());
    socket_.close();
  }
  void drop() override { socket_.close(); }
  void reset() override { reset_socket(socket_); }

 private:
  // Calls `operation` until it succeeds, waiting for the socket in between.
  template <class Operation>
  Transfer repeat(const Operation& operation) {
    for (;;) {
      const int result = operation();
      if (result > 0) return Transfer::done;
      const short events = awaited_events(ssl_.get(), result);
      if (events == 0) return Transfer::ended;
      const Transfer waited = wait_for_descriptor(socket_.number(), events, stop_);
      if (waited != Transfer::done) return waited;
    }
  }

  Descriptor socket_;
  SslPointer ssl_;
  const WakeUp& stop_;
};

int verify_mode(ClientCertificate wanted) {
  switch (wanted) {
    case ClientCertificate::asked_for:
      return SSL_VERIFY_PEER;
    case ClientCertificate::required:
      return SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT;
    default:
      return SSL_VERIFY_NONE;
  }
}

// Chosen as the certificate callback, this stops the handshake between the client's greeting and
// the server's answer, however fast either of them is.
int suspend_handshake(SSL*, void*) {
  return -1;
}

bool is_suspended(const SSL* ssl, int result) {
  return SSL_get_error(ssl, result) == SSL_ERROR_WANT_X509_LOOKUP;
}

// Lets the peer read what OpenSSL told it: a socket that is closed with bytes of the peer unread is
// reset, and a reset may overtake the alert.
void end_and_wait(Descriptor socket, const WakeUp& stop) {
  const std::unique_ptr<Channel> plain = make_plain_channel(std::move(socket), stop);
  plain->end_sending();
  std::string ignored;
  while (plain->read(ignored) == Transfer::done) {
  }
}

// Systems switch versions before 1.2, and the weak signatures that these need, off by default.
void set_newest_version(SSL_CTX* context, int version) {
  SSL_CTX_set_max_proto_version(context, version);
  if (version == 0 || version >= TLS1_2_VERSION) return;
  SSL_CTX_set_min_proto_version(context, 0);
  SSL_CTX_set_security_level(context, 0);
}

ContextPointer make_context(const TlsOptions& options) {
  ContextPointer context(SSL_CTX_new(TLS_server_method()));
  SSL_CTX* const raw = context.get();
  if (SSL_CTX_use_certificate_chain_file(raw, options.certificate_file.c_str()) != 1 ||
      SSL_CTX_use_PrivateKey_file(raw, options.key_file.c_str(), SSL_FILETYPE_PEM) != 1)
    throw std::runtime_error("no usable certificate in " + options.certificate_file);
  const std::string& authority = options.client_authority_file;
  if (!authority.empty() && SSL_CTX_load_verify_locations(raw, authority.c_str(), nullptr) != 1)
    throw std::runtime_error("no usable certificate in " + authority);
  if (options.handshake != Handshake::completed)
    SSL_CTX_set_cert_cb(raw, suspend_handshake, nullptr);
  set_newest_version(raw, options.newest_version);
  SSL_CTX_set_verify(raw, verify_mode(options.client_certificate), nullptr);
  return context;
}

}  // namespace

struct TlsContext::Settings {
  ContextPointer context;
  Handshake handshake;
};

TlsContext::TlsContext(const TlsOptions& options)
    : settings_(new Settings{make_context(options), options.handshake}) {}

TlsContext::~TlsContext() = default;

std::unique_ptr<Channel> TlsContext::accept(Descriptor socket, const WakeUp& stop) const {
  SslPointer ssl(SSL_new(settings_->context.get()));
  SSL_set_fd(ssl.get(), socket.number());
  int result = 0;
  while ((result = SSL_accept(ssl.get())) != 1) {
    const short events = awaited_events(ssl.get(), result);
    if (is_suspended(ssl.get(), result) && settings_->handshake == Handshake::hung_midway)
      wait_for_descriptor(socket.number(), POLLRDHUP, stop);
    if (events == 0) {
      end_and_wait(std::move(socket), stop);
      return nullptr;
    }
    if (wait_for_descriptor(socket.number(), events, stop) == Transfer::stopped) return nullptr;
  }
  return std::make_unique<TlsChannel>(std::move(socket), std::move(ssl), stop);
}
