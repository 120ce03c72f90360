// atan: a series near zero, the table of atan at 32 breakpoints a binade
// from 2^-7 to 2^7 with atan(x) = atan(b) + atan((x - b) / (1 + x b)), and
// pi/2 - atan(1/x) above. The reduced argument stays within 2^-7, where the
// series q1..q7 is good to 2^-128.
#include <string.h>

#include "platform/fp_flags.h"
#include "quad/inv_trig.h"

namespace {

#include "quad/inv_trig_constants.inc"

const long_double one(0x3FFF0000u, 0u, 0u, 0u);

// atan(s) - s for |s| <= 2^-7. The terms from z^4 on are under 2^-56 of
// the sum and are taken in double precision.
inline long_double series_rest(const long_double &s) {
    krm::platform::keep_fp_flags flags;  // the double arithmetic here leaves no flag behind

    long_double z = s * s;
    double zd = static_cast<double>(z);
    long_double r((q7d * zd + q6d) * zd + q5d);
    long_double q = (((r * z + q4) * z + q3) * z + q2) * z + q1;
    return s * z * q;
}

// hi + lo + s + c as a head and, when tail is not null, a tail: hi
// dominates, s + c is small.
inline long_double gather(const long_double &hi, const long_double &lo, const long_double &s, const long_double &c,
                          long_double *tail) {
    long_double w = c + lo;
    if (!tail) return hi + (s + w);
    long_double r = s + w;
    long_double re = (s - r) + w;
    long_double head = hi + r;
    *tail = ((hi - head) + r) + re;
    return head;
}

// pi/2 - (s + c) as a head and tail (when tail is not null), 0 <= s <= 2^-7.
inline long_double from_pio2(const long_double &s, const long_double &c, long_double *tail) {
    if (!tail) return pio2hi + ((pio2lo - c) - s);
    long_double h = pio2hi - s;
    long_double e = (pio2hi - h) - s;
    long_double t = e + (pio2lo - c);
    long_double head = h + t;
    *tail = (h - head) + t;
    return head;
}

// The row of a breakpoint top word.
inline int row_of(unsigned top) { return static_cast<int>((top - 0x3FF80000u) >> 11); }

// atan(|x|) for finite |x|, with its tail when tail is not null.
long_double atan_magnitude(const long_double &ax, long_double *tail) {
    using namespace krm::ldmath;
    unsigned ix = magnitude_top(ax);
    if (ix < 0x3FF80000u) {  // |x| < 2^-7: the series alone
        if (ix < 0x3FC60000u) {  // |x| < 2^-57: atan(x) rounds to x
            if (tail) *tail = ax * ax * ax * q1;
            return ax;
        }
        long_double c = series_rest(ax);
        long_double head = ax + c;
        if (tail) *tail = (ax - head) + c;
        return head;
    }
    if (ix < 0x40060000u) {
        unsigned tb = (ix + 0x400u) & 0x7FFFF800u;
        int i = row_of(tb);
        long_double b(tb, 0u, 0u, 0u);
        // x - b is exact (b lies within a factor of two of x).
        long_double s = (ax - b) / (one + ax * b);
        return gather(_TBL_atanl_hi[i], _TBL_atanl_lo[i], s, series_rest(s), tail);
    }
    // |x| >= 2^7: pi/2 - atan(1/x); 1/x carries a relative error of 2^-113,
    // which is 2^-120 of the result.
    long_double t = one / ax;
    return from_pio2(t, series_rest(t), tail);
}

}  // namespace

