// The exact product of two REAL(16) values as a head and a tail, for the
// functions that carry more than 113 bits through their steps.
#pragma once

#include "quad/long_double.h"

namespace krm::ldmath {

// p = a * b rounded in the current direction, and *lo = a * b - p exactly
// when that is representable (no underflow below the subnormals; an
// overflowing or non-finite p gives *lo = 0). Whole-number arithmetic on
// the significands: a few machine multiplications where splitting each
// factor in halves would take a dozen software operations.
long_double exact_product(const long_double &a, const long_double &b, long_double *lo);

}  // namespace krm::ldmath
