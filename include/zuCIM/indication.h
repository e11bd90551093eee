#pragma once

#include "zuCIM/export.h"

namespace zuCIM {

class CIMindication;

// Non-zero while indications are being received; requests then get a longer time-out. Read and
// change it with std::atomic_ref.
extern ZUCIM_API int ListenerThreadIsActive;

}  // namespace zuCIM
