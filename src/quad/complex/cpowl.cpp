// COMPLEX(16) to a COMPLEX(16) power.
#include "quad/complex/complex_parts.h"

namespace {

using namespace krm::ldmath;
using namespace krm::ldmath::complex_detail;

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double zero(0u, 0u, 0u, 0u);

// Exponents with a whole magnitude up to this go by squaring.
constexpr int squaring_limit = 64;

}  // namespace

namespace krm::ldmath {

// z^w = e^(u L - v T) cis(u T + v L), with w = u + iv, L = ln |z| and
// T = arg z, each exponent and angle carried as a head and tail so that
// only the final products round. A real base stays on the real power where
// the result is real, so that a negative base to a whole power is exact.
ldcomplex cpowl(ldcomplex z, ldcomplex w) {
    const long_double &u = w.re, &v = w.im;
    if (iszerol(z.im) && iszerol(v) && (!sign_of(z.re) || rintl(u) == u)) return ldcomplex{powl(z.re, u), zero};
    if (!finitel(z.re) || !finitel(z.im) || !finitel(u) || !finitel(v)) {
        // Infinities and NaNs: exp(w log z) on the class-order functions.
        ldcomplex l = clogl(z);
        return cexpl(ldcomplex{u * l.re - v * l.im, u * l.im + v * l.re});
    }
    pair L = log_modulus_pair(z.re, z.im);
    pair T;
    T.hi = __k_atan2l(z.im, z.re, &T.lo);
    pair size = sum(times(u, L), times(-v, T));
    pair angle = sum(times(u, T), times(v, L));
    long_double s, c;
    sincos_pair(angle, &s, &c);
    if (!(size.hi < long_double(11000)) || !(size.hi > long_double(-11400))) {
        // Far out of range: exp on the head alone overflows or underflows
        // as it should.
        long_double e = expl(size.hi);
        return ldcomplex{e * c, e * s};
    }
    return exp_times(size, c, s);
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
