// Hyperbolic cosine of a long_double.
#include "quad/exp_log_tables.h"

namespace {

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double half(0x3FFE0000u, 0u, 0u, 0u);
const long_double C(0x40044000u, 0u, 0u, 0u);  // 40: beyond, exp(|x|)/2 alone

}  // namespace

namespace krm::ldmath {

long_double coshl(long_double x) {
    unsigned ix = magnitude_top(x);
    if (ix >= 0x7FFF0000u) return x * x;  // NaN, or +inf
    long_double ax = fabsl(x);
    if (ix < 0x3FC60000u) return one + ax * ax;  // |x| < 2^-57: 1, or its neighbour in a directed rounding
    if (ix >= 0x40000000u && ax < C) {
        // |x| in [2, 40): exp(|x|)/2 as a pair plus 1/(2 exp|x|), whose
        // rounding error is far below the last bit of the sum.
        int m;
        long_double s_hi, s_lo;
        __exp_pieces(ax, long_double(0u, 0u, 0u, 0u), &m, &s_hi, &s_lo);
        long_double h = __scalbnl(s_hi, m - 1);
        long_double rest = __scalbnl(s_lo, m - 1) + half / __scalbnl(s_hi + s_lo, m);
        return h + rest;
    }
    if (ax < C) {
        // 1 + (t - u) / 2, t = expm1|x|, u = 1 - exp(-|x|): t - u is exact
        // enough as pairs even where it cancels.
        long_double t, t_lo, u, u_lo, e, e2;
        __sinh_cosh_parts(ax, &t, &t_lo, &u, &u_lo);
        long_double w = __add_hl(t, -u, &e) * half;
        long_double w_lo = (e + (t_lo - u_lo)) * half;
        long_double s = __add_hl(one, w, &e2);
        return s + (e2 + w_lo);
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
