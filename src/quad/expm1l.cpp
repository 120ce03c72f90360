// exp(x) - 1 of a long_double, accurate near zero.
#include "quad/exp_log_tables.h"

namespace {

const long_double zero(0u, 0u, 0u, 0u);
const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double tiny(0x00010000u, 0u, 0u, 0u);  // 2^-16382

}  // namespace

namespace krm::ldmath {

long_double expm1l(long_double x) {
    unsigned ix = magnitude_top(x);
    if (ix >= 0x7FFF0000u) {
        if (isnanl(x)) return x + x;
        return sign_of(x) ? -one : x;
    }
    if (ix < 0x3F8D0000u) return x;  // |x| < 2^-114: x itself, zeros with their sign
    if (ix >= 0x40054000u) {  // |x| >= 80: exp(x) alone, or -1 beyond the last bit
        if (sign_of(x)) return tiny - one;
        return expl(x);
    }
    if (ix >= 0x3FFF0000u) {
        // |x| >= 1: exp(x) is beyond e or below 1/e, so the subtraction of 1
        // cancels little and the plain exp pieces suffice; 2^m s_hi - 1 is
        // still taken exactly, and only the last addition rounds.
        int m;
        long_double s_hi, s_lo, err;
        __exp_pieces(x, zero, &m, &s_hi, &s_lo);
        long_double d = __explog_add(__scalbnl(s_hi, m), -one, &err);
        return d + (err + __scalbnl(s_lo, m));
    }
    // Nearer zero the result may be far smaller than the table's row: the
    // reduction, the polynomial and the row times it all as pairs.
    long_double lo;
    long_double hi = __expm1_hl(x, &lo);
    return hi + lo;
}

}  // namespace krm::ldmath
