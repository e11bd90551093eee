#pragma once

#include "zuCIM/connection.h"

namespace zuCIM {

// Copies the server record into the connection; a null record or text counts as empty. Throws
// std::bad_alloc; then the connection is as it was.
void copy_server_record(CIMconnection& connection, const _THR_SERVER_* server);

}  // namespace zuCIM
