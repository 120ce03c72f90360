// Natural logarithm of a long_double.
#include "quad/exp_log_tables.h"

namespace {

const long_double zero(0u, 0u, 0u, 0u);
const long_double one(0x3FFF0000u, 0u, 0u, 0u);

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
    return __log_hl(x, nullptr, false);  // the head is the sum rounded once
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qlog(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, logl(load(x)));
}
