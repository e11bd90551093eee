#include "export_message.h"

#include <pugixml.hpp>
#include <string_view>

#include "../xml_reader.h"

namespace simulator {

std::string export_request(int message_id, const std::string& indication) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
         "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n<MESSAGE ID=\"" +
         std::to_string(message_id) +
         "\" PROTOCOLVERSION=\"1.0\">\n<SIMPLEEXPREQ>\n"
         "<EXPMETHODCALL NAME=\"ExportIndication\">\n<EXPPARAMVALUE NAME=\"NewIndication\">\n" +
         indication + "</EXPPARAMVALUE>\n</EXPMETHODCALL>\n</SIMPLEEXPREQ>\n</MESSAGE>\n</CIM>\n";
}

std::string fault_of_export_response(const std::string& body, int message_id) {
  pugi::xml_document document;
  if (!document.load_buffer(body.data(), body.size(), parse_options)) return "the answer is no XML";
  const pugi::xml_node message = document.child("CIM").child("MESSAGE");
  const pugi::xml_node response = message.child("SIMPLEEXPRSP").child("EXPMETHODRESPONSE");
  if (!response || std::string_view(response.attribute("NAME").value()) != "ExportIndication") {
    return "the answer is no export response";
  }
  if (message.attribute("ID").value() != std::to_string(message_id)) {
    return "the answer belongs to another message";
  }
  if (const pugi::xml_node error = response.child("ERROR")) {
    return std::string("the listener answers with error ") + error.attribute("CODE").value();
  }
  return {};
}

}  // namespace simulator
