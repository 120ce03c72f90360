// Hyperbolic cosine of a long_double.
#include "quad/exp_log_tables.h"

namespace {

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double half(0x3FFE0000u, 0u, 0u, 0u);
const unsigned C = 0x40044000u;  // top word of 40: beyond, exp(|x|)/2 alone

}  // namespace

namespace krm::ldmath {

long_double coshl(long_double x) {
    unsigned ix = magnitude_top(x);
    if (ix >= 0x7FFF0000u) return x * x;  // NaN, or +inf
    long_double ax = fabsl(x);
    if (ix < 0x3FC60000u) return one + ax * ax;  // |x| < 2^-57: 1, or its neighbour in a directed rounding
    if (ix >= 0x40000000u && ix < C) {
        // |x| in [2, 40): exp(|x|)/2 as a pair plus 1/(2 exp|x|), whose
        // rounding error is far below the last bit of the sum.
        int m;
        long_double s_hi, s_lo;
        __exp_pieces(ax, long_double(0u, 0u, 0u, 0u), &m, &s_hi, &s_lo);
        long_double h = __scalbnl(s_hi, m - 1);
        long_double rest = __scalbnl(s_lo, m - 1) + half / __scalbnl(s_hi + s_lo, m);
        return h + rest;
    }
    if (ix < C) {
        // (E + 1/E)/2 with E = exp|x| = 2^m (s_hi + s_lo) and 1/E as pairs:
        // a sum of two positive terms, so no cancellation anywhere.
        int m;
        long_double s_hi, s_lo, q_lo, e;
        __exp_pieces(ax, long_double(0u, 0u, 0u, 0u), &m, &s_hi, &s_lo);
        long_double e0;
        long_double S = __explog_add(s_hi, s_lo, &e0);  // s_lo is no tail yet: up to 2^-6 of s_hi
        long_double q = __explog_div(one, long_double(0u, 0u, 0u, 0u), S, e0, &q_lo);
        long_double h = __explog_add(__scalbnl(S, m - 1), __scalbnl(q, -m - 1), &e);
        return h + (e + (__scalbnl(e0, m - 1) + __scalbnl(q_lo, -m - 1)));
    }
    if (ix >= 0x400C6440u) return __scalbnl(one, 20000);  // |x| >= 11400
    int m;
    long_double s_hi, s_lo;
    __exp_pieces(ax, long_double(0u, 0u, 0u, 0u), &m, &s_hi, &s_lo);
    return __exp_finish(s_hi, s_lo, m - 1);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qcosh(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, coshl(load(x)));
}
