// Lists the namespaces of a CIM server.
// Usage: namespaces HOST PORT USER PASSWORD
#include "connect.h"

int main(int argc, char* argv[]) {
  zuCIM::CIMcontainer* const context = connect_as_told(argc, argv);
  if (context == nullptr) return 2;

  zuCIM::CIMarray names;
  const int status = context->getNameSpace(names);
  if (status != zuCIM::status::success) return report_failure("getNameSpace", status);
  for (unsigned i = 0; i < names.argc; ++i)
    std::printf("%s\n", static_cast<const char*>(names.argv[i]));

  context->ESXi_Occupied(false);
  return 0;
}
