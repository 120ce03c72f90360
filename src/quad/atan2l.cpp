// atan2 by quadrants around atan(|y| / |x|), the IEEE table for zeros and
// infinities; __k_atan2l keeps the tail for callers that multiply the result
// (atan2pil, atan2dl, the complex logarithm and power).
#include "quad/inv_trig.h"

namespace {

#include "quad/inv_trig_constants.inc"

const long_double PIo2 = pio2hi;
const long_double PIo2_lo = pio2lo;

// c + cl (a constant pair) rounded in the current direction, with the sign
// of y and the rest in *tail.
inline long_double constant(const long_double &c, const long_double &cl, bool negative, long_double *tail) {
    long_double h = negative ? -c - cl : c + cl;
    *tail = negative ? (-c - h) - cl : (c - h) + cl;
    return h;
}

}  // namespace

namespace krm::ldmath {

long_double __k_atan2l(long_double y, long_double x, long_double *tail_or_null) {
    // A null tail: the head alone is wanted (atan2l), which saves the tail's
    // work in the common case.
    long_double unused;
    long_double *tail = tail_or_null ? tail_or_null : &unused;
    if (isnanl(x) || isnanl(y)) {
        *tail = x + y;
        return *tail;
    }
    bool yneg = sign_of(y), xneg = sign_of(x);
    long_double ay = fabsl(y), ax = fabsl(x);
    if (iszerol(ay)) {  // atan2(+-0, +x or +0) = +-0; atan2(+-0, -x or -0) = +-pi
        if (!xneg) {
            *tail = y;
            return y;
        }
        return constant(PI, PI_lo, yneg, tail);
    }
    if (isinfl(ax)) {
        if (isinfl(ay)) return xneg ? constant(PI3o4, PI3o4_lo, yneg, tail) : constant(PIo4, PIo4_lo, yneg, tail);
        if (!xneg) {
            *tail = long_double(0);
            return yneg ? -long_double(0) : long_double(0);
        }
        return constant(PI, PI_lo, yneg, tail);
    }
    if (iszerol(ax) || isinfl(ay)) return constant(PIo2, PIo2_lo, yneg, tail);

    long_double at;
    const long_double zero(0u, 0u, 0u, 0u);
    long_double a = __atan_ratio(ay, zero, ax, zero, tail_or_null || xneg ? &at : nullptr);
    long_double head;
    if (xneg) {  // pi - a, with a <= pi/2
        long_double h = PI - a;
        long_double e = (PI - h) - a;
        long_double t = e + (PI_lo - at);
        head = h + t;
        at = (h - head) + t;
    } else {
        head = a;
    }
    if (tail_or_null) *tail = yneg ? -at : at;
    return yneg ? -head : head;
}

long_double atan2l(long_double y, long_double x) { return __k_atan2l(y, x, nullptr); }

long_double atan2pil(long_double y, long_double x) {
    long_double tail;
    long_double h = __k_atan2l(y, x, &tail);
    if (!finitel(h) || iszerol(h)) return h;
    return exact::mul_pair(h, tail, invpi_d, invpi_r, invpi_lo);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qatan2(krm_real16 *result, const krm_real16 *y, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, atan2l(load(y), load(x)));
}
