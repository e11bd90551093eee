#pragma once

#include <string>

#include "../indications/indications.h"
#include "../protocol.h"
#include "../repository.h"

namespace simulator {

// Calls the method that a message asks for and appends the content of its METHODRESPONSE, or throws
// CimError.
void invoke(const RequestMessage& message, Namespace& name_space, Indications& indications,
            std::string& out);

}  // namespace simulator
