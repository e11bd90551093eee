#pragma once

#include <string>
#include <utility>
#include <vector>

#include "dispatcher.h"
#include "protocol.h"

namespace simulator {

// A request as it comes out of HTTP.
struct HttpRequest {
  std::string method;
  std::string path;
  std::string authorization;
  CimHeaders cim;
  Peer peer;
  const std::string& body;
};

struct HttpAnswer {
  int status = 200;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
};

// Who may come in.
struct Credentials {
  std::string user;
  std::string password;
  bool anonymous = false;
};

// The resource /cimom: decides over method, path and credentials, then over the message.
class Endpoint {
 public:
  Endpoint(const Dispatcher& dispatcher, const Credentials& credentials);

  HttpAnswer answer(const HttpRequest& request) const;

 private:
  bool is_welcome(const std::string& authorization) const;
  HttpAnswer operate(const HttpRequest& request) const;

  const Dispatcher& dispatcher_;
  bool anonymous_;
  std::string expected_;  // the token of the Authorization header
};

}  // namespace simulator
