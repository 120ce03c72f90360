// The one loop that hands bytes to a unit's file.
#pragma once

#include <stddef.h>

#include "units/unit.h"

namespace krm {

// Pushes bytes until all are written or a call fails; adds what was written
// to *done. Returns 0 or the errno of the failing call.
int push_bytes(unit *up, const char *bytes, size_t length, size_t *done);

}  // namespace krm
