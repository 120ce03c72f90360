// The tangent kernel on [-pi/4, pi/4], x + y the reduced argument with its
// tail; with k = 1 it gives -1/tan instead, for the odd quadrants.
//
// Below 0.15625 tan is an odd polynomial. Above, with the nearest breakpoint
// t and the small part s,
//   tan(t + s) = tan t + tan s (1 + tan^2 t) / (1 - tan t tan s),
// the second term small. Either way the value comes as a head and the
// rounding error of its last addition, so that -1/tan can be taken to the
// last bit. The polynomials' last terms, under 2^-60 of the result, are
// summed in double arithmetic.
//
// tan s for the small part has coefficients tt1..tt6 of its own: the
// thirteen of the polynomial range are far more than s needs.
#include "platform/fp_flags.h"
#include "quad/ldmath.h"
#include "quad/trig_tables.h"

namespace {

#include "quad/k_tanl.inc"

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double onem(0x3FFEFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu);

inline long_double negated(long_double v) {
    v.word[0] ^= 0x80000000u;
    return v;
}

// -1/(hi + lo), lo below an ulp of hi, to the last bit. q0, the reciprocal
// in double, has 53 bits, and hh, hi cut to 60 bits, and hl = hi - hh have
// few enough that q0 hh and q0 hl are exact: so e = q0 hi + 1 comes out
// exact but for far-down bits, and -1/hi = q0 (1 + e + e^2 + ...), with
// e^3 below 2^-159.
inline long_double minus_reciprocal(const long_double &hi, const long_double &lo) {
    const unsigned ih = krm::ldmath::magnitude_top(hi);
    if (ih < 0x3C010000u || ih >= 0x43FE0000u) {  // beyond the normal doubles
        const long_double q = negated(one / hi);
        return q + q * (q * lo);
    }
    const long_double q0(-1.0 / static_cast<double>(hi));
    long_double hh = hi;
    hh.word[2] &= 0xFFE00000u;
    hh.word[3] = 0;
    const long_double hl = hi - hh;
    const long_double e = (q0 * hh + one) + q0 * hl;
    return q0 + q0 * ((e + e * e) + q0 * lo);
}

}  // namespace

namespace krm::ldmath {

long_double __k_tanl(long_double x, long_double y, int k) {
    krm::platform::keep_fp_flags flags;  // the low-order terms are summed in doubles
    const unsigned ix = magnitude_top(x);
    long_double hi, lo;
    if (ix < 0x3FFC4000u) {  // |x| < 0.15625
        if (ix < 0x3FC60000u) {  // |x| < 2^-57: tan x is x rounded
            if (static_cast<int>(x * onem) < 1) {
                if (k == 0) return x;
                return minus_reciprocal(x, y);
            }
        }
        const long_double z = x * x;
        long_double p;
        if (ix >= 0x3FF80000u) {  // |x| >= 2^-7; the last four terms in double
            const double zd = short_double(z);
            const long_double w(zd * (t10 + zd * (t11 + zd * (t12 + zd * t13))));
            p = t1 + z * (t2 + z * (t3 + z * (t4 + z * (t5 + z * (t6 + z * (t7 + z * (t8 + z * (t9 + w))))))));
        } else
            p = t1 + z * (t2 + z * (t3 + z * (t4 + z * (t5 + z * (t6 + z * t7)))));
        const long_double r = x * z * p;
        const long_double c = iszerol(y) ? r : y + r;
        hi = x + c;
        if (k == 0) return hi;
        lo = c - (hi - x);
        return minus_reciprocal(hi, lo);
    }
    const unsigned top = trig_breakpoint_top(ix);
    const int i = trig_row(top);
    const long_double d = fabsl(x) - long_double(top, 0u, 0u, 0u);  // exact
    const long_double s = iszerol(y) ? d : sign_of(x) ? d - y : d + y;
    const long_double z = s * s;
    const double zd = short_double(z);
    const long_double w(zd * (tt5 + zd * tt6));
    const long_double ts = s + s * z * (tt1 + z * (tt2 + z * (tt3 + z * (tt4 + w))));
    const long_double &T = _TBL_tanl_hi[i];
    const long_double c = _TBL_tanl_lo[i] + ts * (one + T * T) / (one - T * ts);
    hi = T + c;
    if (k == 0) return sign_of(x) ? negated(hi) : hi;
    lo = c - (hi - T);
    const long_double r = minus_reciprocal(hi, lo);
    return sign_of(x) ? negated(r) : r;
}

}  // namespace krm::ldmath
