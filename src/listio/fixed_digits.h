// A fixed number of decimal digits of a REAL(4) or REAL(8) value, for the
// older dialect's fields and the interval endpoints. The C library's
// conversion is exact and rounds in the current direction, which is the
// rounding these forms ask for.
#pragma once

namespace krm::fixed_digits {

// Room for the digits of any request made here, with a terminator.
constexpr int buffer_size = 400;

// The `count` most significant digits of |x| (x finite and non-zero, count
// 1 to 40), rounded in the current direction applied to x itself: digits to
// `buf`, terminated; the result is the position of the decimal point
// relative to the first digit.
int significant(double x, int count, char *buf);

// |x| with `places` digits after the point (0 to 60), rounded in the current
// direction applied to x: the integer digits (none when the integer part is
// 0) and the fraction digits to `buf`, terminated; the result is the
// number of integer digits.
int fixed(double x, int places, char *buf);

// As significant(), rounded towards minus infinity (down) or plus infinity
// (up) whatever the current direction; the direction is restored after.
int significant_directed(double x, int count, bool up, char *buf);

}  // namespace krm::fixed_digits
