// Half the log of x*x + y*y for |x| >= |y|, the real part of the complex
// log, accurate where the sum of squares is close to 1.
#include "quad/exp_log_tables.h"

namespace {

const long_double zero(0u, 0u, 0u, 0u);
const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double half(0x3FFE0000u, 0u, 0u, 0u);

}  // namespace

namespace krm::ldmath {

long_double __k_clog_rl(long_double x, long_double y) {
    const exp_log_constants &c = _exp_log;
    x = fabsl(x);
    y = fabsl(y);
    if (!finitel(x) || !finitel(y)) return x * x + y * y;  // infinity or NaN
    if (iszerol(x)) return -one / zero;
    // Far from 1 the squares could leave the range: scale both by the
    // power of two that brings x to [1, 2) (exact for x; y loses only bits
    // far below x's).
    int e = 0;
    int ex = static_cast<int>(x.word[0] >> 16) - 16383;
    if (ex > 4000 || ex < -4000) {
        if ((x.word[0] >> 16) == 0) ex = ilogbl(x);
        e = ex;
        x = __scalbnl(x, -e);
        y = __scalbnl(y, -e);
    }
    long_double xx_lo, yy_lo;
    long_double xx = __explog_mul(x, x, &xx_lo);
    long_double yy = __explog_mul(y, y, &yy_lo);
    long_double hi, lo;
    // u = x*x + y*y - 1 as a pair: xx - 1 is exact when xx is in [1/2, 2].
    unsigned t = xx.word[0];
    if (e == 0 && t >= 0x3FFE0000u && t < 0x40000000u) {
        long_double e1;
        long_double u = __explog_add(xx - one, yy, &e1);
        long_double u_lo = e1 + (xx_lo + yy_lo);
        long_double uh = u + u_lo;
        u_lo = u_lo - (uh - u);
        if (magnitude_top(uh) < 0x3FF70000u) {  // |u| < 2^-8: the series
            hi = __log1p_hl(uh, u_lo, &lo, true);
            return (hi + lo) * half;
        }
    }
    long_double e2;
    long_double s = __explog_add(xx, yy, &e2);
    long_double s_lo = e2 + (xx_lo + yy_lo);
    long_double sh = s + s_lo;
    s_lo = s_lo - (sh - s);
    hi = __log_hl(sh, &lo, true);
    lo = lo + s_lo / sh;
    if (e == 0) return (hi + lo) * half;
    // e ln2 + half the log, as a pair
    hi = hi * half;
    lo = lo * half;
    long_double fe(e), e3;
    long_double big = fe * c.ln2hi;  // exact
    long_double h2 = __explog_add(big, hi, &e3);
    return h2 + ((e3 + lo) + fe * c.ln2lo);
}

}  // namespace krm::ldmath
