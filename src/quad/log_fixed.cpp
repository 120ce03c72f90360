// log x and log10 x away from 1, in integer fixed point: one 128-bit
// multiply costs a few machine multiplies where a soft-float operation
// costs a call and an unpack-round-pack, and the sum rounds only once, at
// the end, in the current direction.
//
// x = 2^k m, m r_j = 1 + u exactly (r_j of nine bits, |u| < 2^-8), and
// log x = k ln2 + T_j + log1p(u), all in units of 2^-128. Outside
// [1 - 2^-9, 1 + 2^-8) the result is at least about 2^-9 in magnitude, so
// those units keep it good to about 2^-118 relative.
#include "quad/exp_log_tables.h"
#include "quad/quad_core.h"

namespace krm::ldmath {

namespace {

using quad::mul_64;

// A two's complement 128-bit number.
struct i128 {
    uint64_t hi, lo;
};

inline i128 add(i128 a, i128 b) {
    uint64_t lo = a.lo + b.lo;
    return i128{a.hi + b.hi + (lo < a.lo), lo};
}

inline i128 negate(i128 a) {
    uint64_t lo = ~a.lo + 1;
    return i128{~a.hi + (lo == 0), lo};
}

inline bool negative(i128 a) { return a.hi >> 63; }

// floor(a b / 2^128) of two magnitudes.
inline i128 mul_high_u(i128 a, i128 b) {
    uint64_t h00, l00, h01, l01, h10, l10, h11, l11;
    mul_64(a.lo, b.lo, h00, l00);
    mul_64(a.lo, b.hi, h01, l01);
    mul_64(a.hi, b.lo, h10, l10);
    mul_64(a.hi, b.hi, h11, l11);
    (void)l00;
    uint64_t mid = h00 + l01;
    uint64_t carry = mid < h00;
    mid += l10;
    carry += mid < l10;
    uint64_t lo = l11 + h01;
    uint64_t c2 = lo < l11;
    lo += h10;
    c2 += lo < h10;
    lo += carry;
    c2 += lo < carry;
    return i128{h11 + c2, lo};
}

// a b / 2^128 for signed a and b, |a|, |b| < 2^127, rounded towards zero.
inline i128 mul_high(i128 a, i128 b) {
    bool s = negative(a) != negative(b);
    if (negative(a)) a = negate(a);
    if (negative(b)) b = negate(b);
    i128 p = mul_high_u(a, b);
    return s ? negate(p) : p;
}

// floor(2^128 / n) for 3 <= n < 2^32, by long division in 32-bit digits.
constexpr i128 reciprocal(uint64_t n) {
    uint64_t digits[4] = {0, 0, 0, 0};
    uint64_t rem = 1;  // the leading 1 of 2^128, then its zero digits
    for (int i = 0; i < 4; ++i) {
        uint64_t cur = rem << 32;
        digits[i] = cur / n;
        rem = cur % n;
    }
    return i128{(digits[0] << 32) | digits[1], (digits[2] << 32) | digits[3]};
}

// The series log1p(u) = u - u^2/2 + u^3 Q(u), Q(u) = sum (-1)^(n+1)
// u^(n-3)/n for n from 3 to 15: for |u| < 2^-8 the first term left out is
// below 2^-132. |Q| < 1/2 keeps every step inside the signed range.
constexpr int last_term = 15;
constexpr i128 series[last_term + 1] = {
    {0, 0},         {0, 0},         {0, 0},         reciprocal(3),  reciprocal(4),  reciprocal(5),
    reciprocal(6),  reciprocal(7),  reciprocal(8),  reciprocal(9),  reciprocal(10), reciprocal(11),
    reciprocal(12), reciprocal(13), reciprocal(14), reciprocal(15),
};

// A finite long_double in units of 2^-scale, truncated towards zero; the
// caller keeps the value below 2^(128 - scale), and 2^(127 - scale) when
// it may be negative.
inline i128 to_fixed(const long_double &a, int scale = 128) {
    int e = static_cast<int>((a.word[0] >> 16) & 0x7FFFu);
    if (e == 0) return i128{0, 0};  // zero; subnormals lie far below the unit
    uint64_t hi = (static_cast<uint64_t>((a.word[0] & 0xFFFFu) | 0x10000u) << 32) | a.word[1];
    uint64_t lo = (static_cast<uint64_t>(a.word[2]) << 32) | a.word[3];
    int shift = e - 16383 - 112 + scale;  // the significand's unit, 2^(e - 16383 - 112), in units of 2^-scale
    i128 v;
    if (shift >= 0) {
        v = i128{shift ? (hi << shift) | (lo >> (64 - shift)) : hi, lo << shift};
    } else if (shift > -64) {
        int n = -shift;
        v = i128{hi >> n, (lo >> n) | (hi << (64 - n))};
    } else if (shift > -128) {
        v = i128{0, hi >> (-shift - 64)};
    } else {
        v = i128{0, 0};
    }
    return sign_of(a) ? negate(v) : v;
}

// A positive value as a significand with its leading bit at bit 127 of
// hi:lo, the rest sticky in bit 0, and the power of two of that bit:
// value = (hi:lo) 2^(p - 127).
struct normalised {
    uint64_t hi, lo;
    int p;
};

}  // namespace

long_double __log_series_R(const long_double &s) {
    const exp_log_constants &c = _exp_log;
    int fs = static_cast<int>((s.word[0] >> 16) & 0x7FFFu);
    int shift = -2 - 2 * (fs - 16383);  // z 2^128 = (S 2^15)^2 / 2^128 >> shift
    if (fs == 0 || shift >= 128) return long_double(0u, 0u, 0u, 0u);  // z below 2^-128: R is too
    // S 2^15, the significand with its leading bit at bit 127.
    i128 sn{(static_cast<uint64_t>((s.word[0] & 0xFFFFu) | 0x10000u) << 47) | (static_cast<uint64_t>(s.word[1]) << 15) |
                (s.word[2] >> 17),
            (static_cast<uint64_t>(s.word[2]) << 47) | (static_cast<uint64_t>(s.word[3]) << 15)};
    i128 z = mul_high_u(sn, sn);
    z = shift >= 64 ? i128{0, z.hi >> (shift - 64)} : i128{z.hi >> shift, (z.lo >> shift) | (z.hi << (64 - shift))};
    // Every coefficient is positive and below 1, and z < 2^-9: the sums
    // stay below 2^128.
    const long_double *p[10] = {&c.p1, &c.p2, &c.p3, &c.p4, &c.p5, &c.p6, &c.p7, &c.p8, &c.p9, &c.p10};
    i128 q = to_fixed(*p[9]);
    for (int i = 8; i >= 0; --i) q = add(to_fixed(*p[i]), mul_high_u(z, q));
    i128 r = mul_high_u(z, q);
    if ((r.hi | r.lo) == 0) return long_double(0u, 0u, 0u, 0u);
    // Back to a long_double, truncated: the leading bit to bit 112.
    int L = r.hi ? 127 - quad::leading_zeros(r.hi) : 63 - quad::leading_zeros(r.lo);
    int n = L - 112;
    if (n > 0) {
        r = n >= 64 ? i128{0, r.hi >> (n - 64)} : i128{r.hi >> n, (r.lo >> n) | (r.hi << (64 - n))};
    } else if (n < 0) {
        n = -n;
        r = n >= 64 ? i128{r.lo << (n - 64), 0} : i128{(r.hi << n) | (r.lo >> (64 - n)), r.lo << n};
    }
    unsigned field = static_cast<unsigned>(L - 128 + 16383);
    return long_double(field << 16 | static_cast<unsigned>((r.hi >> 32) & 0xFFFFu), static_cast<unsigned>(r.hi),
                       static_cast<unsigned>(r.lo >> 32), static_cast<unsigned>(r.lo));
}

long_double __log_fixed(const long_double &x, bool base10, const long_double *extra) {
    const exp_log_constants &c = _exp_log;
    // Significand M in [2^112, 2^113) and exponent k of x = M 2^(k - 112).
    quad::u128 xv{(static_cast<uint64_t>(x.word[0]) << 32) | x.word[1],
                  (static_cast<uint64_t>(x.word[2]) << 32) | x.word[3]};
    uint64_t mh, ml;
    int k = quad::unpack_normalised(xv, mh, ml) - 16383;
    int j = static_cast<int>((mh >> 40) & 0xFF);
    if (j >= 106) k += 1;
    // r_j = R 2^-10 exactly, 512 <= R <= 1024.
    const long_double &r = _TBL_logl_inv[j];
    int er = static_cast<int>(r.word[0] >> 16) - 16383;  // -1 or 0
    uint64_t R = ((static_cast<uint64_t>((r.word[0] & 0xFFFFu) | 0x10000u) << 32) | r.word[1]) >> (38 - er);
    // M R - 2^122 = u 2^122 exactly; in units of 2^-128 that is 2^6 times more.
    uint64_t ph, pl;
    mul_64(ml, R, ph, pl);
    ph += mh * R - (static_cast<uint64_t>(1) << 58);
    i128 u{(ph << 6) | (pl >> 58), pl << 6};

    // Horner from n = 15 (a + sign) down to 3, even n negative.
    i128 q = series[last_term];
    for (int n = last_term - 1; n >= 3; --n) {
        i128 t = mul_high(u, q);
        q = add(n & 1 ? series[n] : negate(series[n]), t);
    }
    i128 u2 = mul_high(u, u);
    i128 half_u2{u2.hi >> 1, (u2.lo >> 1) | (u2.hi << 63)};  // u^2 >= 0
    i128 p = add(add(u, negate(half_u2)), mul_high(mul_high(u2, u), q));
    p = add(p, add(to_fixed(_TBL_logl_hi[j]), to_fixed(_TBL_logl_lo[j])));
    if (extra) p = add(p, to_fixed(*extra));

    // k ln2 + p in three 64-bit limbs, two's complement: t2:t1:t0.
    // ln2 in units of 2^-127 (ln2hi exactly), so k ln2 = (2k) l2 in 2^-128.
    i128 l2 = add(to_fixed(c.ln2hi, 127), to_fixed(c.ln2lo, 127));
    uint64_t kk = static_cast<uint64_t>(k < 0 ? -k : k) * 2;
    uint64_t a_hi, a_lo, b_hi, b_lo;
    mul_64(l2.lo, kk, a_hi, a_lo);
    mul_64(l2.hi, kk, b_hi, b_lo);
    uint64_t t0 = a_lo, t1 = a_hi + b_lo, t2 = b_hi + (t1 < a_hi);
    if (k < 0) {  // negate the three limbs
        t0 = ~t0 + 1;
        uint64_t c1 = (t0 == 0);
        t1 = ~t1 + c1;
        uint64_t c2 = c1 && (t1 == 0);
        t2 = ~t2 + c2;
    }
    uint64_t ext = negative(p) ? ~static_cast<uint64_t>(0) : 0;
    uint64_t s0 = t0 + p.lo, cy = s0 < t0;
    uint64_t s1 = t1 + p.hi;
    uint64_t cy2 = s1 < t1;
    s1 += cy;
    cy2 += s1 < cy;
    uint64_t s2 = t2 + ext + cy2;
    uint64_t sign = s2 >> 63;
    if (sign) {
        s0 = ~s0 + 1;
        uint64_t c1 = (s0 == 0);
        s1 = ~s1 + c1;
        uint64_t c2 = c1 && (s1 == 0);
        s2 = ~s2 + c2;
    }
    // Normalise the magnitude s2:s1:s0 (units 2^-128, nonzero here).
    normalised v;
    if (s2) {
        int z = quad::leading_zeros(s2);
        v.hi = z ? (s2 << z) | (s1 >> (64 - z)) : s2;
        v.lo = z ? (s1 << z) | (s0 >> (64 - z)) : s1;
        v.lo |= (z ? s0 << z : s0) != 0;
        v.p = 191 - z;
    } else if (s1) {
        int z = quad::leading_zeros(s1);
        v.hi = z ? (s1 << z) | (s0 >> (64 - z)) : s1;
        v.lo = z ? s0 << z : s0;
        v.p = 127 - z;
    } else {
        int z = quad::leading_zeros(s0);
        v.hi = s0 << z;
        v.lo = 0;
        v.p = 63 - z;
    }
    v.p -= 128;
    if (base10) {
        // times 1/ln10 = I 2^-129, I in [2^127, 2^128), from its 56-bit head
        // and its tail: good to about 2^-168.
        i128 I = add(to_fixed(c.ivln10_56, 129), to_fixed(c.ivln10_56lo, 129));
        i128 prod = mul_high_u(i128{v.hi, v.lo}, I);
        // (hi:lo) I / 2^128 lies in [2^126, 2^128).
        v.p -= 1;
        if (!(prod.hi >> 63)) {
            prod = i128{(prod.hi << 1) | (prod.lo >> 63), prod.lo << 1};
            v.p -= 1;
        }
        v.hi = prod.hi;
        v.lo = prod.lo;
    }
    // round_pack wants the leading bit at bit 126, 14 bits below the 113;
    // the last of them is sticky, and set: no x here has an exact
    // logarithm of 113 bits, and the bits below are not exact anyway.
    uint64_t hi = v.hi >> 1, lo = (v.lo >> 1) | (v.hi << 63) | 1;
    krm_real16 out;
    quad::round_pack(&out, sign << 63, v.p + 16383, hi, lo);
    return long_double::of_storage(out);
}

}  // namespace krm::ldmath
