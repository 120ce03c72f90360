// Tangent: the kernel directly up to pi/4, else after reduction by pi/2,
// where an odd quotient asks the kernel for -1/tan.
#include "quad/ldmath.h"

namespace krm::ldmath {

long_double tanl(long_double x) {
    const unsigned ix = magnitude_top(x);
    if (ix <= 0x3FFE9220u) return __k_tanl(x, long_double(0u, 0u, 0u, 0u), 0);
    if (ix >= 0x7FFF0000u) return x - x;
    long_double y[2];
    const int n = __rem_pio2l(x, y);
    return __k_tanl(y[0], y[1], n & 1);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qtan(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, tanl(load(x)));
}
