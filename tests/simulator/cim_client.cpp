#include "cim_client.h"

#include <cstring>
#include <stdexcept>

namespace {

std::string namespace_path(const std::string& name_space) {
  std::string out = "<LOCALNAMESPACEPATH>";
  std::size_t start = 0;
  while (start <= name_space.size()) {
    const std::size_t slash = std::min(name_space.find('/', start), name_space.size());
    out += "<NAMESPACE NAME=\"" + name_space.substr(start, slash - start) + "\"/>";
    start = slash + 1;
  }
  return out + "</LOCALNAMESPACEPATH>";
}

bool is_property(const pugi::xml_node& node) {
  return std::strncmp(node.name(), "PROPERTY", 8) == 0;
}

}  // namespace

std::string CimAnswer::header(const std::string& name) const {
  const auto found = headers.find(name);
  return found == headers.end() ? std::string() : found->second;
}

pugi::xml_node CimAnswer::response() const {
  return document.child("CIM").child("MESSAGE").child("SIMPLERSP").first_child();
}

int CimAnswer::error_code() const {
  return response().child("ERROR").attribute("CODE").as_int();
}

std::string CimAnswer::error_text() const {
  return response().child("ERROR").attribute("DESCRIPTION").value();
}

std::vector<std::string> CimAnswer::class_names() const {
  std::vector<std::string> names;
  for (const auto& each : returned().children("CLASSNAME")) {
    names.emplace_back(each.attribute("NAME").value());
  }
  return names;
}

std::string CimRequest::message() const {
  return "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
         "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
         "<MESSAGE ID=\"4711\" PROTOCOLVERSION=\"1.0\">\n<SIMPLEREQ>\n<IMETHODCALL NAME=\"" +
         method + "\">\n" + namespace_path(name_space) + '\n' + parameters +
         "</IMETHODCALL>\n</SIMPLEREQ>\n</MESSAGE>\n</CIM>\n";
}

std::string boolean_parameter(const std::string& name, const std::string& value) {
  return "<IPARAMVALUE NAME=\"" + name + "\"><VALUE>" + value + "</VALUE></IPARAMVALUE>\n";
}

std::string class_parameter(const std::string& class_name) {
  return "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"" + class_name + "\"/></IPARAMVALUE>\n";
}

std::string property_list(const std::vector<std::string>& names) {
  std::string out = "<IPARAMVALUE NAME=\"PropertyList\"><VALUE.ARRAY>";
  for (const std::string& each : names) out += "<VALUE>" + each + "</VALUE>";
  return out + "</VALUE.ARRAY></IPARAMVALUE>\n";
}

std::string instance_parameter(const std::string& class_name,
                               const std::vector<std::pair<std::string, std::string>>& keys) {
  std::string out =
      "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME CLASSNAME=\"" + class_name + "\">";
  for (const auto& [name, value] : keys) {
    out += "<KEYBINDING NAME=\"" + name + "\"><KEYVALUE VALUETYPE=\"string\">" + value +
           "</KEYVALUE></KEYBINDING>";
  }
  return out + "</INSTANCENAME></IPARAMVALUE>\n";
}

pugi::xml_node find_property(const pugi::xml_node& object, std::string_view name) {
  return object.find_child([&](const pugi::xml_node& node) {
    return is_property(node) && node.attribute("NAME").value() == name;
  });
}

std::vector<std::string> property_names(const pugi::xml_node& object) {
  std::vector<std::string> names;
  for (const auto& each : object.children()) {
    if (is_property(each)) names.emplace_back(each.attribute("NAME").value());
  }
  return names;
}

CimClient::CimClient(const std::string& url) : http_(url) {
  http_.enable_server_certificate_verification(false);
  http_.set_read_timeout(60);
  http_.set_keep_alive(true);
  http_.set_tcp_nodelay(true);
}

CimAnswer CimClient::call(const std::string& method, const std::string& parameters,
                          const std::string& name_space) {
  const CimRequest request{method, name_space, parameters};
  return post(request.message(), request);
}

CimAnswer CimClient::post(const std::string& body, const CimRequest& request) {
  return post("/cimom",
              {{"Authorization", "Basic cm9vdDpzZWNyZXQ="},
               {"CIMOperation", "MethodCall"},
               {"CIMMethod", request.method},
               {"CIMObject", request.name_space}},
              body);
}

CimAnswer CimClient::post(const std::string& path, const httplib::Headers& headers,
                          const std::string& body) {
  const auto result = http_.Post(path, headers, body, "application/xml; charset=\"utf-8\"");
  if (!result) throw std::runtime_error("no answer: " + httplib::to_string(result.error()));
  CimAnswer answer{result->status, result->headers, result->body, {}};
  answer.document.load_string(answer.body.c_str(),
                              pugi::parse_default | pugi::parse_ws_pcdata_single);
  return answer;
}
