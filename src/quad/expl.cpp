// exp and exp2 of a long_double, and exp as a value and a power of two for
// the complex functions.
#include "quad/exp_log_tables.h"

namespace {

const long_double zero(0u, 0u, 0u, 0u);
const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double half(0x3FFE0000u, 0u, 0u, 0u);
const long_double thirty_two(0x40040000u, 0u, 0u, 0u);
const long_double thirty_second(0x3FFA0000u, 0u, 0u, 0u);

}  // namespace

namespace krm::ldmath {

long_double expl(long_double x) {
    const exp_log_constants &c = _exp_log;
    unsigned ix = magnitude_top(x);
    if (ix >= 0x7FFF0000u) {
        if (isnanl(x)) return x + x;
        return sign_of(x) ? zero : x;
    }
    // Beyond the thresholds the result is an infinity or a zero, rounded in
    // the current direction by the scaling.
    if (ix >= 0x400C62E4u) {  // |x| >= 11356.5: compare with the thresholds only up here
        if (x > c.ovflthreshold) return __scalbnl(one, 20000);
        if (x < c.unflthreshold) return __scalbnl(one, -40000);
    }
    if (ix < 0x3F8D0000u) return one + x;  // |x| < 2^-114
    int m;
    long_double s_hi, s_lo;
    __exp_pieces(x, zero, &m, &s_hi, &s_lo);
    return __exp_finish(s_hi, s_lo, m);
}

long_double exp2l(long_double x) {
    const exp_log_constants &c = _exp_log;
    unsigned ix = magnitude_top(x);
    if (ix >= 0x7FFF0000u) {
        if (isnanl(x)) return x + x;
        return sign_of(x) ? zero : x;
    }
    if (ix >= 0x400D0000u) {  // |x| >= 16384: overflow, or 2^x below half the least subnormal
        if (!sign_of(x)) return __scalbnl(one, 20000);
        if (ix >= 0x400D01C0u) return __scalbnl(one, -40000);  // x <= -16496
    }
    if (ix < 0x3F8D0000u) return one + x;
    // x = k/32 + r exactly (k by rounding 32x, which is exact), then
    // 2^r = exp(r ln2) with r ln2 as a head and tail.
    long_double t = x * thirty_two;
    int k = static_cast<int>(sign_of(t) ? t - half : t + half);
    long_double r = x - long_double(k) * thirty_second;
    int m = k >> 5, j = k & 31;
    if (iszerol(r)) return __exp_finish(_TBL_expl_hi[j], _TBL_expl_lo[j], m);
    long_double rl, rh = __explog_mul(r, c.ln2, &rl);
    rl = rl + r * c.ln2_lo;
    int m2;
    long_double s_hi, s_lo;
    __exp_pieces(rh, rl, &m2, &s_hi, &s_lo);  // |r ln2| <= ln2/64: m2 = 0, s_hi = 1
    // 2^(j/32) (1 + p), p = s_lo here
    long_double hi = _TBL_expl_hi[j];
    long_double lo = _TBL_expl_lo[j] + hi * s_lo;
    return __exp_finish(hi, lo, m);
}

// For |x| below 2^24 (the table step count must fit an int); the complex
// functions call it a little beyond the overflow threshold.
long_double __k_cexpl(long_double x, int *n) {
    if (!finitel(x) || magnitude_top(x) >= 0x40170000u) {
        *n = 0;
        return expl(x);
    }
    int m;
    long_double s_hi, s_lo;
    __exp_pieces(x, zero, &m, &s_hi, &s_lo);
    *n = m;
    return s_hi + s_lo;
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qexp(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, expl(load(x)));
}
