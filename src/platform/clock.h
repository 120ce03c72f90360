// Clocks.
#pragma once

#include <stdint.h>

extern "C" {
// Monotonic time in nanoseconds, for intervals only.
int64_t gethrtime(void);
}
