#include "zuCIM/indication.h"

namespace zuCIM {

int ListenerThreadIsActive = 0;

}  // namespace zuCIM
