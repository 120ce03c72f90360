// Shared by the trigonometric functions whose argument is reduced exactly
// (in degrees, and in half turns for sincospil): the product of a small
// number by a constant c = c_h + c_l, c_h of 56 bits, as a head and a tail.
#pragma once

#include "quad/long_double.h"

namespace krm::ldmath {

// Splits d into dh + dl, each of at most 56 significant bits, so that
// dh * c_h and dl * c_h are exact; d * c_l, some 2^-56 smaller, is rounded.
// splitter is 2^57 + 1.
inline void times_split_constant(const long_double &d, const long_double &c_h, const long_double &c_l,
                                 const long_double &splitter, long_double &hi, long_double &lo) {
    const long_double t = d * splitter;
    const long_double dh = t - (t - d);
    const long_double dl = d - dh;
    const long_double head = dh * c_h;
    const long_double rest = dl * c_h + d * c_l;
    hi = head + rest;
    lo = rest - (hi - head);
}

}  // namespace krm::ldmath
