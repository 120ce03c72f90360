// sin(pi x) and cos(pi x) together, for the complex power.
//
// Half turns reduce exactly: the remainder by 2 and then the difference from
// the nearest multiple of 1/2 are exact, so the only rounding before the
// kernels is in the product by pi, taken as a head and a tail. Multiples of
// 1/2 give exact zeros and ones; a zero sine has the sign of x, a zero
// cosine is +0.
#include "quad/ldmath.h"
#include "quad/trig_product.h"

namespace {

#include "quad/sincospil.inc"

const long_double zero(0u, 0u, 0u, 0u);
const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double half(0x3FFE0000u, 0u, 0u, 0u);
const long_double two(0x40000000u, 0u, 0u, 0u);

inline long_double with_sign(long_double v, bool negative) {
    v.word[0] = (v.word[0] & 0x7FFFFFFFu) | (negative ? 0x80000000u : 0u);
    return v;
}

}  // namespace

namespace krm::ldmath {

void sincospil(long_double x, long_double *s, long_double *c) {
    const unsigned ix = magnitude_top(x);
    if (ix >= 0x7FFF0000u) {
        *s = *c = x - x;
        return;
    }
    // x = n/2 + d exactly, |d| <= 1/4.
    long_double d;
    int n = 0;
    if (ix < 0x3FFD0000u) {  // |x| < 1/4
        d = x;
    } else {
        // From 2^113 on every number is an even whole number.
        const long_double r = ix >= 0x40700000u ? with_sign(zero, sign_of(x)) : ix >= 0x40000000u ? fmodl(x, two) : x;
        n = static_cast<int>(fabsl(r) * two + half);
        if (sign_of(r)) n = -n;
        d = r - long_double(n) * half;
    }
    long_double sn, cs;
    if (iszerol(d)) {
        sn = with_sign(zero, sign_of(x) != ((n & 3) == 2));
        cs = one;
    } else {
        long_double hi, lo;
        times_split_constant(d, pi_h, pi_l, hi, lo);
        __k_sincosl(hi, lo, &sn, &cs);
    }
    by_quadrant(n, sn, cs, s, c);
    if (iszerol(*c)) *c = zero;
}

}  // namespace krm::ldmath
