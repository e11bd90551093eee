// Asks a CIM server for its sensors and shows the status and the traces of a failure.
// Usage: show_failure HOST PORT USER PASSWORD
// Ends with 0 when the server answered, with 1 after a failure and with 2 for a wrong command line.
#include <BRQ/Trace.h>
#include <zuCIM.h>

#include <algorithm>
#include <cstdio>
#include <string>

using namespace zuCIM;

// Prints one trace line; of a text of many lines, such as the dump of an exchange, only the first.
void print_trace(const BRQ::TraceLine& line) {
  const std::string first = line.text.substr(0, line.text.find('\n'));
  const auto more = std::count(line.text.begin(), line.text.end(), '\n');
  std::printf("  0x%-2x %s@%d: %s", line.level, line.source, line.line, first.c_str());
  if (more > 0) std::printf(" ... (and %d more lines)", static_cast<int>(more));
  std::puts("");
}

// What the library knows about a failure besides its code.
const char* meaning(const CIMcontainer& context) {
  if ((context.infoFlags & info_flag::credentials_refused) != 0) return "credentials refused";
  if ((context.infoFlags & info_flag::no_connection) != 0) return "no connection";
  return "no further information";
}

int main(int argc, char* argv[]) {
  if (argc != 5) return 2;
  const _THR_SERVER_ server{.host = argv[1],
                            .user = argv[3],
                            .password = argv[4],
                            .port = argv[2],
                            .caFile = "",
                            .certFile = "",
                            .keyFile = ""};

  const auto index = makeContainer(&server, 0);
  CIMcontainer* context = getContainer(static_cast<unsigned>(getCIM(index)));
  if (context == nullptr) return 1;
  context->addContainer();
  // A machine whose name has no address but 127.0.0.1 is no obstacle here.
  if (context->ChkCimStatus() == status::local_address) context->localIP = "127.0.0.1";

  // Traces go to standard error unless a program takes them itself, as this one does.
  BRQ::set_trace_sink(print_trace);
  BRQ_MODULE_INFO_zuCIM.set_trace_mask(trace_level::progress | trace_level::warning |
                                       trace_level::error);

  context->ESXi_Occupied(true);
  context->setCurrentClass("CIM_NumericSensor", "root/cimv2");
  // By itself the library tries for 20 seconds; a negative extra time-out makes it give up at once.
  context->SetExtraTimeOut(-1);
  context->Imethod_EnumerateInstanceNames();
  const int code = context->ChkCimStatus();
  const unsigned flags = context->infoFlags;
  context->ESXi_Occupied(false);

  std::printf("\nStatus %d, info flags 0x%x: %s\n", code, flags, meaning(*context));
  return code == status::success ? 0 : 1;
}
