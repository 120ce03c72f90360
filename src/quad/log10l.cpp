// Base-10 logarithm of a long_double: the natural log's head and tail times
// 1/ln10 as a pair, rounded once.
#include "quad/exp_log_tables.h"

namespace {

const long_double zero(0u, 0u, 0u, 0u);
const long_double one(0x3FFF0000u, 0u, 0u, 0u);

}  // namespace

namespace krm::ldmath {

long_double log10l(long_double x) {
    const exp_log_constants &c = _exp_log;
    unsigned hx = top_word(x);
    if (hx >= 0x7FFF0000u || iszerol(x)) {
        if (iszerol(x)) return -one / zero;
        if (isnanl(x)) return x + x;
        if (hx == 0x7FFF0000u) return x;
        return (x - x) / (x - x);
    }
    if (hx == 0x3FFF0000u && (x.word[1] | x.word[2] | x.word[3]) == 0) return zero;
    if (hx < 0x3FFEFF00u || hx >= 0x3FFF0100u) return __log_fixed(x, true);
    // Within [1 - 2^-9, 1 + 2^-8) the log is small beside its bits: the
    // series in head and tail form.
    long_double lo;
    long_double hi = __log_hl(x, &lo, false);
    // (hi + lo) / ln10 with 1/ln10 = c56 + c56lo, c56 of 56 bits: the head
    // of hi (56 bits) times c56 is exact and so is the rest of hi times
    // c56; everything else lies 2^-55 below.
    long_double hh(hi.word[0], hi.word[1], hi.word[2] & 0xFE000000u, 0u);
    long_double rest = ((hi - hh) * c.ivln10_56 + hi * c.ivln10_56lo) + lo * c.ivln10;
    return hh * c.ivln10_56 + rest;
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qlog10(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, log10l(load(x)));
}
