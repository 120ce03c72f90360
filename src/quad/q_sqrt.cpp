// Square root.
#include "quad/long_double.h"
#include "quad/quad_core.h"

using namespace krm::quad;

namespace {

// 2^15 / sqrt(t) at the middle of each of the intervals [i/256, (i+1)/256)
// for i = 64..255: the start of the reciprocal root, good to 8 bits.
const uint16_t reciprocal_root[192] = {
    65281, 64781, 64292, 63814, 63347, 62889, 62442, 62004, 61575, 61154, 60742, 60339,
    59943, 59555, 59175, 58801, 58435, 58075, 57722, 57376, 57035, 56700, 56372, 56049,
    55731, 55419, 55112, 54810, 54513, 54221, 53933, 53650, 53371, 53097, 52826, 52560,
    52298, 52040, 51785, 51535, 51288, 51044, 50804, 50567, 50333, 50103, 49876, 49652,
    49430, 49212, 48997, 48784, 48574, 48367, 48163, 47961, 47761, 47564, 47370, 47178,
    46988, 46800, 46615, 46432, 46251, 46072, 45895, 45720, 45547, 45376, 45207, 45040,
    44875, 44711, 44550, 44390, 44232, 44075, 43920, 43767, 43615, 43465, 43316, 43169,
    43024, 42879, 42737, 42595, 42456, 42317, 42180, 42044, 41910, 41776, 41644, 41514,
    41384, 41256, 41129, 41003, 40878, 40754, 40631, 40510, 40390, 40270, 40152, 40035,
    39919, 39803, 39689, 39576, 39464, 39352, 39242, 39133, 39024, 38916, 38810, 38704,
    38599, 38494, 38391, 38289, 38187, 38086, 37986, 37887, 37788, 37690, 37593, 37497,
    37401, 37307, 37213, 37119, 37027, 36935, 36843, 36753, 36663, 36573, 36485, 36397,
    36309, 36222, 36136, 36051, 35966, 35882, 35798, 35715, 35632, 35550, 35469, 35388,
    35307, 35228, 35148, 35070, 34991, 34914, 34837, 34760, 34684, 34608, 34533, 34458,
    34384, 34310, 34237, 34164, 34092, 34020, 33949, 33878, 33807, 33737, 33668, 33599,
    33530, 33461, 33393, 33326, 33259, 33192, 33126, 33060, 32994, 32929, 32864, 32800,
};

// floor(sqrt(x)) for x in [2^62, 2^64).
inline uint64_t root_64(uint64_t x) {
    // The reciprocal root r = 1/sqrt(t) of t = x / 2^64, as R = r * 2^30,
    // from the table and two Newton steps r += r * (1 - t r^2) / 2.
    uint32_t top = static_cast<uint32_t>(x >> 32);
    int64_t r = static_cast<int64_t>(reciprocal_root[(top >> 24) - 64]) << 15;
    for (int step = 0; step < 2; ++step) {
        uint64_t r2 = (static_cast<uint64_t>(r) * static_cast<uint64_t>(r)) >> 32;
        int64_t d = static_cast<int64_t>((1ull << 60) - top * r2);
        r += (r * (d >> 29)) >> 32;
    }
    // sqrt(x) = t r 2^32, within a few units; one Newton step on the root
    // itself, s += (x - s^2) / (2 s), with 1 / (2 s) = R / 2^63.
    uint64_t s = (static_cast<uint64_t>(top) * static_cast<uint64_t>(r)) >> 30;
    if (s > 0xFFFFFFFFull) s = 0xFFFFFFFFull;
    int64_t d = static_cast<int64_t>(x - s * s);
    s += static_cast<uint64_t>(((d >> 8) * r) >> 55);
    if (s > 0xFFFFFFFFull) s = 0xFFFFFFFFull;
    while (s * s > x) --s;
    while (s < 0xFFFFFFFFull && (s + 1) * (s + 1) <= x) ++s;
    return s;
}

// 64 by 32-bit division whose quotient is known to fit in 32 bits.
inline uint32_t divide_small(uint64_t n, uint32_t d) {
#if defined(__x86_64__)
    return static_cast<uint32_t>(n / d);
#else
    uint32_t r;
    return divide_64(static_cast<uint32_t>(n >> 32), static_cast<uint32_t>(n), d, r);
#endif
}

// Y = floor(sqrt(S)) for S = sh:sl in [2^126, 2^128), with D = S - Y^2 in
// dh:dl (at most 2Y, so dh is 0 or 1). One step of the Karatsuba square
// root: the root of the top half, then the next 32 bits by a division.
inline uint64_t root_128(uint64_t sh, uint64_t sl, uint64_t &dh, uint64_t &dl) {
    uint64_t s = root_64(sh);
    uint64_t r = sh - s * s;  // at most 2s
    uint64_t n = (r << 31) + (sl >> 33);
    uint64_t q = (n >> 32) >= s ? 0xFFFFFFFFull : divide_small(n, static_cast<uint32_t>(s));
    uint64_t y = (s << 32) + q;
    uint64_t yh, yl;
    mul_64(y, y, yh, yl);
    dl = sl - yl;
    dh = sh - yh - (sl < yl);
    // Y is the root or one above it; put it right so that 0 <= D <= 2Y.
    while (dh >> 63) {
        --y;
        uint64_t add_l = (y << 1) + 1, add_h = y >> 63;
        dl += add_l;
        dh += add_h + (dl < add_l);
    }
    while (dh > (y >> 63) || (dh == (y >> 63) && dl > (y << 1))) {
        uint64_t sub_l = (y << 1) + 1, sub_h = y >> 63;
        dh -= sub_h + (dl < sub_l);
        dl -= sub_l;
        ++y;
    }
    return y;
}

}  // namespace

