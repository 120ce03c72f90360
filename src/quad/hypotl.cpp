// hypot: the squares are carried exactly, and the root of their sum is a
// double-precision start corrected by one Newton step from the exact
// residual, so that only the last addition rounds. Parts far apart settle on
// the greater alone; large or small parts are scaled to the greater's binade
// first.
#include <math.h>

#include "platform/fp_flags.h"
#include "quad/inv_trig.h"

namespace {

// Magnitude order on the words.
inline bool less_magnitude(const long_double &a, const long_double &b) {
    unsigned ta = a.word[0] & 0x7FFFFFFFu, tb = b.word[0] & 0x7FFFFFFFu;
    if (ta != tb) return ta < tb;
    for (int i = 1; i < 4; ++i)
        if (a.word[i] != b.word[i]) return a.word[i] < b.word[i];
    return false;
}

}  // namespace

namespace krm::ldmath {

long_double hypotl(long_double x, long_double y) {
    krm::platform::keep_fp_flags flags;  // the double arithmetic here leaves no flag behind

    long_double a = fabsl(x), b = fabsl(y);
    if (isinfl(a) || isinfl(b)) return isinfl(a) ? a : b;  // even beside a NaN
    if (isnanl(a) || isnanl(b)) return x + y;
    if (less_magnitude(a, b)) {
        long_double t = a;
        a = b;
        b = t;
    }
    unsigned ta = a.word[0], tb = b.word[0];
    if (ta - tb >= 0x730000u || iszerol(b)) return a + b;  // b^2 below 2^-230 of a^2
    // The root starts in double precision, so both parts are scaled to the
    // greater's binade whenever the sum of squares could leave the double
    // range: beyond 2^449 or below 2^-448, well inside the limits where the
    // squares themselves would overflow or underflow (0x5FF30000, 0x205B0000).
    int scale = 0;
    if (ta >= 0x41C00000u || tb <= 0x3E3F0000u) {
        scale = ilogbl(a);
        a = __scalbnl(a, -scale);
        b = __scalbnl(b, -scale);
    }
    // Each square exactly as three parts: with A the double nearest a and
    // al = a - A (exact, at most 60 bits), A^2 and 2 A al are exact and
    // al^2 is under 2^-106 of the square.
    long_double A(static_cast<double>(a)), B(static_cast<double>(b));
    long_double al = a - A, bl = b - B;
    long_double A1 = A * A, B1 = B * B;
    long_double s = A1 + B1;
    long_double se = ((A1 - s) + B1) + (((A + A) * al + (B + B) * bl) + (al * al + bl * bl));
    // The root of s + se: H from double precision, then one Newton step with
    // its second-order term, sqrt(H^2 + e) = H + c - c^2 / (2H), c = e / (2H).
    // H^2 is exact and within 2^-52 of s, so s - H^2 is exact too.
    double h0 = sqrt(static_cast<double>(s));
    long_double H(h0);
    long_double c = ((s - H * H) + se) / (H + H);
    double cd = static_cast<double>(c);
    long_double h = H + (c - long_double(cd * cd * 0.5 / h0));
    return scale ? __scalbnl(h, scale) : h;
}

}  // namespace krm::ldmath
