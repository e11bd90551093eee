#pragma once

#include <string>

#include "support/scripted_server.h"
#include "zuCIM/connection.h"

// A document that the client takes without complaint.
inline const std::string good_document =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
    "<SIMPLERSP><IMETHODRESPONSE NAME=\"EnumerateInstanceNames\"><IRETURNVALUE>"
    "<INSTANCENAME CLASSNAME=\"CIM_Fan\"></INSTANCENAME>"
    "</IRETURNVALUE></IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>";

// The same document with `error` in place of the instance names.
inline std::string error_document(const std::string& error) {
  return "<?xml version=\"1.0\" ?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" "
         "PROTOCOLVERSION=\"1.0\"><SIMPLERSP><IMETHODRESPONSE NAME=\"GetClass\">" +
         error + "</IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>";
}

// A connection that is ready to send a request, and gives up after the least time.
struct WireClient : zuCIM::CIMconnection {
  explicit WireClient(const ScriptedServer& server)
      : WireClient(server.address(), server.port_text()) {}
  WireClient(const std::string& address, const std::string& port_text) {
    const zuCIM::_THR_SERVER_ record{
        address.c_str(), "reader", "open-sesame", port_text.c_str(), "", "", ""};
    setHostUserPasswd(&record);
    skipIpCheck = true;
    esxiBusy = true;
    extraTimeOut = -100;
    request = "<?xml version=\"1.0\"?><CIM/>";
  }

  int exchange() { return sendRequest_recvResponse("GetClass", "root/cimv2"); }
};

// A script that reads one request, sends these bytes and closes.
inline script::Steps answer_with(const std::string& bytes) {
  return {script::ReadRequest{}, script::Send{bytes}, script::Close{}};
}

// A script that gives the same answer to every request of a connection.
inline script::Steps always_answer(const std::string& bytes) {
  return {script::ReadRequest{}, script::Send{bytes}, script::Again{}};
}
