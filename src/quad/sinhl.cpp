// Hyperbolic sine of a long_double.
#include "quad/exp_log_tables.h"

namespace {

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double half(0x3FFE0000u, 0u, 0u, 0u);
// Above this exp(-|x|) no longer reaches the last bit: exp(|x|)/2 alone.
const unsigned C = 0x40044000u;  // top word of 40

}  // namespace

namespace krm::ldmath {

long_double sinhl(long_double x) {
    unsigned ix = magnitude_top(x);
    if (ix >= 0x7FFF0000u) return x + x;  // NaN, or the infinity itself
    if (ix < 0x3FC60000u) return x;        // |x| < 2^-57: x^3/6 is below the last bit
    long_double ax = fabsl(x);
    bool neg = sign_of(x);
    if (ix >= 0x40000000u && ix < C) {
        // |x| in [2, 40): exp(|x|)/2 as a pair less 1/(2 exp|x|), whose
        // rounding error is far below the last bit of the sum.
        int m;
        long_double s_hi, s_lo;
        __exp_pieces(ax, long_double(0u, 0u, 0u, 0u), &m, &s_hi, &s_lo);
        long_double h = __scalbnl(s_hi, m - 1);
        long_double rest = __scalbnl(s_lo, m - 1) - half / __scalbnl(s_hi + s_lo, m);
        if (neg) {
            h = -h;
            rest = -rest;
        }
        return h + rest;
    }
    if (ix >= 0x3FFD0000u && ix < C) {
        // |x| in [1/4, 40): (E - 1/E)/2 with E = exp|x| = 2^m (s_hi + s_lo)
        // and 1/E as pairs; the difference loses at most two bits, far
        // below the pairs' accuracy.
        int m;
        long_double s_hi, s_lo, q_lo, e0, e;
        __exp_pieces(ax, long_double(0u, 0u, 0u, 0u), &m, &s_hi, &s_lo);
        long_double S = __explog_add(s_hi, s_lo, &e0);
        long_double q = __explog_div(one, long_double(0u, 0u, 0u, 0u), S, e0, &q_lo);
        long_double h = __explog_add(__scalbnl(S, m - 1), -__scalbnl(q, -m - 1), &e);
        long_double rest = e + (__scalbnl(e0, m - 1) - __scalbnl(q_lo, -m - 1));
        if (neg) {
            h = -h;
            rest = -rest;
        }
        return h + rest;
    }
    if (ix < C) {
        // Near zero: (t + u) / 2 with t = expm1|x|, u = 1 - exp(-|x|),
        // rounded once.
        long_double t, t_lo, u, u_lo, e;
        __sinh_cosh_parts(ax, &t, &t_lo, &u, &u_lo);
        long_double s = __explog_add(t, u, &e);
        long_double rest = e + (t_lo + u_lo);
        if (neg) {
            s = -s;
            rest = -rest;
        }
        return (s + rest) * half;
    }
    // exp(|x|)/2, scaled by the power of two after the table step so that
    // nothing overflows before the one rounding.
    if (ix >= 0x400C6440u) return __scalbnl(neg ? -one : one, 20000);  // |x| >= 11400
    int m;
    long_double s_hi, s_lo;
    __exp_pieces(ax, long_double(0u, 0u, 0u, 0u), &m, &s_hi, &s_lo);
    if (neg) {
        s_hi = -s_hi;
        s_lo = -s_lo;
    }
    return __exp_finish(s_hi, s_lo, m - 1);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qsinh(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, sinhl(load(x)));
}
