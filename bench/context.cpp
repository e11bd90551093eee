#include "context.h"

#include <cstdio>
#include <cstdlib>

namespace bench {

unsigned make_context(const std::string& host, const std::string& port) {
  const zuCIM::_THR_SERVER_ server{host.c_str(), "root", "secret", port.c_str(), "", "", ""};
  const unsigned index = zuCIM::makeContainer(&server, 0);
  zuCIM::CIMcontainer& context = context_of(index);
  context.skipIpCheck = true;
  context.ESXi_Occupied(true);
  context.setCurrentClass("HOST_NumericSensor", "");
  return index;
}

zuCIM::CIMcontainer& context_of(unsigned index) {
  return *zuCIM::getContainer(static_cast<unsigned>(zuCIM::getCIM(index)));
}

void expect_success(zuCIM::CIMcontainer& context) {
  const int status = context.ChkCimStatus();
  if (status == zuCIM::status::success) return;
  std::fprintf(stderr, "an operation failed: status %d\n", status);
  std::abort();
}

}  // namespace bench
