// Steps shared by the complex functions: cosh(x) or sinh(x) times a sine or
// cosine without the overflow of cosh alone where the product is finite, and
// the logarithm of a modulus.
#pragma once

#include "quad/ldmath.h"

namespace krm::ldmath::complex_detail {

// From about 11356, ln of the largest number, cosh(x) and |sinh(x)| are
// exp(|x|)/2 to every bit and overflow; past 22800 so does every product
// with a sine or cosine that is not zero.
inline const long_double &exp_overflow() {
    static const long_double v(0x400C62E4u, 0u, 0u, 0u);
    return v;
}

inline const long_double &one_half() {
    static const long_double v(0x3FFE0000u, 0u, 0u, 0u);
    return v;
}

// exp(|x|)/2 times f, for |x| at or above exp_overflow(), rounded once at the
// end by the scaling.
inline long_double half_exp_times(long_double ax, const long_double &f) {
    static const long_double beyond_any_product(0x400D6440u, 0u, 0u, 0u);  // 22800
    int n;
    long_double e = __k_cexpl(ax < beyond_any_product ? ax : beyond_any_product, &n);
    return __scalbnl(e * one_half() * f, n);
}

// A value as a head and a tail.
struct pair {
    long_double hi, lo;
};

pair sum(const pair &a, const pair &b);
// a times the pair p.
pair times(const long_double &a, const pair &p);
// ln |x + iy| as a pair, for finite x, y not both zero.
pair log_modulus_pair(long_double x, long_double y);
// The sine and cosine of a.hi + a.lo, a.lo far below a.hi's last bit.
void sincos_pair(const pair &a, long_double *s, long_double *c);
// e^size (c + i s), rounded once per part; size within about 11000 of 0.
ldcomplex exp_times(const pair &size, const long_double &c, const long_double &s);

// sinh and cosh of 0 <= ax < 40 as pairs.
void sinh_cosh_pairs(const long_double &ax, pair *sh, pair *ch);
// p times f, rounded once.
long_double times_rounded(const pair &p, const long_double &f);
// Below this in magnitude sinh_cosh_pairs serves; from it on sinh and cosh
// are e^|x| / 2 to every bit.
inline const long_double &pair_limit() {
    static const long_double v(0x40044000u, 0u, 0u, 0u);  // 40
    return v;
}

// ln sqrt(x^2 + y^2) over the whole range, without cancellation near 1:
// the real part of the complex logarithm.
long_double log_modulus(long_double x, long_double y);

}  // namespace krm::ldmath::complex_detail
