#pragma once

#include <zuCIM.h>

#include <cstdio>

// Makes a context for the server that the command line names (PROGRAM HOST PORT USER PASSWORD),
// admits it and takes it. Null, with a message on standard error, when that is not possible.
inline zuCIM::CIMcontainer* connect_as_told(int argc, char* argv[]) {
  if (argc < 5) {
    std::fprintf(stderr, "Usage: %s HOST PORT USER PASSWORD\n", argv[0]);
    return nullptr;
  }
  const zuCIM::_THR_SERVER_ server{.host = argv[1],
                                   .user = argv[3],
                                   .password = argv[4],
                                   .port = argv[2],
                                   .caFile = "",
                                   .certFile = "",
                                   .keyFile = ""};
  const auto position = zuCIM::getCIM(zuCIM::makeContainer(&server, 0));
  auto* const context = zuCIM::getContainer(static_cast<unsigned>(position));
  if (context == nullptr) return nullptr;

  context->addContainer();
  // A machine whose own name has no address but 127.0.0.1 can do without one here.
  if (context->ChkCimStatus() == zuCIM::status::local_address) {
    context->localIP = "127.0.0.1";
  } else if (context->ChkCimStatus() != zuCIM::status::success) {
    std::fprintf(stderr, "Admission: status %d\n", context->ChkCimStatus());
    return nullptr;
  }
  context->ESXi_Occupied(true);
  return context;
}

// Reports a failed operation; its result is the exit status of the program.
inline int report_failure(const char* operation, int status) {
  std::fprintf(stderr, "%s: status %d\n", operation, status);
  return 1;
}
