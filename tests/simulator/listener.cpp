#include "listener.h"

namespace {

std::string piece_of(const std::string& text, const std::string& before, const std::string& after) {
  const std::size_t found = text.find(before);
  if (found == std::string::npos) return {};
  const std::size_t begin = found + before.size();
  const std::size_t end = text.find(after, begin);
  return end == std::string::npos ? std::string() : text.substr(begin, end - begin);
}

}  // namespace

std::string accepting_answer(const std::string& request) {
  const std::string body =
      "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
      "<MESSAGE ID=\"" +
      message_id_of(request) +
      "\" PROTOCOLVERSION=\"1.0\">\n<SIMPLEEXPRSP>\n<EXPMETHODRESPONSE "
      "NAME=\"ExportIndication\">\n</EXPMETHODRESPONSE>\n</SIMPLEEXPRSP>\n</MESSAGE>\n</CIM>\n";
  return "HTTP/1.1 200 OK\nContent-Type: application/xml; charset=\"utf-8\"\ncontent-length: "
         "000000" +
         std::to_string(body.size()) + "\nCIMExport: MethodResponse\n\n" + body;
}

script::Steps accepting() {
  return {script::ReadRequest{}, script::SendMadeFromRequest{accepting_answer}};
}

script::Steps answering(const std::string& bytes) {
  return {script::ReadRequest{}, script::Send{bytes}};
}

std::string url_of(const ScriptedServer& server, const std::string& path) {
  return "http://" + server.address() + ':' + server.port_text() + path;
}

std::string message_id_of(const std::string& request) {
  return piece_of(request, "<MESSAGE ID=\"", "\"");
}

std::vector<std::string> pieces_of(const std::vector<std::string>& requests,
                                   const std::string& before, const std::string& after) {
  std::vector<std::string> pieces;
  for (const std::string& each : requests) pieces.push_back(piece_of(each, before, after));
  return pieces;
}

std::vector<std::string> sequence_numbers_of(const std::vector<std::string>& requests) {
  return pieces_of(requests, "<PROPERTY NAME=\"SequenceNumber\"  TYPE=\"sint64\">\n<VALUE>", "<");
}
