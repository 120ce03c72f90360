// The principal logarithm of a COMPLEX(16) value.
#include "quad/complex/complex_parts.h"

namespace {

const long_double half(0x3FFE0000u, 0u, 0u, 0u);
const long_double inf(0x7FFF0000u, 0u, 0u, 0u);

// By the top word of the greater part: from `large` up, or below `tiny`, its
// square leaves the range.
constexpr unsigned large = 0x5F3F0000u;
constexpr unsigned tiny = 0x20BF0000u;
// [0.5, 2): where the sum of squares may lie near 1, and its log cancel.
constexpr unsigned near_one_low = 0x3FFE0000u;
constexpr unsigned near_one_high = 0x40000000u;

}  // namespace

namespace krm::ldmath::complex_detail {

long_double log_modulus(long_double x, long_double y) {
    long_double ax = fabsl(x), ay = fabsl(y);
    if (ax < ay) {
        long_double t = ax;
        ax = ay;
        ay = t;
    }
    unsigned tx = magnitude_top(ax), ty = magnitude_top(ay);
    if (iszerol(ax)) return -half / ax;  // log 0: minus infinity by a division by zero
    // ay/ax below 2^-120: its square is lost against 1 in every bit.
    if (iszerol(ay) || tx - ty >= 0x00780000u) return logl(ax);
    if (tx >= large || tx < tiny) {
        // log(ax) + log(1 + (ay/ax)^2)/2: no square leaves the range.
        long_double q = ay / ax;
        return logl(ax) + half * log1pl(q * q);
    }
    if (tx >= near_one_low && tx < near_one_high) return __k_clog_rl(ax, ay);
    return half * logl(ax * ax + ay * ay);
}

}  // namespace krm::ldmath::complex_detail

namespace krm::ldmath {

ldcomplex clogl(ldcomplex z) {
    const long_double &x = z.re, &y = z.im;
    long_double im = atan2l(y, x);
    if (isinfl(x) || isinfl(y)) return ldcomplex{inf, im};
    if (isnanl(x) || isnanl(y)) return ldcomplex{x + y, im};
    return ldcomplex{complex_detail::log_modulus(x, y), im};
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Wlog(krm_complex16 *result, const krm_complex16 *z) {
    using namespace krm::ldmath;
    store(result, clogl(load(z)));
}
