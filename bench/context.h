#pragma once

#include <string>

#include "zuCIM.h"

namespace bench {

// A registered context for the server at an address of this machine, taken and ready for
// operations on the class HOST_NumericSensor. Admission, which asks name servers, is left out.
// Returns its index.
unsigned make_context(const std::string& host, const std::string& port);

// The context with this index, looked up as a caller would.
zuCIM::CIMcontainer& context_of(unsigned index);

// Aborts when the last operation of the context failed.
void expect_success(zuCIM::CIMcontainer& context);

}  // namespace bench
