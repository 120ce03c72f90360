// log(1 + x) of a long_double, accurate near zero.
#include "quad/exp_log_tables.h"

namespace {

const long_double zero(0u, 0u, 0u, 0u);
const long_double one(0x3FFF0000u, 0u, 0u, 0u);

}  // namespace

namespace krm::ldmath {

long_double log1pl(long_double x) {
    unsigned hx = top_word(x), ix = hx & 0x7FFFFFFFu;
    if (ix >= 0x7FFF0000u) {
        if (isnanl(x)) return x + x;
        return sign_of(x) ? (x - x) / (x - x) : x;
    }
    if (ix < 0x3F8D0000u) return x;  // |x| < 2^-114, zeros with their sign
    if (ix < 0x3FF70000u) {  // |x| < 2^-8: the series on x itself
        return __log1p_hl(x, zero, nullptr, false);
    }
    if (sign_of(x) && ix >= 0x3FFF0000u) {  // x <= -1
        if (x == -one) return -one / zero;
        return (x - x) / (x - x);
    }
    // 1 + x as an exact pair y + e, then log y + e/y; y lies outside
    // [1 - 2^-9, 1 + 2^-8) here, and |e/y| < 2^-113.
    long_double e;
    long_double y = __explog_add(one, x, &e);
    if (iszerol(e)) return __log_fixed(y, false);
    long_double corr = e / y;
    return __log_fixed(y, false, &corr);
}

}  // namespace krm::ldmath
