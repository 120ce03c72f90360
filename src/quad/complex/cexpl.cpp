// The complex exponential.
#include "quad/ldmath.h"

namespace {

// From about 11356, ln of the largest number, exp overflows, though exp(x)
// times a small sine may not; past 22800 every such product overflows, so
// larger arguments can stop there.
const long_double exp_overflow(0x400C62E4u, 0u, 0u, 0u);
const long_double beyond_any_product(0x400D6440u, 0u, 0u, 0u);  // 22800

}  // namespace

namespace krm::ldmath {

ldcomplex cexpl(ldcomplex z) {
    const long_double &x = z.re, &y = z.im;
    if (iszerol(y)) return ldcomplex{expl(x), y};  // keeps the sign of the zero
    if (!finitel(y) || isinfl(x)) {
        if (isinfl(x)) {
            if (!sign_of(x)) {
                if (!finitel(y)) return ldcomplex{x, y - y};
                long_double s, c;
                sincosl(y, &s, &c);
                return ldcomplex{x * c, x * s};  // infinity times cis(y)
            }
            if (!finitel(y)) return ldcomplex{long_double(0), long_double(0)};
            long_double s, c;
            sincosl(y, &s, &c);
            long_double zero(0u, 0u, 0u, 0u);
            return ldcomplex{copysignl(zero, c), copysignl(zero, s)};  // +0 times cis(y)
        }
        // A finite or NaN x with an infinite or NaN y.
        long_double nan = y - y;
        return ldcomplex{nan + x, nan + x};
    }
    long_double s, c;
    sincosl(y, &s, &c);
    if (magnitude_top(x) >= exp_overflow.word[0] && !sign_of(x) && finitel(x)) {
        int n;
        long_double e = __k_cexpl(x < beyond_any_product ? x : beyond_any_product, &n);
        return ldcomplex{__scalbnl(e * c, n), __scalbnl(e * s, n)};
    }
    long_double e = expl(x);
    return ldcomplex{e * c, e * s};
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Wexp(krm_complex16 *result, const krm_complex16 *z) {
    using namespace krm::ldmath;
    store(result, cexpl(load(z)));
}
