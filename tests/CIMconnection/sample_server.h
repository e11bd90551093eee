#pragma once

#include "zuCIM/container.h"

// A server record with everything in it but TLS files.
inline zuCIM::_THR_SERVER_ sample_server(const char* host = "server.example") {
  return {host, "reader", "secret", "5988", "", "", ""};
}

// Makes a context and returns it; null when it was not registered.
inline zuCIM::CIMcontainer* make_context(const zuCIM::_THR_SERVER_& server,
                                         std::uint64_t caller_value = 0) {
  const int position = zuCIM::getCIM(zuCIM::makeContainer(&server, caller_value));
  return position < 0 ? nullptr : zuCIM::getContainer(static_cast<unsigned>(position));
}

// Takes the context at `position` out of the registry.
inline void remove_context(unsigned position) {
  zuCIM::getContainer(position)->~CIMcontainer();
  zuCIM::gCIMContainers.erase(position);
}
