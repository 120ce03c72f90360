// acos in degrees: the radian result as head and tail, times 180/pi as a
// pair, so that only the last addition rounds (acosd(-1) = 180 exactly).
#include "quad/inv_trig.h"

namespace {

#include "quad/inv_trig_constants.inc"

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double zero(0u, 0u, 0u, 0u);

}  // namespace

namespace krm::ldmath {

long_double acosdl(long_double x) {
    if (magnitude_top(x) >= 0x3FFF0000u) {
        if (isnanl(x)) return x + x;
        if (fabsl(x) != one) return zero / zero;
    }
    long_double tail;
    long_double h = __acos_hl(x, &tail);
    if (iszerol(h)) return h;
    return exact::mul_pair(h, tail, pitod_d, pitod_r, pitod_lo);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qacosd(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, acosdl(load(x)));
}