namespace krm::ldmath {

long_double __atan_ratio(long_double y, long_double yl, long_double x, long_double xl, long_double *tail) {
    krm::platform::keep_fp_flags flags;  // the double arithmetic here leaves no flag behind

    if (iszerol(y)) {
        if (tail) *tail = y;
        return y;
    }
    unsigned fy = magnitude_top(y) >> 16, fx = magnitude_top(x) >> 16;
    int k = static_cast<int>(fy) - static_cast<int>(fx);
    // Between 2^-767 and 2^767 both are normal doubles and stay clear of
    // overflow and underflow in every product below; elsewhere scale the
    // greater to [1, 2), so that the lesser stays normal and the split halves
    // are exact.
    bool moderate = fy - 0x3D00u < 0x5FEu && fx - 0x3D00u < 0x5FEu;
    if (!moderate) {
        int ey = ilogbl(y), ex = ilogbl(x);
        k = ey - ex;
        if (k >= -70 && k <= 120) {
            int m = ey > ex ? ey : ex;
            y = __scalbnl(y, -m);
            x = __scalbnl(x, -m);
            yl = __scalbnl(yl, -m);
            xl = __scalbnl(xl, -m);
        }
    }
    if (k < -70) {  // atan(q) = q (1 - q^2/3), and q^2 < 2^-138
        if (tail) *tail = long_double(0);
        return (y + yl) / (x + xl);
    }
    if (k > 120) {
        long_double t = (x + xl) / (y + yl);
        return from_pio2(t, long_double(0), tail);
    }
    bool tails = !iszerol(yl) || !iszerol(xl);
    double qd = static_cast<double>(y) / static_cast<double>(x);
    bool swap = qd > 128.0;
    if (swap || qd < 0.0078125) {
        // A ratio q under 2^-7 (or over 2^7, taken the other way round), with
        // its rounding error from the exact remainder n - q d (and the tails:
        // (n + nl) / (d + dl) = q + (n - q d + nl - q dl) / d).
        const long_double &n = swap ? x : y;
        const long_double &d = swap ? y : x;
        long_double q = n / d, pe;
        long_double p = exact::two_prod(q, d, &pe);
        long_double rem = (n - p) - pe;
        if (tails) rem = rem + ((swap ? xl : yl) - q * (swap ? yl : xl));
        long_double c = series_rest(q) + rem / d;
        if (swap) return from_pio2(q, c, tail);
        long_double head = q + c;
        if (tail) *tail = (q - head) + c;
        return head;
    }
    // The breakpoint nearest the ratio, and s = (y - b x) / (x + b y) with an
    // exact numerator: b has 6 bits and the top 106 bits of x times b are
    // exact; y - b xh is exact since they are within a factor of two.
    uint64_t qbits;
    memcpy(&qbits, &qd, sizeof qbits);
    // qd's top word as a binary128: the exponent rebiased, 16 fraction bits.
    unsigned qtop = static_cast<unsigned>(((qbits >> 52) + (16383 - 1023)) << 16 | ((qbits >> 36) & 0xFFFFu));
    unsigned tb = (qtop + 0x400u) & 0x7FFFF800u;
    int i = row_of(tb);
    long_double b(tb, 0u, 0u, 0u);
    long_double xh = x;
    xh.word[3] &= 0xFFFFFF80u;
    long_double num = (y - b * xh) - b * (x - xh);
    if (tails) num = num + (yl - b * xl);
    long_double s = num / (x + b * y);
    return gather(_TBL_atanl_hi[i], _TBL_atanl_lo[i], s, series_rest(s), tail);
}

long_double mx_atanl(long_double x, long_double *tail) {
    unsigned ix = magnitude_top(x);
    if (ix >= 0x7FFF0000u) {
        if (isnanl(x)) {
            *tail = x + x;
            return *tail;
        }
        // atan(+-inf): pi/2 rounded in the current direction.
        if (sign_of(x)) {
            long_double h = -pio2hi - pio2lo;
            *tail = (-pio2hi - h) - pio2lo;
            return h;
        }
        long_double h = pio2hi + pio2lo;
        *tail = (pio2hi - h) + pio2lo;
        return h;
    }
    long_double head = atan_magnitude(fabsl(x), tail);
    if (sign_of(x)) {
        *tail = -*tail;
        return -head;
    }
    return head;
}

long_double atanl(long_double x) {
    unsigned ix = magnitude_top(x);
    if (ix >= 0x7FFF0000u) {
        long_double tail;
        return mx_atanl(x, &tail);
    }
    long_double head = atan_magnitude(fabsl(x), nullptr);
    return sign_of(x) ? -head : head;
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qatan(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, atanl(load(x)));
}
