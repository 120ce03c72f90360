// The complex hyperbolic cosine, and the complex cosine through it.
#include "quad/complex/complex_parts.h"

namespace krm::ldmath {

ldcomplex ccoshl(ldcomplex z) {
    using namespace complex_detail;
    const long_double &x = z.re, &y = z.im;
    if (finitel(x) && finitel(y)) {
        if (iszerol(y)) return ldcomplex{coshl(x), sinhl(x) * y};  // the zero's sign by the product's rule
        long_double s, c;
        sincosl(y, &s, &c);
        long_double ax = fabsl(x);
        if (ax < pair_limit()) {
            // cosh and sinh as pairs, each product rounded once.
            pair sh, ch;
            sinh_cosh_pairs(ax, &sh, &ch);
            long_double im = times_rounded(sh, s);
            return ldcomplex{times_rounded(ch, c), sign_of(x) ? -im : im};
        }
        // e^|x| / 2 times each part.
        ldcomplex e = exp_cis(ax, c * one_half(), s * one_half());
        return ldcomplex{e.re, sign_of(x) ? -e.im : e.im};
    }
    // The special values: cosh is even and conjugates with its argument.
    if (isinfl(x)) {
        if (iszerol(y)) return ldcomplex{fabsl(x), sign_of(x) != sign_of(y) ? -long_double(0) : long_double(0)};
        if (finitel(y)) {
            long_double s, c;
            sincosl(y, &s, &c);
            return ldcomplex{fabsl(x) * c, x * s};
        }
        return ldcomplex{x * x, y - y};
    }
    if (isnanl(x)) {
        if (iszerol(y)) return ldcomplex{x + x, y};
        return ldcomplex{x + y, x + y};
    }
    // A finite x with an infinite or NaN y.
    long_double nan = y - y;
    if (iszerol(x)) return ldcomplex{nan, long_double(0)};
    return ldcomplex{nan, nan};
}

// cos(z) = cosh(iz), and iz = -Im z + i Re z.
ldcomplex ccosl(ldcomplex z) { return ccoshl(ldcomplex{-z.im, z.re}); }

}  // namespace krm::ldmath

extern "C" KRM_API void __Wcos(krm_complex16 *result, const krm_complex16 *z) {
    using namespace krm::ldmath;
    store(result, ccosl(load(z)));
}
