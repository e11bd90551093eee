#include "writer.h"

namespace bench {

std::string Random::word() {
  std::string word(3 + below(7), ' ');
  for (char& letter : word) letter = static_cast<char>('a' + below(26));
  return word;
}

std::string Random::words(std::size_t count) {
  std::string words = word();
  for (std::size_t i = 1; i < count; ++i) words += ' ' + word();
  return words;
}

Writer& Writer::line(std::string_view text) {
  out_.append(text).append("\n");
  return *this;
}

Writer& Writer::open(std::string_view tag) {
  out_.append("<").append(tag).append(">\n");
  return *this;
}

Writer& Writer::close(std::string_view name) {
  out_.append("</").append(name).append(">\n");
  return *this;
}

Writer& Writer::value(std::string_view text) {
  out_.append("<VALUE>").append(text).append("</VALUE>\n");
  return *this;
}

Writer& begin_message(Writer& out, std::string_view id) {
  return out.line("<?xml version=\"1.0\" encoding=\"utf-8\" ?>")
      .open("CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"")
      .open("MESSAGE ID=\"" + std::string(id) + "\" PROTOCOLVERSION=\"1.0\"");
}

void begin_answer(Writer& out, std::string_view method) {
  begin_message(out, "1001")
      .open("SIMPLERSP")
      .open("IMETHODRESPONSE NAME=\"" + std::string(method) + "\"")
      .open("IRETURNVALUE");
}

std::string end_answer(Writer& out) {
  return out.close("IRETURNVALUE")
      .close("IMETHODRESPONSE")
      .close("SIMPLERSP")
      .close("MESSAGE")
      .close("CIM")
      .take();
}

}  // namespace bench
