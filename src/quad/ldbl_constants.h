// The eight limits of binary128, for a source unit's own use. Each unit that
// includes this gets a private copy, built by its static constructor at load.
#pragma once

#include "quad/long_double.h"

namespace {

const long_double _ldbl_min_subnormal(0u, 0u, 0u, 1u);
const long_double _ldbl_max_subnormal(0x0000FFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu);
const long_double _ldbl_min_normal(0x00010000u, 0u, 0u, 0u);
const long_double _ldbl_max_normal(0x7FFEFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu);
const long_double _ldbl_infinity(0x7FFF0000u, 0u, 0u, 0u);
const long_double _ldbl_quiet_nan(0x7FFF8000u, 0u, 0u, 0u);
const long_double _ldbl_signalling_nan(0x7FFF0000u, 0u, 0u, 1u);
// 2 to the power -112: the step from 1 to the next number.
const long_double _ldbl_epsilon(0x3F8F0000u, 0u, 0u, 0u);

}  // namespace
