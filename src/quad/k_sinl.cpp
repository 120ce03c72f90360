// The sine and cosine kernels on [-pi/4, pi/4], x + y the reduced argument
// with its tail.
//
// Below 0.15625 they are odd and even polynomials in x. Above, x is split
// into the nearest breakpoint t (32 a binade, tabled to twice the working
// precision) and a small part s, |s| <= 2^-7 or so, and
//   sin(t + s) = sin t + (cos t sin s + sin t (cos s - 1)),
//   cos(t + s) = cos t + (cos t (cos s - 1) - sin t sin s),
// the bracket being small, so that its rounding errors stay far below the
// last bit of the result. The last two terms of each polynomial are summed
// in double arithmetic: they are under 2^-60 of the result, so that their
// own rounding is far below its last bit too.
#include "platform/fp_flags.h"
#include "quad/ldmath.h"
#include "quad/trig_tables.h"

namespace {

#include "quad/k_sinl.inc"

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
// For an argument below 2^-57 the result is the argument (or 1) rounded;
// the product by onem, truncated, is always 0 there.
const long_double onem(0x3FFEFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu);

inline long_double negated(long_double v) {
    v.word[0] ^= 0x80000000u;
    return v;
}

// The small part of the table method and its breakpoint's row, for |x| of
// top word ix and the tail y.
inline long_double small_part(const long_double &x, const long_double &y, unsigned ix, int &row) {
    const unsigned top = krm::ldmath::trig_breakpoint_top(ix);
    row = krm::ldmath::trig_row(top);
    const long_double t(top, 0u, 0u, 0u);
    const long_double d = krm::ldmath::fabsl(x) - t;  // exact
    if (krm::ldmath::iszerol(y)) return d;  // a direct call: no tail to add
    return krm::ldmath::sign_of(x) ? d - y : d + y;
}

// sin s - s and cos s - 1 for the small part, z = s * s.
inline long_double sin_rest(const long_double &s, const long_double &z, double zd) {
    const long_double w(zd * (pp4 + zd * pp5));
    return s * z * (pp1 + z * (pp2 + z * (pp3 + w)));
}
inline long_double cos_rest(const long_double &z, double zd) {
    const long_double w(zd * (qq4 + zd * qq5));
    return z * (qq1 + z * (qq2 + z * (qq3 + w)));
}

}  // namespace

namespace krm::ldmath {

namespace {

// The table method's common step: the row of the breakpoint t, and the
// sine of the small part s = |x| - t (+ y) and its cosine less one.
struct table_step {
    int row;
    long_double sine, cosine;
};

inline table_step table_parts(const long_double &x, const long_double &y, unsigned ix) {
    table_step t;
    const long_double s = small_part(x, y, ix, t.row);
    const long_double z = s * s;
    const double zd = short_double(z);
    t.sine = s + sin_rest(s, z, zd);
    t.cosine = cos_rest(z, zd);
    return t;
}

// sin(t + s) = sin t + (sin t (cos s - 1) + cos t sin s), x's sign last.
inline long_double table_sin(const table_step &t, const long_double &x) {
    const int i = t.row;
    const long_double r =
        _TBL_sinl_hi[i] + ((_TBL_sinl_lo[i] + _TBL_sinl_hi[i] * t.cosine) + _TBL_cosl_hi[i] * t.sine);
    return sign_of(x) ? negated(r) : r;
}

// cos(t + s) = cos t + (cos t (cos s - 1) - sin t sin s).
inline long_double table_cos(const table_step &t) {
    const int i = t.row;
    return _TBL_cosl_hi[i] + ((_TBL_cosl_lo[i] + _TBL_cosl_hi[i] * t.cosine) - _TBL_sinl_hi[i] * t.sine);
}

}  // namespace

long_double __k_sinl(long_double x, long_double y) {
    krm::platform::keep_fp_flags flags;  // the low-order terms are summed in doubles
    const unsigned ix = magnitude_top(x);
    if (ix < 0x3FFC4000u) {  // |x| < 0.15625
        if (ix < 0x3FC60000u) {  // |x| < 2^-57
            if (static_cast<int>(x * onem) < 1) return x;
        }
        const long_double z = x * x;
        long_double p;
        if (ix >= 0x3FF80000u) {  // |x| >= 2^-7
            const double zd = short_double(z);
            const long_double w(zd * (p7 + zd * p8));
            p = p1 + z * (p2 + z * (p3 + z * (p4 + z * (p5 + z * (p6 + w)))));
        } else
            p = p1 + z * (p2 + z * (p3 + z * (p4 + z * (p5 + z * p6))));
        const long_double r = x * z * p;
        return x + (iszerol(y) ? r : y + r);
    }
    return table_sin(table_parts(x, y, ix), x);
}

long_double __k_cosl(long_double x, long_double y) {
    krm::platform::keep_fp_flags flags;  // the low-order terms are summed in doubles
    const unsigned ix = magnitude_top(x);
    if (ix < 0x3FFC4000u) {
        if (ix < 0x3FC60000u) {
            if (static_cast<int>(x * onem) < 1) return one;
        }
        const long_double z = x * x;
        long_double q;
        if (ix >= 0x3FF80000u) {
            const double zd = short_double(z);
            const long_double w(zd * (q7 + zd * q8));
            q = q1 + z * (q2 + z * (q3 + z * (q4 + z * (q5 + z * (q6 + w)))));
        } else
            q = q1 + z * (q2 + z * (q3 + z * (q4 + z * (q5 + z * q6))));
        // cos(x + y) = cos x - y sin x, near enough.
        const long_double r = z * q;
        return one + (iszerol(y) ? r : r - x * y);
    }
    return table_cos(table_parts(x, y, ix));
}

void __k_sincosl(long_double x, long_double y, long_double *sn, long_double *cs) {
    krm::platform::keep_fp_flags flags;  // the low-order terms are summed in doubles
    const unsigned ix = magnitude_top(x);
    if (ix < 0x3FFC4000u) {
        *sn = __k_sinl(x, y);
        *cs = __k_cosl(x, y);
        return;
    }
    const table_step t = table_parts(x, y, ix);
    *sn = table_sin(t, x);
    *cs = table_cos(t);
}

}  // namespace krm::ldmath
