// The complex exponential.
#include "quad/complex/complex_parts.h"

namespace {

const long_double zero(0u, 0u, 0u, 0u);
// Within 11000 of zero the exponential is taken in pieces and rounded once
// with each part; past 22800 every product with a sine or cosine that is
// not zero overflows, so larger arguments can stop there.
const long_double in_range(0x400C57C0u, 0u, 0u, 0u);  // 11000
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
    // e^x times the cosine and the sine, each rounded once: from past
    // overflow of e^x alone down to the subnormals.
    if (x < in_range && x > -in_range) return complex_detail::exp_times(complex_detail::pair{x, zero}, c, s);
    if (!sign_of(x)) {
        // e^x as a value and a power of two, the power applied last: the
        // product with a small sine may still be finite.
        int n;
        long_double e = __k_cexpl(x < beyond_any_product ? x : beyond_any_product, &n);
        return ldcomplex{__scalbnl(e * c, n), __scalbnl(e * s, n)};
    }
    long_double e = expl(x);  // zero, or the least subnormal, by the direction
    return ldcomplex{e * c, e * s};
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Wexp(krm_complex16 *result, const krm_complex16 *z) {
    using namespace krm::ldmath;
    store(result, cexpl(load(z)));
}
