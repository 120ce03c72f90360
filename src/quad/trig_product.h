// Shared by the trigonometric functions whose argument is reduced exactly
// (in degrees, and in half turns for sincospil): the product of a reduced
// argument by a constant c = c_h + c_l, c_h of 56 bits, as a head and a tail
// for the kernels.
#pragma once

#include "quad/long_double.h"

namespace krm::ldmath {

// d times c_h + c_l, as hi + lo to some 2^-160 of the product. An argument
// so small that the product would fall among the subnormals gives the
// product rounded once more, as lo = 0.
void times_split_constant(const long_double &d, const long_double &c_h, const long_double &c_l, long_double &hi,
                          long_double &lo);

}  // namespace krm::ldmath
