// Steps shared by the complex functions: exp, cosh or sinh times a sine or
// cosine without the overflow of the first factor alone where the product
// is finite, head-and-tail arithmetic, and the logarithm of a modulus.
#pragma once

#include "quad/ldmath.h"

namespace krm::ldmath::complex_detail {

// From about 11356, ln of the largest number, exp(x) overflows, and cosh(x)
// and |sinh(x)| are exp(|x|)/2 to every bit; past 22800 every product with
// a sine or cosine that is not zero overflows too.
inline const long_double &exp_overflow() {
    static const long_double v(0x400C62E4u, 0u, 0u, 0u);
    return v;
}

inline const long_double &one_half() {
    static const long_double v(0x3FFE0000u, 0u, 0u, 0u);
    return v;
}

// exp(x) (c + i s), for x at or above exp_overflow(): exp(x) as a value and
// a power of two, the power applied last, so that a part may still be
// finite.
inline ldcomplex big_exp_times(long_double x, const long_double &c, const long_double &s) {
    static const long_double beyond_any_product(0x400D6440u, 0u, 0u, 0u);  // 22800
    int n;
    long_double e = __k_cexpl(x < beyond_any_product ? x : beyond_any_product, &n);
    return ldcomplex{__scalbnl(e * c, n), __scalbnl(e * s, n)};
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

// exp(x) (c + i s) for x above -exp_overflow(), each part rounded once.
inline ldcomplex exp_cis(const long_double &x, const long_double &c, const long_double &s) {
    if (x < exp_overflow()) return exp_times(pair{x, long_double(0u, 0u, 0u, 0u)}, c, s);
    return big_exp_times(x, c, s);
}

// ln sqrt(x^2 + y^2) over the whole range, without cancellation near 1:
// the real part of the complex logarithm.
long_double log_modulus(long_double x, long_double y);

}  // namespace krm::ldmath::complex_detail
