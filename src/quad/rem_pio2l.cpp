// Reduction of an argument by pi/2 for the trigonometric functions.
//
// Below 2^24 the quotient n fits 24 bits, and pi/2 is held in pieces of 89
// bits, so that n times a piece is exact: x - n pio2_1 is then exact too, and
// one more piece makes the remainder good to about 2^-177. When that
// remainder is under 2^-52 (x lies close to a multiple of pi/2) a second
// piece and its tail take it on to far more bits than any REAL(16) argument
// below 2^24 can cancel. Larger arguments go to the whole-number reduction
// of the platform, which is exact however large they are.
#include "platform/rem_pio2m.h"
#include "quad/ldmath.h"

namespace {

#include "quad/rem_pio2l.inc"

const long_double zero(0u, 0u, 0u, 0u);
const long_double half(0x3FFE0000u, 0u, 0u, 0u);
const long_double two24l(0x40170000u, 0u, 0u, 0u);

}  // namespace

namespace krm::ldmath {

int __rem_pio2l(long_double x, long_double *y) {
    const unsigned ix = magnitude_top(x);
    if (ix < 0x3FFE921Fu || (ix == 0x3FFE921Fu && fabsl(x) <= pio4)) {
        y[0] = x;
        y[1] = zero;
        return 0;
    }
    const long_double ax = fabsl(x);
    int n;
    if (ix < 0x40170000u) {  // |x| < 2^24
        n = static_cast<int>(ax * invpio2 + half);
        const long_double fn(n);
        long_double r = ax - fn * pio2_1;
        long_double w = fn * pio2_1t;
        long_double y0 = r - w;
        if (magnitude_top(y0) < 0x3FCB0000u) {  // |y0| < 2^-52: much cancelled
            const long_double t = r;
            w = fn * pio2_2;
            r = t - w;
            w = fn * pio2_2t - ((t - r) - w);
            y0 = r - w;
        }
        y[0] = y0;
        y[1] = (r - y0) - w;
    } else {
        // Scale to [2^23, 2^24) and cut 24 bits at a time into doubles.
        const int e = ilogbl(ax);
        long_double z = __scalbnl(ax, 23 - e);
        double pieces[5];
        for (int i = 0; i < 5; ++i) {
            const int k = static_cast<int>(z);
            pieces[i] = static_cast<double>(k);
            z = (z - long_double(k)) * two24l;
        }
        int count = 5;
        while (count > 1 && pieces[count - 1] == 0.0) --count;
        double out[3];
        n = __rem_pio2m(pieces, out, e - 23, count, 3, _TBL_ipio2l_inf);
        const long_double head(out[0]);
        const long_double rest = long_double(out[2]) + long_double(out[1]);
        y[0] = rest + head;
        y[1] = rest - (y[0] - head);
    }
    if (sign_of(x)) {
        y[0] = -y[0];
        y[1] = -y[1];
        return -n;
    }
    return n;
}

}  // namespace krm::ldmath