extern "C" KRM_API void __Qsqrt(krm_real16 *result, const krm_real16 *a) {
    u128 x = load(a);
    if (is_nan(x)) {
        store(result, quieted(x));
        return;
    }
    if (is_zero(x) || (x.hi == 0x7FFF000000000000ull && x.lo == 0)) {
        store(result, x);  // a zero of either sign, or plus infinity
        return;
    }
    if (x.hi & sign_bit) {
        store(result, default_nan);
        return;
    }

    uint64_t mh, ml;
    int e = unpack_normalised(x, mh, ml) - exponent_bias;
    // S: the significand with its leading bit at 126, or at 127 for an odd
    // exponent, so that S lies in [2^126, 2^128) and the exponent is even.
    int shift = 14 + (e & 1);
    e -= e & 1;
    uint64_t sh = (mh << shift) | (ml >> (64 - shift));
    uint64_t sl = ml << shift;

    // R = floor(sqrt(S * 2^128)) in [2^127, 2^128): the root of S to 64 bits,
    // then the low 64 bits as floor(D * 2^64 / 2Y), which is the root or one
    // above it, told apart by the sign of the remainder u * 2^64 - q^2.
    uint64_t dh, dl;
    uint64_t y = root_128(sh, sl, dh, dl);
    uint64_t q;
    bool inexact;
    if (dh == (y >> 63) && dl == (y << 1)) {
        // D = 2Y: the quotient would be 2^64; the root is Y * 2^64 + 2^64 - 1
        // and the remainder is not zero.
        q = ~0ull;
        inexact = true;
    } else {
        uint64_t u;
        q = divide_128((dh << 63) | (dl >> 1), dl << 63, y, u);
        uint64_t qh, ql;
        mul_64(q, q, qh, ql);
        // rem = (2u) * 2^64 - q^2, in three 64-bit limbs.
        uint64_t r0 = 0 - ql;
        uint64_t b0 = ql != 0;
        uint64_t twice_u = u << 1;
        uint64_t r1 = twice_u - qh;
        uint64_t b1 = (twice_u < qh) | (r1 < b0);
        r1 -= b0;
        uint64_t r2 = (u >> 63) - b1;
        if (r2 >> 63) {
            // One too many: R - 1, whose remainder is rem + 2(R - 1) + 1.
            y -= (q == 0);
            --q;
            uint64_t add0 = (q << 1) | 1;
            uint64_t add1 = (y << 1) | (q >> 63);
            uint64_t add2 = y >> 63;
            uint64_t s0 = r0 + add0;
            uint64_t c0 = s0 < add0;
            uint64_t s1 = r1 + add1;
            uint64_t c1 = s1 < add1;
            s1 += c0;
            c1 |= s1 < c0;
            uint64_t s2 = r2 + add2 + c1;
            inexact = (s0 | s1 | s2) != 0;
        } else {
            inexact = (r0 | r1 | r2) != 0;
        }
    }

    // The root has its leading bit at 127; pack it from 126 with a sticky bit.
    uint64_t lo = (q >> 1) | (y << 63) | (q & 1) | inexact;
    uint64_t hi = y >> 1;
    round_pack(result, 0, exponent_bias + e / 2, hi, lo);
}

long_double sqrtl(const long_double &x) {
    krm_real16 s = x.storage(), r;
    __Qsqrt(&r, &s);
    return long_double::of_storage(r);
}
