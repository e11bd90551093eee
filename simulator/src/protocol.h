#pragma once

#include <pugixml.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

#include "cim_error.h"

// CIM operations over HTTP: what a request message must look like and how answers are framed.
namespace simulator {

// A request that is answered on the level of HTTP, with a CIMError header.
class ProtocolError : public std::runtime_error {
 public:
  // `cim_error` is one of the standard's words, for example "request-not-well-formed".
  ProtocolError(int http_status, const std::string& cim_error, std::string detail)
      : std::runtime_error(cim_error), http_status_(http_status), detail_(std::move(detail)) {}

  int http_status() const { return http_status_; }
  const std::string& detail() const { return detail_; }

 private:
  int http_status_;
  std::string detail_;
};

// The headers that say what the body asks for, as they came.
struct CimHeaders {
  std::string operation;
  std::string method;
  std::string object;
};

// Where a request comes from: one port stands for one connection.
struct Peer {
  std::string address;
  int port = 0;
};

// One request message. The node points into the document, so the request is not copied.
struct RequestMessage {
  pugi::xml_document document;
  std::string id;
  bool intrinsic = true;
  std::string method;
  std::string name_space;
  std::string class_name;  // of an extrinsic call
  pugi::xml_node call;
  Peer peer;
};

// Reads a message into `message`. Throws ProtocolError where it is not a request this server can
// work on, or where it is not the one that the headers announce.
void read_request(RequestMessage& message, const std::string& body, const CimHeaders& headers);

// What stands before and after the content of the answer to a call.
std::string response_start(const RequestMessage& message);
std::string response_end(const RequestMessage& message);

// An ERROR element, to be framed.
std::string error_element(const CimError& error);

// Decodes %XX sequences; what is no such sequence stays.
std::string percent_decoded(std::string_view text);

// Encodes everything that may not stand in a header value as it is.
std::string percent_encoded(std::string_view text);

}  // namespace simulator
