// asin(x) = atan(x / sqrt(1 - x^2)), with 1 - x^2 and its root carried as
// head and tail so that the ratio loses nothing; a small x is its own asin.
#include "quad/inv_trig.h"

namespace {

#include "quad/inv_trig_constants.inc"

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double half(0x3FFE0000u, 0u, 0u, 0u);
const long_double sixth(0x3FFC5555u, 0x55555555u, 0x55555555u, 0x55555555u);

}  // namespace

namespace krm::ldmath {

long_double __root_one_minus_square(const long_double &x, long_double *rl) {
    long_double pe;
    long_double p = exact::two_prod(x, x, &pe);
    long_double w = one - p;  // p < 1
    long_double we = ((one - w) - p) - pe;
    long_double r = sqrtl(w), re;
    long_double rr = exact::two_prod(r, r, &re);
    // w - r^2 is exact: r^2 lies within an ulp of w.
    *rl = (((w - rr) - re) + we) * half / r;
    return r;
}

long_double __asin_hl(long_double x, long_double *tail) {
    unsigned ix = magnitude_top(x);
    if (ix < 0x3FC60000u) {  // |x| < 2^-57: asin(x) = x + x^3/6 rounds to x
        *tail = x * x * x * sixth;
        return x;
    }
    long_double ax = fabsl(x), head;
    if (ax == one) {
        head = pio2hi + pio2lo;
        *tail = (pio2hi - head) + pio2lo;
    } else {
        long_double rl, at;
        long_double r = __root_one_minus_square(ax, &rl);
        long_double a = __atan_ratio(ax, r, &at);
        // atan(x / (r + rl)) = atan(x / r) - x rl / (x^2 + r^2), and x^2 + r^2 = 1.
        long_double c = at - ax * rl;
        head = a + c;
        *tail = (a - head) + c;
    }
    if (sign_of(x)) {
        *tail = -*tail;
        return -head;
    }
    return head;
}

long_double asinl(long_double x) {
    unsigned ix = magnitude_top(x);
    if (ix >= 0x3FFF0000u) {
        if (isnanl(x)) return x + x;
        if (fabsl(x) != one) return (x - x) / (x - x);
    }
    long_double tail;
    return __asin_hl(x, &tail);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qasin(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, asinl(load(x)));
}
