// Reduction of an argument by pi/2 for the trigonometric functions.
//
// Below 2^48 the quotient n has at most 48 bits, and pi/2 is held in pieces
// of 65 bits, so that n times a piece is exact: x - n pio2_1 is then exact
// too, and the next piece's product, rounded, leaves the remainder good to
// about 2^-129. When the remainder is small, x lies close to a multiple of
// pi/2 and more of pi/2 is taken in: one more piece makes it good to about
// 2^-195, another to 2^-260. A remainder that is still under 2^-138 (none
// is known to be) goes to the whole-number reduction, as do all larger
// arguments; that one is exact however large they are.
#include "platform/fp_flags.h"
#include "platform/rem_pio2m.h"
#include "quad/ldmath.h"

namespace {

#include "quad/rem_pio2l.inc"

const long_double zero(0u, 0u, 0u, 0u);
const long_double half(0x3FFE0000u, 0u, 0u, 0u);

using krm::ldmath::magnitude_top;

// |x| - n pi/2 for |x| below 2^48, as y[0] + y[1]; false if the remainder
// is too small for the pieces.
bool reduce_in_pieces(const long_double &ax, long_double *y, int &n) {
    const long long nn = static_cast<long long>(ax * invpio2 + half);
    n = static_cast<int>(nn & 0x7FFFFFFF);
    const long_double fn(nn);
    long_double a = ax - fn * pio2_1;  // exact
    long_double w = fn * pio2_1t;
    long_double y0 = a - w;
    // Takes in one more piece p and its tail pt: a less the exact n p, the
    // rounding error of that difference (by the sum of two, exactly, since
    // either term may be the greater) passed on to w.
    auto refine = [&](const long_double &p, const long_double &pt) {
        const long_double t = a, np = fn * p;
        a = t - np;
        const long_double b = a - t;
        const long_double err = (t - (a - b)) - (np + b);
        w = fn * pt - err;
        y0 = a - w;
    };
    if (magnitude_top(y0) < 0x3FF70000u) {  // under 2^-8
        refine(pio2_2, pio2_2t);
        if (magnitude_top(y0) < 0x3FB70000u) {  // under 2^-72
            refine(pio2_3, pio2_3t);
            if (magnitude_top(y0) < 0x3F750000u) return false;  // under 2^-138
        }
    }
    y[0] = y0;
    y[1] = (a - y0) - w;
    return true;
}

// The whole-number reduction of the platform, for any finite |x| > pi/4.
int reduce_exactly(const long_double &ax, long_double *y) {
    // The argument scaled to [2^23, 2^24) and cut 24 bits at a time into
    // doubles: the 113-bit significand's bits taken straight from the words,
    // which gives the same whole numbers as taking integer parts and
    // scaling by 2^24 in turn, without the arithmetic.
    const int e = krm::ldmath::ilogbl(ax);
    const uint64_t hi = (static_cast<uint64_t>((ax.word[0] & 0xFFFFu) | 0x10000u) << 32) | ax.word[1];  // bits 112..64
    const uint64_t lo = (static_cast<uint64_t>(ax.word[2]) << 32) | ax.word[3];                          // bits 63..0
    const uint32_t mask = 0xFFFFFFu;
    const double pieces[5] = {
        static_cast<double>(static_cast<int32_t>((hi >> 25) & mask)),
        static_cast<double>(static_cast<int32_t>((hi >> 1) & mask)),
        static_cast<double>(static_cast<int32_t>(((lo >> 41) | (hi << 23)) & mask)),
        static_cast<double>(static_cast<int32_t>((lo >> 17) & mask)),
        static_cast<double>(static_cast<int32_t>((lo & 0x1FFFFu) << 7)),
    };
    int count = 5;
    while (count > 1 && pieces[count - 1] == 0.0) --count;
    double out[3];
    int n;
    {
        krm::platform::keep_fp_flags flags;
        n = __rem_pio2m(pieces, out, e - 23, count, 3, _TBL_ipio2l_inf);
    }
    const long_double head(out[0]);
    const long_double rest = long_double(out[2]) + long_double(out[1]);
    y[0] = rest + head;
    y[1] = rest - (y[0] - head);
    return n;
}

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
    if (ix >= 0x402F0000u || !reduce_in_pieces(ax, y, n))  // |x| >= 2^48, or cancelled too far
        n = reduce_exactly(ax, y);
    if (sign_of(x)) {
        y[0] = -y[0];
        y[1] = -y[1];
        return -n;
    }
    return n;
}

}  // namespace krm::ldmath
