// The principal cube root of a COMPLEX(16) value, by modulus and angle.
#include "quad/ldmath.h"

namespace {

const long_double three(0x40008000u, 0u, 0u, 0u);

}  // namespace

namespace krm::ldmath {

ldcomplex __w_cbrt(const ldcomplex &z) {
    long_double r = hypotl(z.re, z.im);
    if (iszerol(r)) return z;
    long_double t = atan2l(z.im, z.re) / three;
    long_double c = cbrtl(r);
    long_double s, co;
    sincosl(t, &s, &co);
    return ldcomplex{c * co, c * s};
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Wcbrt(krm_complex16 *result, const krm_complex16 *z) {
    using namespace krm::ldmath;
    store(result, __w_cbrt(load(z)));
}
