#pragma once

#include <httplib.h>

#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

// A plain client for the tests of the simulator: it writes requests as text, so that they can also
// be wrong, and looks at answers with an XML library.

// An answer, taken apart.
struct CimAnswer {
  int http_status = 0;
  httplib::Headers headers;
  std::string body;
  pugi::xml_document document;

  // The value of a header; empty if there is none.
  std::string header(const std::string& name) const;

  // The IMETHODRESPONSE or METHODRESPONSE.
  pugi::xml_node response() const;

  // The content of IRETURNVALUE.
  pugi::xml_node returned() const { return response().child("IRETURNVALUE"); }

  // The CODE of an ERROR element; 0 if there is none.
  int error_code() const;
  std::string error_text() const;

  // The CLASSNAMEs of IRETURNVALUE.
  std::vector<std::string> class_names() const;
};

// What to post, and with which headers.
struct CimRequest {
  std::string method = "EnumerateInstanceNames";
  std::string name_space = "root/cimv2";
  std::string parameters;  // IPARAMVALUE elements

  // The message as an orderly client writes it.
  std::string message() const;
};

std::string boolean_parameter(const std::string& name, const std::string& value);
std::string class_parameter(const std::string& class_name);
std::string property_list(const std::vector<std::string>& names);

// An INSTANCENAME in an InstanceName parameter; keys of texts only.
std::string instance_parameter(const std::string& class_name,
                               const std::vector<std::pair<std::string, std::string>>& keys);

// The PROPERTY, PROPERTY.ARRAY or PROPERTY.REFERENCE of that name below an INSTANCE or CLASS.
pugi::xml_node find_property(const pugi::xml_node& object, std::string_view name);

// The names of all properties below an INSTANCE or CLASS, in their order.
std::vector<std::string> property_names(const pugi::xml_node& object);

// A client for one simulator, by the user "root" with the password "secret".
class CimClient {
 public:
  // `url` as SimulatorProcess::url() gives it. Certificates are not checked.
  explicit CimClient(const std::string& url);

  // Calls an intrinsic operation.
  CimAnswer call(const std::string& method, const std::string& parameters,
                 const std::string& name_space = "root/cimv2");

  // Posts any body with the headers that go with `request`.
  CimAnswer post(const std::string& body, const CimRequest& request);

  // Posts with exactly these headers.
  CimAnswer post(const std::string& path, const httplib::Headers& headers, const std::string& body);

  // The HTTP client, for everything else.
  httplib::Client& http() { return http_; }

 private:
  httplib::Client http_;
};
