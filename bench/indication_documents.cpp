#include "documents.h"
#include "writer.h"

namespace bench {
namespace {

constexpr const char* message_id = "1042";

void add_property(Writer& out, const std::string& name, const std::string& value) {
  out.open("PROPERTY NAME=\"" + name + "\"  TYPE=\"string\"").value(value).close("PROPERTY");
}

std::string export_message() {
  Writer out;
  begin_message(out, message_id)
      .open("SIMPLEEXPREQ")
      .open("EXPMETHODCALL NAME=\"ExportIndication\"")
      .open("EXPPARAMVALUE NAME=\"NewIndication\"")
      .open("INSTANCE CLASSNAME=\"CIM_AlertIndication\" ");
  add_property(out, "IndicationIdentifier", "17");
  add_property(out, "AlertingManagedElement", "HOST_NumericSensor.DeviceID=&quot;4711&quot;");
  add_property(out, "Description", "The temperature of the second processor is too high.");
  return out.close("INSTANCE")
      .close("EXPPARAMVALUE")
      .close("EXPMETHODCALL")
      .close("SIMPLEEXPREQ")
      .close("MESSAGE")
      .close("CIM")
      .take();
}

}  // namespace

std::string indication_request() {
  const std::string body = export_message();
  return "POST / HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/xml; charset=utf-8\r\n"
         "Content-Length: " +
         std::to_string(body.size()) +
         "\r\nCIMExport: MethodRequest\r\nCIMExportMethod: ExportIndication\r\n\r\n" + body;
}

std::string indication_answer() {
  Writer out;
  return begin_message(out, message_id)
      .open("SIMPLEEXPRSP")
      .open("EXPMETHODRESPONSE NAME=\"ExportIndication\"")
      .line("<IRETURNVALUE/>")
      .close("EXPMETHODRESPONSE")
      .close("SIMPLEEXPRSP")
      .close("MESSAGE")
      .close("CIM")
      .take();
}

}  // namespace bench
