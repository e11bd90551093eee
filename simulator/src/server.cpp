#include "server.h"

#include <httplib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "connection_threads.h"

namespace simulator {

namespace {

constexpr std::size_t largest_request = std::size_t{16} << 20U;
constexpr std::time_t seconds_kept_alive = 30;
constexpr std::size_t requests_kept_alive = 1'000'000;
constexpr std::time_t seconds_to_read = 30;
constexpr std::time_t seconds_to_write = 120;

std::unique_ptr<httplib::Server> make_http(const Options& options) {
  if (!options.https) return std::make_unique<httplib::Server>();
  auto https = std::make_unique<httplib::SSLServer>(
      options.certificate.c_str(), options.key.c_str(),
      options.client_ca.empty() ? nullptr : options.client_ca.c_str());
  if (!https->is_valid()) {
    throw std::runtime_error("cannot use " + options.certificate + " with " + options.key);
  }
  return https;
}

HttpRequest translated(const httplib::Request& request) {
  return {request.method,
          request.path,
          request.get_header_value("Authorization"),
          {request.get_header_value("CIMOperation"), request.get_header_value("CIMMethod"),
           request.get_header_value("CIMObject")},
          {request.remote_addr, request.remote_port},
          request.body};
}

void put(HttpAnswer answer, httplib::Response& response) {
  response.status = answer.status;
  for (const auto& [name, value] : answer.headers) response.set_header(name, value);
  response.body = std::move(answer.body);
}

void log(const httplib::Request& request, const httplib::Response& response) {
  std::fprintf(stderr, "%s:%d %s %s CIMMethod=%s CIMObject=%s %d %zu bytes %s\n",
               request.remote_addr.c_str(), request.remote_port, request.method.c_str(),
               request.path.c_str(), request.get_header_value("CIMMethod").c_str(),
               request.get_header_value("CIMObject").c_str(), response.status, response.body.size(),
               response.get_header_value("CIMError").c_str());
}

// Methods that the HTTP library does not route (M-POST, TRACE) end as bad requests there.
void name_unknown_method(const httplib::Request& request, httplib::Response& response) {
  const bool is_unknown = !request.method.empty() && request.method != "POST";
  if (response.status == 400 && is_unknown) response.status = 501;
}

// Wakes every thread that waits for the next request of a connection, so that ending takes no
// longer than the requests at work.
void shut_connections() {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
    const int descriptor = std::atoi(entry.path().filename().c_str());
    if (descriptor > STDERR_FILENO) ::shutdown(descriptor, SHUT_RD);
  }
}

}  // namespace

Server::Server(const Endpoint& endpoint, const Options& options)
    : endpoint_(endpoint), options_(options), http_(make_http(options)) {
  configure();
}

Server::~Server() = default;

int Server::bind() {
  int port = options_.port;
  const bool bound = port != 0 ? http_->bind_to_port(options_.address, port)
                               : (port = http_->bind_to_any_port(options_.address)) > 0;
  if (!bound) {
    throw std::runtime_error("cannot listen on " + options_.address + ":" +
                             std::to_string(options_.port));
  }
  // The library asks for a queue of five connections, too few for a crowd of clients.
  ::listen(listening_socket_, SOMAXCONN);
  return port;
}

bool Server::serve() {
  const bool stopped = http_->listen_after_bind();
  ended_ = true;
  return stopped;
}

void Server::stop() {
  while (!http_->is_running() && !ended_) std::this_thread::yield();
  http_->stop();
  shut_connections();
}

void Server::configure() {
  const auto handler = [this](const httplib::Request& request, httplib::Response& response) {
    put(endpoint_.answer(translated(request)), response);
  };
  http_->Get(".*", handler).Post(".*", handler).Put(".*", handler).Patch(".*", handler);
  http_->Delete(".*", handler).Options(".*", handler);
  http_->set_error_handler(httplib::Server::Handler(name_unknown_method));
  if (options_.verbose) http_->set_logger(log);
  http_->new_task_queue = [] { return new ConnectionThreads; };
  http_->set_socket_options([this](int descriptor) {
    const int on = 1;
    ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    listening_socket_ = descriptor;
  });
  http_->set_tcp_nodelay(true);
  http_->set_payload_max_length(largest_request);
  http_->set_keep_alive_timeout(seconds_kept_alive).set_keep_alive_max_count(requests_kept_alive);
  http_->set_read_timeout(seconds_to_read).set_write_timeout(seconds_to_write);
}

}  // namespace simulator
