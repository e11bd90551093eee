#pragma once

#include <string>

// Requests as CIM servers send them, and the answers to them.

inline std::string export_request_body(const std::string& message_id) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
         "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
         "<MESSAGE ID=\"" +
         message_id +
         "\" PROTOCOLVERSION=\"1.0\">\n"
         "<SIMPLEEXPREQ>\n"
         "<EXPMETHODCALL NAME=\"ExportIndication\">\n"
         "<EXPPARAMVALUE NAME=\"NewIndication\">\n"
         "<INSTANCE CLASSNAME=\"CIM_AlertIndication\">\n"
         "</INSTANCE>\n"
         "</EXPPARAMVALUE>\n"
         "</EXPMETHODCALL>\n"
         "</SIMPLEEXPREQ>\n"
         "</MESSAGE>\n"
         "</CIM>\n";
}

inline std::string export_request_head(const std::string& length) {
  return "POST /test HTTP/1.1\r\n"
         "Host: 127.0.0.1\r\n"
         "Content-Type: application/xml; charset=\"utf-8\"\r\n"
         "Content-Length: " +
         length +
         "\r\n"
         "CIMExport: MethodRequest\r\n"
         "CIMExportMethod: ExportIndication\r\n"
         "\r\n";
}

// Head and body that fit together.
inline std::string export_request_with(const std::string& body) {
  return export_request_head(std::to_string(body.size())) + body;
}

inline std::string export_request(const std::string& message_id) {
  return export_request_with(export_request_body(message_id));
}

// `length` has nine digits.
inline std::string export_answer(const std::string& message_id, const std::string& length) {
  return "HTTP/1.1 200 OK\n"
         "Content-Type: application/xml; charset=\"utf-8\"\n"
         "content-length: " +
         length +
         "\n"
         "CIMExport: MethodResponse\n"
         "\n"
         "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
         "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
         "<MESSAGE ID=\"" +
         message_id +
         "\" PROTOCOLVERSION=\"1.0\">\n"
         "<SIMPLEEXPRSP>\n"
         "<EXPMETHODRESPONSE NAME=\"ExportIndication\">\n"
         "</EXPMETHODRESPONSE>\n"
         "</SIMPLEEXPRSP>\n"
         "</MESSAGE>\n"
         "</CIM>\n";
}
