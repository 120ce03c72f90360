// Sine: the kernel directly up to pi/4, else after reduction by pi/2.
#include "quad/ldmath.h"

namespace krm::ldmath {

long_double sinl(long_double x) {
    const unsigned ix = magnitude_top(x);
    if (ix <= 0x3FFE9220u) return __k_sinl(x, long_double(0u, 0u, 0u, 0u));
    if (ix >= 0x7FFF0000u) return x - x;  // NaN or infinity: a NaN
    long_double y[2];
    const int n = __rem_pio2l(x, y);
    switch (n & 3) {
    case 0: return __k_sinl(y[0], y[1]);
    case 1: return __k_cosl(y[0], y[1]);
    case 2: return -__k_sinl(y[0], y[1]);
    default: return -__k_cosl(y[0], y[1]);
    }
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qsin(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, sinl(load(x)));
}
