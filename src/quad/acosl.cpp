// acos(x) = atan(sqrt(1 - x^2) / |x|), taken from pi for a negative x, with
// the root carried as head and tail; acos(1) = 0 exactly, acos(-1) = pi.
#include "quad/inv_trig.h"

namespace {

#include "quad/inv_trig_constants.inc"

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double zero(0u, 0u, 0u, 0u);

}  // namespace

namespace krm::ldmath {

long_double __acos_hl(long_double x, long_double *tail) {
    unsigned ix = magnitude_top(x);
    if (ix < 0x3FC60000u) {  // |x| < 2^-57: pi/2 - x, the cube term below 2^-170
        long_double t = pio2lo - x;
        long_double head = pio2hi + t;
        if (tail) *tail = (pio2hi - head) + t;
        return head;
    }
    long_double ax = fabsl(x), a, at;
    bool negative = sign_of(x);
    if (ax == one) {
        a = zero;
        at = zero;
    } else {
        long_double rl;
        long_double r = __root_one_minus_square(ax, &rl);
        a = __atan_ratio(r, rl, ax, zero, tail || negative ? &at : nullptr);
    }
    if (!negative) {
        if (tail) *tail = at;
        return a;
    }
    // pi - acos(|x|)
    long_double h = PI - a;
    long_double e = (PI - h) - a;
    long_double t = e + (PI_lo - at);
    long_double head = h + t;
    if (tail) *tail = (h - head) + t;
    return head;
}

long_double acosl(long_double x) {
    unsigned ix = magnitude_top(x);
    if (ix >= 0x3FFF0000u) {
        if (isnanl(x)) return x + x;
        if (fabsl(x) != one) return zero / zero;
    }
    return __acos_hl(x, nullptr);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qacos(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, acosl(load(x)));
}
