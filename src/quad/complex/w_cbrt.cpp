// The principal cube root of a COMPLEX(16) value, by modulus and angle.
#include "quad/complex/complex_parts.h"
#include "quad/exp_log_tables.h"

namespace {

using namespace krm::ldmath;
using namespace krm::ldmath::complex_detail;

const long_double three(0x40008000u, 0u, 0u, 0u);
const long_double zero(0u, 0u, 0u, 0u);

// p / 3 as a pair.
pair third(const pair &p) {
    pair r;
    r.hi = __explog_div(p.hi, p.lo, three, zero, &r.lo);
    return r;
}

}  // namespace

namespace krm::ldmath {

// cbrt(z) = cbrt|z| cis(arg z / 3). The modulus's root and the angle are
// taken as e^(ln|z| / 3) and arg z / 3 in head-and-tail form, so that only
// the final products round; the cube root of the modulus alone, its sine and
// cosine each rounded, would give three roundings.
ldcomplex __w_cbrt(const ldcomplex &z) {
    if (iszerol(z.re) && iszerol(z.im)) return z;
    if (!finitel(z.re) || !finitel(z.im)) {
        long_double c = cbrtl(hypotl(z.re, z.im));
        long_double s, co;
        sincosl(atan2l(z.im, z.re) / three, &s, &co);
        return ldcomplex{c * co, c * s};
    }
    pair angle;
    angle.hi = __k_atan2l(z.im, z.re, &angle.lo);
    long_double s, c;
    sincos_pair(third(angle), &s, &c);
    return exp_times(third(log_modulus_pair(z.re, z.im)), c, s);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Wcbrt(krm_complex16 *result, const krm_complex16 *z) {
    using namespace krm::ldmath;
    store(result, __w_cbrt(load(z)));
}
