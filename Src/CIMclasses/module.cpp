#include "zuCIM/vocabulary.h"

namespace zuCIM {

BRQ::Misc::CModuleInfo BRQ_MODULE_INFO_zuCIM(300, "zuCIM", "P:" ZUCIM_VERSION " F:" ZUCIM_VERSION);

}  // namespace zuCIM
