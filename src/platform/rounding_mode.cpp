#include "platform/rounding_mode.h"

extern "C" int __xgetRD(void) { return krm_rounding_direction(); }
