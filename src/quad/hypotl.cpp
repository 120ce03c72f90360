// hypot: the squares are carried exactly as head and tail, their sum's root
// corrected once by its residual, so that only the last addition rounds.
// Parts far apart settle on the greater alone; very large or very small
// parts are scaled to the greater's binade first.
#include "quad/inv_trig.h"

namespace {

const long_double half(0x3FFE0000u, 0u, 0u, 0u);

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
    int scale = 0;
    if (ta >= 0x5FF30000u || tb <= 0x205B0000u) {
        scale = ilogbl(a);
        a = __scalbnl(a, -scale);
        b = __scalbnl(b, -scale);
    }
    long_double ae, be;
    long_double a2 = exact::two_square(a, &ae);
    long_double b2 = exact::two_square(b, &be);
    long_double s = a2 + b2;
    long_double se = (((a2 - s) + b2) + ae) + be;
    long_double r = sqrtl(s), re;
    long_double rr = exact::two_square(r, &re);
    long_double c = (((s - rr) - re) + se) * half / r;
    long_double h = r + c;
    return scale ? __scalbnl(h, scale) : h;
}

}  // namespace krm::ldmath
