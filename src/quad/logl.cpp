// Natural logarithm of a long_double: a direct series near 1, elsewhere the
// table kernel.
#include "quad/exp_log_tables.h"

namespace {

const long_double zero(0u, 0u, 0u, 0u);
const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double two(0x40000000u, 0u, 0u, 0u);
const long_double half(0x3FFE0000u, 0u, 0u, 0u);

}  // namespace

namespace krm::ldmath {

long_double logl(long_double x) {
    unsigned hx = top_word(x);
    if (hx >= 0x7FFF0000u || iszerol(x)) {
        if (iszerol(x)) return -one / zero;  // minus infinity
        if (isnanl(x)) return x + x;
        if (hx == 0x7FFF0000u) return x;  // +inf
        return (x - x) / (x - x);  // negative: NaN
    }
    if (hx == 0x3FFF0000u && (x.word[1] | x.word[2] | x.word[3]) == 0) return zero;  // +0 in every direction
    if (hx >= 0x3FFEE0F8u && hx <= 0x3FFF1084u) {
        // About 0.939 to 1.065: the series on u = x - 1 (exact) directly,
        // log1p(u) = u - u^2/2 + s (u^2/2 + R(s^2)), s = u / (2 + u).
        long_double u = x - one;
        long_double s = u / (two + u);
        long_double R = __log_series_R(s);
        long_double hf = u * u * half;
        return u + (s * (hf + R) - hf);
    }
    return __log_fixed(x, false);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qlog(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, logl(load(x)));
}
