// asin(x) = atan(x / sqrt(1 - x^2)), with 1 - x^2 and its root carried as
// head and tail so that the ratio loses nothing; a small x is its own asin.
#include <math.h>

#include "platform/fp_flags.h"
#include "quad/inv_trig.h"

namespace {

#include "quad/inv_trig_constants.inc"

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double sixth(0x3FFC5555u, 0x55555555u, 0x55555555u, 0x55555555u);

}  // namespace

namespace krm::ldmath {

long_double __root_one_minus_square(const long_double &x, long_double *rl) {
    krm::platform::keep_fp_flags flags;  // the double arithmetic here leaves no flag behind

    long_double w0, we0;
    if (magnitude_top(x) >= 0x3FFE0000u) {
        // From 1/2 on, (1 - x)(1 + x): 1 - x is exact and carries the
        // cancellation, so that 1 - x^2 keeps its full relative accuracy up to
        // x = 1 (the square's own tail would be a large part of it there).
        // The product is split at the nearest doubles D and U: D U is exact,
        // and so are D ul and dl U, the rest at most 60 bits each.
        long_double d = one - x;
        long_double u = one + x;
        long_double ue = (one - u) + x;
        long_double D(static_cast<double>(d)), U(static_cast<double>(u));
        long_double dl = d - D, ul = u - U;
        w0 = D * U;
        we0 = ((D * ul + dl * U) + dl * ul) + d * ue;
    } else {
        // x^2 split the same way at X, the double nearest x.
        long_double X(static_cast<double>(x));
        long_double xl = x - X;
        long_double p = X * X;
        long_double pe = (X + X) * xl + xl * xl;
        w0 = one - p;  // 3/4 < 1 - p
        we0 = ((one - w0) - p) - pe;
    }
    // w0 + we0 is 1 - x^2 to about 2^-160, we0 under 2^-52 of w0.
    const long_double &w = w0, &we = we0;
    // The root from a double start H: H^2 is exact and within 2^-52 of w,
    // so w - H^2 is exact, and one Newton step with its second-order term,
    // sqrt(H^2 + e) = H + c - c^2 / (2H) with c = e / (2H), is good to
    // 2^-159; the rounding of H + that is kept in *rl.
    double h0 = sqrt(static_cast<double>(w));
    long_double H(h0);
    long_double c = ((w - H * H) + we) / (H + H);
    double cd = static_cast<double>(c);
    long_double corr = c - long_double(cd * cd * 0.5 / h0);
    long_double r = H + corr;
    *rl = (H - r) + corr;
    return r;
}

long_double __asin_hl(long_double x, long_double *tail) {
    unsigned ix = magnitude_top(x);
    if (ix < 0x3FC60000u) {  // |x| < 2^-57: asin(x) = x + x^3/6 rounds to x
        if (tail) *tail = x * x * x * sixth;
        return x;
    }
    long_double ax = fabsl(x), head;
    if (ax == one) {
        head = pio2hi + pio2lo;
        if (tail) *tail = (pio2hi - head) + pio2lo;
    } else {
        long_double rl;
        long_double r = __root_one_minus_square(ax, &rl);
        head = __atan_ratio(ax, long_double(0u, 0u, 0u, 0u), r, rl, tail);
    }
    if (sign_of(x)) {
        if (tail) *tail = -*tail;
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
    return __asin_hl(x, nullptr);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qasin(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, asinl(load(x)));
}
