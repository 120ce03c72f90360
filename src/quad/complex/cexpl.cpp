// The complex exponential.
#include "quad/complex/complex_parts.h"

namespace {

const long_double zero(0u, 0u, 0u, 0u);

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
            if (!finitel(y)) return ldcomplex{zero, zero};
            long_double s, c;
            sincosl(y, &s, &c);
            return ldcomplex{copysignl(zero, c), copysignl(zero, s)};  // +0 times cis(y)
        }
        // A finite or NaN x with an infinite or NaN y.
        long_double nan = y - y;
        return ldcomplex{nan + x, nan + x};
    }
    if (isnanl(x)) return ldcomplex{x + x, x + x};
    long_double s, c;
    sincosl(y, &s, &c);
    if (x > -complex_detail::exp_overflow()) return complex_detail::exp_cis(x, c, s);
    long_double e = expl(x);  // zero, or the least subnormal, by the direction
    return ldcomplex{e * c, e * s};
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Wexp(krm_complex16 *result, const krm_complex16 *z) {
    using namespace krm::ldmath;
    store(result, cexpl(load(z)));
}
