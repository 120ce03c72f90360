#include "quad/exact_product.h"

#include "quad/quad_core.h"

namespace krm::ldmath {

namespace {

using namespace krm::quad;

// The low 128 bits of the product of two 113-bit significands: all that
// the tail needs, since it lies within an ulp of the head.
inline void low_product(uint64_t ah, uint64_t al, uint64_t bh, uint64_t bl, uint64_t &h, uint64_t &l) {
    mul_64(al, bl, h, l);
    h += al * bh + ah * bl;
}

// The value of a 128-bit magnitude (hi:lo) times 2^scale, with its sign:
// exact when it fits, as it does for the remainders made here.
long_double pack(uint64_t sign, uint64_t hi, uint64_t lo, int scale) {
    krm_real16 r;
    if ((hi | lo) == 0) {
        store(&r, sign, 0);
        return long_double::of_storage(r);
    }
    // Normalise to a leading bit at 126 of the 128, then round and pack;
    // round_pack takes the significand with its leading bit at 126.
    int lz = hi ? leading_zeros(hi) : 64 + leading_zeros(lo);
    int shift = lz - 1;  // bring the leading bit to 126
    if (shift > 0) {
        if (shift >= 64) {
            hi = lo << (shift - 64);
            lo = 0;
        } else {
            hi = (hi << shift) | (lo >> (64 - shift));
            lo <<= shift;
        }
    } else if (shift < 0) {
        lo = (lo >> 1) | (hi << 63) | (lo & 1);
        hi >>= 1;
    }
    // The value is (hi:lo) * 2^(scale - shift), with the leading bit at 126.
    round_pack(&r, sign, scale - shift + 126 + exponent_bias, hi, lo);
    return long_double::of_storage(r);
}

}  // namespace

long_double exact_product(const long_double &a, const long_double &b, long_double *lo) {
    long_double p = a * b;
    krm_real16 sa = a.storage(), sb = b.storage(), sp = p.storage();
    u128 ua = load(&sa), ub = load(&sb), up = load(&sp);
    krm_real16 z;
    if (exponent_of(up.hi) == exponent_max || is_zero(ua) || is_zero(ub) || exponent_of(ua.hi) == exponent_max ||
        exponent_of(ub.hi) == exponent_max || is_zero(up)) {
        store(&z, 0, 0);
        *lo = long_double::of_storage(z);
        return p;
    }
    uint64_t ah, al, bh, bl, ph, pl;
    int ea = unpack_normalised(ua, ah, al) - exponent_bias - 112;  // a = A 2^ea
    int eb = unpack_normalised(ub, bh, bl) - exponent_bias - 112;
    int ep = unpack(up, ph, pl) - exponent_bias - 112;  // p = P 2^ep (P may be subnormal: fewer bits)
    uint64_t qh, ql;
    low_product(ah, al, bh, bl, qh, ql);  // a b = Q 2^(ea + eb), Q below 2^226: its low half
    // D = Q - P 2^(ep - ea - eb), with that shift s between 0 and 113 for
    // a normal p; the difference is under 2^s, so only the low 128 bits of
    // both matter, taken mod 2^128 with the sign from the comparison.
    int s = ep - ea - eb;
    if (s < 0 || s > 127) {
        // Subnormal territory or beyond: no exact tail to give.
        store(&z, 0, 0);
        *lo = long_double::of_storage(z);
        return p;
    }
    uint64_t sh, sl;  // P << s, low 128 bits
    if (s == 0) {
        sh = ph;
        sl = pl;
    } else if (s < 64) {
        sh = (ph << s) | (pl >> (64 - s));
        sl = pl << s;
    } else {
        sh = pl << (s - 64);
        sl = 0;
    }
    uint64_t dl = ql - sl;
    uint64_t dh = qh - sh - (ql < sl);
    uint64_t sign_a = ua.hi & sign_bit, sign_b = ub.hi & sign_bit;
    uint64_t sign = sign_a ^ sign_b;
    if (dh >> 63) {
        // Negative: P 2^s exceeds Q, the tail has the opposite sign.
        dl = ~dl + 1;
        dh = ~dh + (dl == 0);
        sign ^= sign_bit;
    }
    *lo = pack(sign, dh, dl, ea + eb);
    return p;
}

}  // namespace krm::ldmath
