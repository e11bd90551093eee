#pragma once

#include <string>

#include "../protocol.h"
#include "../repository.h"

namespace simulator {

// Calls the method that a message asks for and appends the content of its METHODRESPONSE, or throws
// CimError.
void invoke(const RequestMessage& message, Namespace& name_space, std::string& out);

}  // namespace simulator
