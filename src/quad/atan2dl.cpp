// atan2 in degrees: the radian result as head and tail, times 180/pi as a
// pair, so that only the last addition rounds (atan2d(-0, -1) = -180).
#include "quad/inv_trig.h"

namespace {

#include "quad/inv_trig_constants.inc"

}  // namespace

namespace krm::ldmath {

long_double atan2dl(long_double y, long_double x) {
    long_double tail;
    long_double h = __k_atan2l(y, x, &tail);
    if (!finitel(h) || iszerol(h)) return h;
    return exact::mul_pair(h, tail, pitod_d, pitod_r, pitod_lo);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qatn2d(krm_real16 *result, const krm_real16 *y, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, atan2dl(load(y), load(x)));
}
