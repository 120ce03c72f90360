// A fixed number of decimal digits of a REAL(4) or REAL(8) value, for the
// older dialect's fields and the interval endpoints, from the platform's
// exact conversions.
#pragma once

#include "krm/quad_decimal.h"

namespace krm::fixed_digits {

// Room for the digits of any request made here, with a terminator.
constexpr int buffer_size = DECIMAL_STRING_SIZE;

// The `count` most significant digits of |x| (x finite and non-zero, count
// 1 to 40), rounded in the current direction applied to x itself: digits to
// `buf`, terminated; the result is the position of the decimal point
// relative to the first digit.
int significant(double x, int count, char *buf);

// |x| with `places` digits after the point (0 to 60), rounded in the current
// direction applied to x: digits to `buf`, terminated, such that |x| is
// 0.buf times ten to the result.
int fixed(double x, int places, char *buf);

// As significant(), rounded towards minus infinity (down) or plus infinity
// (up) whatever the current direction.
int significant_directed(double x, int count, bool up, char *buf);

}  // namespace krm::fixed_digits
