// Hyperbolic tangent of a long_double.
#include "quad/exp_log_tables.h"

namespace {

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double two(0x40000000u, 0u, 0u, 0u);
const long_double tiny(0x00010000u, 0u, 0u, 0u);  // 2^-16382
// Below small, tanh x is x to the last bit; from big on, 1 less under half
// an ulp. Between, t / (t + 2) with t = expm1(2|x|), as pairs.
const unsigned small = 0x3FC60000u;              // 2^-57
const unsigned big = 0x40044000u;                // 40

}  // namespace

namespace krm::ldmath {

long_double tanhl(long_double x) {
    unsigned ix = magnitude_top(x);
    bool neg = sign_of(x);
    if (ix >= 0x7FFF0000u) {
        if (isnanl(x)) return x + x;
        return neg ? -one : one;
    }
    if (ix < small) return x;
    if (ix >= big) return neg ? tiny - one : one - tiny;
    long_double ax = fabsl(x);
    long_double a = ax + ax;  // exact
    if (ix >= 0x40000000u) {
        // |x| >= 2: 1 - 2/(exp(2|x|) + 1), the quotient under 0.04 and its
        // rounding error far below the last bit of the result.
        int m;
        long_double s_hi, s_lo;
        __exp_pieces(a, long_double(0u, 0u, 0u, 0u), &m, &s_hi, &s_lo);
        long_double w = two / (__scalbnl(s_hi + s_lo, m) + one);
        return neg ? w - one : one - w;
    }
    long_double t, t_lo;
    if (ix >= 0x3FFD0000u) {
        // |x| >= 1/4: t = exp(2|x|) - 1 from the exp pieces, exact as a
        // pair since exp(2|x|) > 1.6.
        int m;
        long_double s_hi, s_lo, e0, e1;
        __exp_pieces(a, long_double(0u, 0u, 0u, 0u), &m, &s_hi, &s_lo);
        long_double S = __explog_add(s_hi, s_lo, &e0);
        t = __explog_add(__scalbnl(S, m), -one, &e1);
        t_lo = e1 + __scalbnl(e0, m);
    } else {
        t = __expm1_hl(a, &t_lo);  // near zero
    }
    long_double d_lo;
    long_double d = __explog_add(two, t, &d_lo);
    d_lo = d_lo + t_lo;
    long_double q_lo;
    long_double q = __explog_div(t, t_lo, d, d_lo, &q_lo);
    if (neg) {
        q = -q;
        q_lo = -q_lo;
    }
    return q + q_lo;
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qtanh(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, tanhl(load(x)));
}
