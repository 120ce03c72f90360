// Private pieces of the inverse trigonometric functions, cbrt and hypot:
// the arctangent table, exact products by splitting, and the head-and-tail
// forms that the degree functions and atan2pil multiply by their constants.
#pragma once

#include "quad/exact_product.h"
#include "quad/ldmath.h"

namespace krm::ldmath {

// atan of the breakpoints b_i, top word 0x3FF80000 + i * 0x800 (2^-7 ... 2^7),
// as hi + lo; 449 rows.
extern const long_double _TBL_atanl_hi[];
extern const long_double _TBL_atanl_lo[];

// atan((y + yl) / (x + xl)) for finite y >= 0, x > 0, as a head and (when
// tail is not null) a tail; yl and xl are tails under an ulp of y and x, or
// zero.
long_double __atan_ratio(long_double y, long_double yl, long_double x, long_double xl, long_double *tail);
// asin and acos as a head and tail (when tail is not null); |x| <= 1, x not
// a NaN.
long_double __asin_hl(long_double x, long_double *tail);
long_double __acos_hl(long_double x, long_double *tail);
// sqrt(1 - x * x) for 2^-57 <= x < 1, as r + *rl good to about 2^-159 of
// r: 1 - x * x is formed exactly, and the root taken from a double start.
long_double __root_one_minus_square(const long_double &x, long_double *rl);

namespace exact {

// a * b = p + *e, *e exact (normal a and b whose product neither
// overflows nor underflows).
inline long_double two_prod(const long_double &a, const long_double &b, long_double *e) {
    return exact_product(a, b, e);
}

// (h + t) * (ch + cl) as a single rounded number, ch + cl a constant pair
// and ch = cd + cr, cd its nearest double: h is cut at its nearest double
// H, so that H cd is exact and the head of the product, and H cr and
// (h - H) cd are exact too; only the last addition rounds. Very small heads
// (no double) go through two_prod, scaled up first so that its split is
// exact.
inline long_double mul_pair(long_double h, const long_double &t, const long_double &cd, const long_double &cr,
                            const long_double &cl) {
    unsigned top = magnitude_top(h);
    if (top >= 0x3C800000u && top < 0x43000000u) {
        long_double H(static_cast<double>(h));
        long_double hl = h - H;
        long_double rest = ((H * cr + hl * cd) + hl * cr) + (h * cl + t * cd);
        return H * cd + rest;
    }
    if (iszerol(h)) return h * cd;
    long_double ch = cd + cr, e;
    if (top < 0x00F00000u) {
        const long_double up(0x40E10000u, 0u, 0u, 0u);  // 2^226
        long_double hs = h * up, ts = t * up;
        long_double p = two_prod(hs, ch, &e);
        long_double r = p + (e + (hs * cl + ts * ch));
        return __scalbnl(r, -226);
    }
    long_double p = two_prod(h, ch, &e);
    return p + (e + (h * cl + t * ch));
}

}  // namespace exact

}  // namespace krm::ldmath
