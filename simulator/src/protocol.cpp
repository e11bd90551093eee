#include "protocol.h"

#include <cctype>
#include <charconv>
#include <cstring>
#include <utility>

#include "names.h"
#include "xml_reader.h"
#include "xml_writer.h"

namespace simulator {

namespace {

constexpr int bad_request = 400;
constexpr int not_implemented = 501;

[[noreturn]] void not_valid(const std::string& detail) {
  throw ProtocolError(bad_request, "request-not-valid", detail);
}

pugi::xml_node required_child(const pugi::xml_node& parent, const char* name) {
  const pugi::xml_node child = parent.child(name);
  if (!child) not_valid(std::string(parent.name()) + " has no " + name);
  return child;
}

// All 1.x (or 2.x) versions are alike to this server; another number before the point is not.
void check_version(const pugi::xml_node& node, const char* attribute, std::string_view major,
                   const char* cim_error) {
  const std::string version = node.attribute(attribute).value();
  if (version.empty()) not_valid(std::string(node.name()) + " has no " + attribute);
  if (!std::string_view(version).starts_with(major)) {
    throw ProtocolError(not_implemented, cim_error, std::string(attribute) + ' ' + version);
  }
}

void parse_document(pugi::xml_document& document, const std::string& body) {
  const auto result = document.load_buffer(body.data(), body.size(), parse_options);
  if (result) return;
  throw ProtocolError(
      bad_request, "request-not-well-formed",
      std::string(result.description()) + " at byte " + std::to_string(result.offset));
}

pugi::xml_node find_call(const pugi::xml_node& message) {
  if (message.child("MULTIREQ")) {
    throw ProtocolError(not_implemented, "multiple-requests-unsupported", "MULTIREQ");
  }
  const pugi::xml_node call = first_element(required_child(message, "SIMPLEREQ"));
  if (std::strcmp(call.name(), "IMETHODCALL") != 0 && std::strcmp(call.name(), "METHODCALL") != 0) {
    not_valid("SIMPLEREQ holds no method call");
  }
  return call;
}

// The namespace and class that an extrinsic call addresses.
void read_method_target(RequestMessage& message) {
  if (const auto path = message.call.child("LOCALINSTANCEPATH")) {
    message.name_space = read_namespace_path(required_child(path, "LOCALNAMESPACEPATH"));
    message.class_name = required_attribute(required_child(path, "INSTANCENAME"), "CLASSNAME");
    return;
  }
  const auto path = required_child(message.call, "LOCALCLASSPATH");
  message.name_space = read_namespace_path(required_child(path, "LOCALNAMESPACEPATH"));
  message.class_name = required_attribute(required_child(path, "CLASSNAME"), "NAME");
}

void read_call(RequestMessage& message) {
  message.intrinsic = std::strcmp(message.call.name(), "IMETHODCALL") == 0;
  message.method = required_attribute(message.call, "NAME");
  if (message.intrinsic) {
    message.name_space = read_namespace_path(required_child(message.call, "LOCALNAMESPACEPATH"));
  } else {
    read_method_target(message);
  }
}

void read_envelope(RequestMessage& message) {
  const pugi::xml_node cim = required_child(message.document, "CIM");
  check_version(cim, "CIMVERSION", "2.", "unsupported-cim-version");
  check_version(cim, "DTDVERSION", "2.", "unsupported-dtd-version");
  const pugi::xml_node node = required_child(cim, "MESSAGE");
  message.id = required_attribute(node, "ID");
  check_version(node, "PROTOCOLVERSION", "1.", "unsupported-protocol-version");
  message.call = find_call(node);
}

void mismatch(const std::string& detail) {
  throw ProtocolError(bad_request, "header-mismatch", detail);
}

// An extrinsic call's object goes on after the namespace (":Class.key=..."); the namespace is what
// is compared.
void check_headers(const RequestMessage& message, const CimHeaders& headers) {
  if (percent_decoded(headers.method) != message.method) {
    mismatch("CIMMethod " + headers.method + " where the body calls " + message.method);
  }
  const std::string object = percent_decoded(headers.object);
  const std::string name_space = object.substr(0, object.find(':'));
  if (!same_name(name_space, message.name_space)) {
    mismatch("CIMObject " + headers.object + " where the body addresses " + message.name_space);
  }
}

const char* response_element(const RequestMessage& message) {
  return message.intrinsic ? "IMETHODRESPONSE" : "METHODRESPONSE";
}

bool stands_in_header(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || std::strchr("-_.~ ,:()", c) != nullptr;
}

}  // namespace

void read_request(RequestMessage& message, const std::string& body, const CimHeaders& headers) {
  if (!same_name(headers.operation, "MethodCall")) {
    throw ProtocolError(bad_request, "unsupported-operation",
                        "CIMOperation is not MethodCall but \"" + headers.operation + '"');
  }
  parse_document(message.document, body);
  try {
    read_envelope(message);
    read_call(message);
  } catch (const FormatError& error) {
    not_valid(error.what());
  }
  check_headers(message, headers);
}

std::string response_start(const RequestMessage& message) {
  std::string out =
      "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
      "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
      "<MESSAGE ID=\"";
  append_escaped(out, message.id);
  out += "\" PROTOCOLVERSION=\"1.0\">\n<SIMPLERSP>\n<";
  out += response_element(message);
  out += " NAME=\"";
  append_escaped(out, message.method);
  out += "\">\n";
  return out;
}

std::string response_end(const RequestMessage& message) {
  return "</" + std::string(response_element(message)) + ">\n</SIMPLERSP>\n</MESSAGE>\n</CIM>\n";
}

std::string error_element(const CimError& error) {
  std::string out =
      "<ERROR CODE=\"" + std::to_string(static_cast<int>(error.status())) + "\" DESCRIPTION=\"";
  append_escaped(out, error.what());
  out += "\"/>\n";
  return out;
}

std::string percent_decoded(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    unsigned code = 0;
    const char* digits = text.data() + 1;
    if (text.size() >= 3 && text.front() == '%' &&
        std::from_chars(digits, digits + 2, code, 16).ptr == digits + 2) {
      out += static_cast<char>(code);
      text.remove_prefix(3);
    } else {
      out += text.front();
      text.remove_prefix(1);
    }
  }
  return out;
}

std::string percent_encoded(std::string_view text) {
  constexpr char hex[] = "0123456789ABCDEF";
  std::string out;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c != '\0' && stands_in_header(c)) {
      out += c;
    } else {
      out += {'%', hex[byte >> 4U], hex[byte & 15U]};
    }
  }
  return out;
}

}  // namespace simulator
