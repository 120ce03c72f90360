// Sine and cosine together, sharing the reduction and the kernel's work.
#include "quad/ldmath.h"

namespace krm::ldmath {

void sincosl(long_double x, long_double *s, long_double *c) {
    const unsigned ix = magnitude_top(x);
    if (ix <= 0x3FFE9220u) {
        __k_sincosl(x, long_double(0u, 0u, 0u, 0u), s, c);
        return;
    }
    if (ix >= 0x7FFF0000u) {
        *s = *c = x - x;
        return;
    }
    long_double y[2], sn, cs;
    const int n = __rem_pio2l(x, y);
    __k_sincosl(y[0], y[1], &sn, &cs);
    by_quadrant(n, sn, cs, s, c);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qsincos(krm_real16 *sine, krm_real16 *cosine, const krm_real16 *x) {
    using namespace krm::ldmath;
    long_double s, c;
    sincosl(load(x), &s, &c);
    store(sine, s);
    store(cosine, c);
}
