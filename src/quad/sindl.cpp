// Sine, cosine and tangent of an argument in degrees.
//
// Degrees reduce exactly: the remainder by 360 and then the difference from
// the nearest multiple of 90 are exact, so the only rounding before the
// kernels is in the product by pi/180, which is taken as a head and a tail.
// Multiples of 90 give exact zeros and ones, and the tangent of an odd
// multiple of 45 is exactly 1 or -1. A zero sine has the sign of x, a zero
// cosine is +0, and the tangent's zeros and infinities have the signs of
// sine over cosine.
#include <stdint.h>

#include "quad/ldmath.h"
#include "quad/trig_product.h"

namespace {

#include "quad/sindl.inc"

const long_double zero(0u, 0u, 0u, 0u);
const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double half(0x3FFE0000u, 0u, 0u, 0u);
const long_double ninety(0x40056800u, 0u, 0u, 0u);
const long_double three_sixty(0x40076800u, 0u, 0u, 0u);

using krm::ldmath::fabsl;
using krm::ldmath::magnitude_top;
using krm::ldmath::sign_of;

inline long_double with_sign(long_double v, bool negative) {
    v.word[0] = (v.word[0] & 0x7FFFFFFFu) | (negative ? 0x80000000u : 0u);
    return v;
}

// x mod 360 with x's sign, for |x| >= 2^113: x is then a whole number
// M 2^k, M the 113-bit significand and k >= 1, so the remainder is that of
// (M mod 360)(2^k mod 360), in a few integer steps where fmodl would take a
// step per bit of the exponent.
long_double whole_remainder_360(const long_double &x) {
    const uint32_t m[4] = {(x.word[0] & 0xFFFFu) | 0x10000u, x.word[1], x.word[2], x.word[3]};
    uint64_t rm = 0;
    for (uint32_t w : m) rm = ((rm << 32) | w) % 360u;
    unsigned k = ((x.word[0] >> 16) & 0x7FFFu) - 16383u - 112u;
    uint64_t rp = 1, b = 2;
    for (; k != 0; k >>= 1) {
        if (k & 1u) rp = rp * b % 360u;
        b = b * b % 360u;
    }
    const long_double r(static_cast<int>(rm * rp % 360u));
    return with_sign(r, sign_of(x));
}

// x = 90 n + d exactly, |d| <= 45 (x finite); returns n.
int quadrant(const long_double &x, long_double &d) {
    const unsigned ix = magnitude_top(x);
    if (ix < 0x40046800u) {  // |x| < 45
        d = x;
        return 0;
    }
    const long_double r = ix >= 0x40700000u ? whole_remainder_360(x) : ix >= 0x40076800u ? fmodl(x, three_sixty) : x;
    int n = static_cast<int>(fabsl(r) * one_ninetieth + half);
    if (sign_of(r)) n = -n;
    d = r - long_double(n) * ninety;
    return n;
}

// d degrees in radians, as a head and a tail.
void multpi_180L(const long_double &d, long_double &hi, long_double &lo) {
    krm::ldmath::times_split_constant(d, pi_180_h, pi_180_l, hi, lo);
}

}  // namespace

namespace krm::ldmath {

long_double sindl(long_double x) {
    if (magnitude_top(x) >= 0x7FFF0000u) return x - x;
    long_double d, hi, lo;
    const int n = quadrant(x, d);
    if (iszerol(d)) {
        if (n & 1) return with_sign(one, (n & 3) == 3);
        return with_sign(zero, sign_of(x));
    }
    multpi_180L(d, hi, lo);
    switch (n & 3) {
    case 0: return __k_sinl(hi, lo);
    case 1: return __k_cosl(hi, lo);
    case 2: return -__k_sinl(hi, lo);
    default: return -__k_cosl(hi, lo);
    }
}

long_double cosdl(long_double x) {
    if (magnitude_top(x) >= 0x7FFF0000u) return x - x;
    long_double d, hi, lo;
    const int n = quadrant(x, d);
    if (iszerol(d)) {
        if (n & 1) return zero;
        return with_sign(one, (n & 3) == 2);
    }
    multpi_180L(d, hi, lo);
    switch (n & 3) {
    case 0: return __k_cosl(hi, lo);
    case 1: return -__k_sinl(hi, lo);
    case 2: return -__k_cosl(hi, lo);
    default: return __k_sinl(hi, lo);
    }
}

long_double tandl(long_double x) {
    if (magnitude_top(x) >= 0x7FFF0000u) return x - x;
    long_double d, hi, lo;
    const int n = quadrant(x, d);
    if (iszerol(d)) {
        // sin over cos: an odd multiple of 90 divides +-1 by +0.
        if (n & 1) return with_sign(one, (n & 3) == 3) / zero;
        return with_sign(zero, sign_of(x) != ((n & 3) == 2));
    }
    if (magnitude_top(d) == 0x40046800u && (d.word[1] | d.word[2] | d.word[3]) == 0) {  // |d| = 45
        const long_double t = with_sign(one, sign_of(d));
        return (n & 1) ? -t : t;  // -1/t is -t
    }
    multpi_180L(d, hi, lo);
    return __k_tanl(hi, lo, n & 1);
}

void sincosdl(long_double x, long_double *s, long_double *c) {
    if (magnitude_top(x) >= 0x7FFF0000u) {
        *s = *c = x - x;
        return;
    }
    long_double d, hi, lo, sn, cs;
    const int n = quadrant(x, d);
    if (iszerol(d)) {
        sn = with_sign(zero, sign_of(x) != ((n & 3) == 2));
        cs = one;
    } else {
        multpi_180L(d, hi, lo);
        __k_sincosl(hi, lo, &sn, &cs);
    }
    by_quadrant(n, sn, cs, s, c);
    if (iszerol(*c)) *c = zero;
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qsind(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, sindl(load(x)));
}

extern "C" KRM_API void __Qcosd(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, cosdl(load(x)));
}

extern "C" KRM_API void __Qtand(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, tandl(load(x)));
}
