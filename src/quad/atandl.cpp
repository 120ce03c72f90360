// atan in degrees: the radian result as head and tail, times 180/pi as a
// pair, so that only the last addition rounds (atand(1) = 45 exactly).
#include "quad/inv_trig.h"

namespace {

#include "quad/inv_trig_constants.inc"

}  // namespace

namespace krm::ldmath {

long_double atandl(long_double x) {
    if (isnanl(x)) return x + x;
    long_double tail;
    long_double h = mx_atanl(x, &tail);
    if (iszerol(h)) return h;
    return exact::mul_pair(h, tail, pitod_d, pitod_r, pitod_lo);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qatand(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, atandl(load(x)));
}
