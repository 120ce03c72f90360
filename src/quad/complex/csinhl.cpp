// The complex hyperbolic sine, and the complex sine through it.
#include "quad/complex/complex_parts.h"

namespace krm::ldmath {

ldcomplex csinhl(ldcomplex z) {
    using namespace complex_detail;
    const long_double &x = z.re, &y = z.im;
    if (finitel(x) && finitel(y)) {
        if (iszerol(y)) return ldcomplex{sinhl(x), y};
        long_double s, c;
        sincosl(y, &s, &c);
        long_double ax = fabsl(x);
        if (ax < pair_limit()) {
            // sinh and cosh as pairs, each product rounded once.
            pair sh, ch;
            sinh_cosh_pairs(ax, &sh, &ch);
            long_double re = times_rounded(sh, c);
            return ldcomplex{sign_of(x) ? -re : re, times_rounded(ch, s)};
        }
        // e^|x| / 2 times each part.
        ldcomplex e = exp_cis(ax, c * one_half(), s * one_half());
        return ldcomplex{sign_of(x) ? -e.re : e.re, e.im};
    }
    // The special values: sinh is odd and conjugates with its argument.
    if (isinfl(x)) {
        if (iszerol(y)) return ldcomplex{x, y};
        if (finitel(y)) {
            long_double s, c;
            sincosl(y, &s, &c);
            return ldcomplex{x * c, fabsl(x) * s};
        }
        return ldcomplex{x, y - y};
    }
    if (isnanl(x)) {
        if (iszerol(y)) return ldcomplex{x + x, y};
        return ldcomplex{x + y, x + y};
    }
    long_double nan = y - y;
    if (iszerol(x)) return ldcomplex{x, nan};
    return ldcomplex{nan, nan};
}

// sin(z) = -i sinh(iz): with iz = -Im z + i Re z and sinh(iz) = a + ib, the
// sine is b - ia.
ldcomplex csinl(ldcomplex z) {
    ldcomplex w = csinhl(ldcomplex{-z.im, z.re});
    return ldcomplex{w.im, -w.re};
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Wsin(krm_complex16 *result, const krm_complex16 *z) {
    using namespace krm::ldmath;
    store(result, csinl(load(z)));
}
