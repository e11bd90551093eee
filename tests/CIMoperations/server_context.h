#pragma once

#include <string>

#include "zuCIM/container.h"

// A context that may talk to a server for tests, with the class CIM_A of root/cimv2 chosen.
class ServerContext : public zuCIM::CIMcontainer {
 public:
  ServerContext(const std::string& server_address, const std::string& server_port) {
    const zuCIM::_THR_SERVER_ record = {
        server_address.c_str(), "user", "secret", server_port.c_str(), "", "", ""};
    setHostUserPasswd(&record);
    skipIpCheck = true;
    ESXi_Occupied(true);
    setCurrentClass("CIM_A", "");
  }
};

// The body of an HTTP message.
inline std::string body_of(const std::string& message) {
  const std::size_t head = message.find("\r\n\r\n");
  return head == std::string::npos ? "" : message.substr(head + 4);
}

// An answer to an intrinsic method that carries `content`.
inline std::string method_answer(const std::string& content) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
         "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
         "<MESSAGE ID=\"1001\" PROTOCOLVERSION=\"1.0\">\n"
         "<SIMPLERSP>\n"
         "<IMETHODRESPONSE NAME=\"Any\">\n" +
         content +
         "</IMETHODRESPONSE>\n"
         "</SIMPLERSP>\n"
         "</MESSAGE>\n"
         "</CIM>\n";
}

// An answer with a return value.
inline std::string return_value(const std::string& content) {
  return method_answer("<IRETURNVALUE>\n" + content + "</IRETURNVALUE>\n");
}
