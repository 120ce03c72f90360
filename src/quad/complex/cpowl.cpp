// COMPLEX(16) to a COMPLEX(16) power.
#include "quad/complex/complex_parts.h"

namespace {

using namespace krm::ldmath;

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double zero(0u, 0u, 0u, 0u);
// 1/ln 2, 1/pi and pi/ln 2, rounded.
const long_double invln2(0x3FFF7154u, 0x7652B82Fu, 0xE1777D0Fu, 0xFDA0D23Au);
const long_double invpi(0x3FFD45F3u, 0x06DC9C88u, 0x2A53F84Eu, 0xAFA3EA6Au);
const long_double pi_over_ln2(0x40012212u, 0x3045B5DEu, 0xB9C5398Cu, 0xE82C06E5u);

// Exponents with a whole magnitude up to this go by squaring.
constexpr int squaring_limit = 64;

}  // namespace

namespace krm::ldmath {

// z^w = |z|^u e^(-v arg z) cis(u arg z + v ln|z|), with w = u + iv. The
// angle is kept in units of pi, so that a negative real base to a whole
// power lands on a multiple of pi exactly and its sine is an exact zero.
ldcomplex cpowl(ldcomplex z, ldcomplex w) {
    const long_double &u = w.re, &v = w.im;
    long_double theta = atan2pil(z.im, z.re);  // arg z / pi
    long_double modulus = hypotl(z.re, z.im);
    long_double angle = u * theta;  // in units of pi
    long_double size;
    if (iszerol(v)) {
        size = powl(modulus, u);
    } else {
        // log2 of the size: u log2|z| - v theta pi / ln 2, and the angle gains
        // v ln|z| / pi.
        long_double ln_modulus = complex_detail::log_modulus(z.re, z.im);
        size = exp2l(u * ln_modulus * invln2 - v * theta * pi_over_ln2);
        angle = angle + v * ln_modulus * invpi;
    }
    long_double s, c;
    sincospil(angle, &s, &c);
    return ldcomplex{size * c, size * s};
}

ldcomplex cpow_ww(ldcomplex z, ldcomplex w) {
    if (iszerol(w.re) && iszerol(w.im)) return ldcomplex{one, zero};
    if (iszerol(z.re) && iszerol(z.im)) {
        // 0 to a power with a positive real part is 0; otherwise the real
        // power decides between an infinity and a NaN.
        if (iszerol(w.im) && !sign_of(w.re) && !isnanl(w.re)) return ldcomplex{zero, zero};
        long_double r = powl(zero, w.re);
        return ldcomplex{r, iszerol(w.im) ? zero : r - r};
    }
    if (iszerol(w.im) && finitel(w.re)) {
        // A real whole exponent of moderate size: by squaring, exact where
        // the products are.
        long_double n = rintl(w.re);
        if (n == w.re && fabsl(n) <= long_double(squaring_limit)) return cpow_wi(z, static_cast<int>(n));
    }
    return cpowl(z, w);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Wpow(krm_complex16 *result, const krm_complex16 *z, const krm_complex16 *w) {
    using namespace krm::ldmath;
    store(result, cpow_ww(load(z), load(w)));
}
