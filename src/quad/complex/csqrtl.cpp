// The principal square root of a COMPLEX(16) value.
#include "quad/ldmath.h"

namespace {

const long_double half(0x3FFE0000u, 0u, 0u, 0u);
const long_double two8999(0x63260000u, 0u, 0u, 0u);
const long_double twom4500(0x2E6B0000u, 0u, 0u, 0u);
const long_double twom9001(0x1CD60000u, 0u, 0u, 0u);
const long_double two4500(0x51930000u, 0u, 0u, 0u);
const long_double two112(0x406F0000u, 0u, 0u, 0u);
const long_double twom56(0x3FC70000u, 0u, 0u, 0u);
const long_double inf(0x7FFF0000u, 0u, 0u, 0u);
const long_double zero(0u, 0u, 0u, 0u);

// Part sizes by top word: at or above `big` the sum of modulus and |x| could
// overflow; below `small` in both parts the squares underflow.
constexpr unsigned big = 0x5F3F0000u;
constexpr unsigned small = 0x20BF0001u;

}  // namespace

namespace krm::ldmath {

ldcomplex csqrtl(ldcomplex z) {
    const long_double &x = z.re, &y = z.im;
    if (!finitel(x) || !finitel(y)) {
        if (isinfl(y)) return ldcomplex{inf, y};
        if (isinfl(x)) {
            if (!sign_of(x)) return ldcomplex{x, isnanl(y) ? y : copysignl(zero, y)};
            if (isnanl(y)) return ldcomplex{y, inf};  // the sign of the infinity is unspecified
            return ldcomplex{zero, copysignl(inf, y)};
        }
        long_double nan = x + y;
        return ldcomplex{nan, nan};
    }
    if (iszerol(y)) {
        if (iszerol(x)) return ldcomplex{zero, y};
        if (!sign_of(x)) return ldcomplex{sqrtl(x), y};
        return ldcomplex{zero, copysignl(sqrtl(-x), y)};
    }
    if (iszerol(x)) {
        // sqrt(|y|/2) for both parts; a halving below the normal range would
        // round, so a subnormal y is lifted by 2^112 first.
        long_double ay = fabsl(y);
        long_double t = magnitude_top(ay) >= 0x00020000u ? sqrtl(ay * half) : sqrtl(ay * two112 * half) * twom56;
        return ldcomplex{t, copysignl(t, y)};
    }
    // t = sqrt((|z| + |x|) / 2). Near the ends the parts are scaled by an odd
    // power of two, which takes the halving's place, and t is scaled back.
    long_double ax = fabsl(x), ay = fabsl(y), t;
    unsigned top = magnitude_top(ax) > magnitude_top(ay) ? magnitude_top(ax) : magnitude_top(ay);
    if (top >= big) {
        long_double sx = ax * twom9001, sy = ay * twom9001;
        t = sqrtl(hypotl(sx, sy) + sx) * two4500;
    } else if (top < small) {
        long_double sx = ax * two8999, sy = ay * two8999;
        t = sqrtl(hypotl(sx, sy) + sx) * twom4500;
    } else {
        t = sqrtl(half * (hypotl(ax, ay) + ax));
    }
    // The other part is y / 2t, from the unscaled y so that it keeps every
    // bit down to where the result itself underflows.
    long_double other = ay / (t + t);
    if (!sign_of(x)) return ldcomplex{t, copysignl(other, y)};
    return ldcomplex{other, copysignl(t, y)};
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Wsqrt(krm_complex16 *result, const krm_complex16 *z) {
    using namespace krm::ldmath;
    store(result, csqrtl(load(z)));
}
