// Division.
#include "quad/long_double.h"
#include "quad/quad_core.h"

using namespace krm::quad;

namespace {

#if defined(__x86_64__)
// floor((2^192 - 1) / (d1:d0)) - 2^64 for a divisor with its top bit set.
inline uint64_t reciprocal_3by2(uint64_t d1, uint64_t d0) {
    uint64_t unused;
    uint64_t v = divide_128(~d1, ~0ull, d1, unused);  // floor((2^128 - 1) / d1) - 2^64
    uint64_t p = d1 * v + d0;
    if (p < d0) {
        --v;
        if (p >= d1) {
            --v;
            p -= d1;
        }
        p -= d1;
    }
    uint64_t t1, t0;
    mul_64(v, d0, t1, t0);
    p += t1;
    if (p < t1) {
        --v;
        if (p > d1 || (p == d1 && t0 >= d0)) --v;
    }
    return v;
}

// The quotient digit of (u2:u1:u0) / (d1:d0), given (u2:u1) < (d1:d0) and
// v = reciprocal_3by2(d1, d0); the remainder goes to r1:r0.
inline uint64_t divide_3by2(uint64_t u2, uint64_t u1, uint64_t u0, uint64_t d1, uint64_t d0, uint64_t v,
                            uint64_t &r1, uint64_t &r0) {
    uint64_t q1, q0;
    mul_64(v, u2, q1, q0);
    q0 += u1;
    q1 += u2 + (q0 < u1);
    r1 = u1 - q1 * d1;
    uint64_t t1, t0;
    mul_64(d0, q1, t1, t0);
    // (r1:r0) = (r1:u0) - (t1:t0) - (d1:d0), modulo 2^128
    uint64_t lo = u0 - t0;
    uint64_t hi = r1 - t1 - (u0 < t0);
    uint64_t lo2 = lo - d0;
    hi = hi - d1 - (lo < d0);
    r1 = hi;
    r0 = lo2;
    ++q1;
    if (r1 >= q0) {
        --q1;
        uint64_t s0 = r0 + d0;
        r1 = r1 + d1 + (s0 < d0);
        r0 = s0;
    }
    if (r1 > d1 || (r1 == d1 && r0 >= d0)) {
        ++q1;
        uint64_t b = r0 < d0;
        r0 -= d0;
        r1 = r1 - d1 - b;
    }
    return q1;
}
#endif

// q = floor(n * 2^128 / d) for n < d, the top bit of d set, so that q fits
// in 128 bits; returns whether the division left a remainder.
inline bool quotient(uint64_t nh, uint64_t nl, uint64_t dh, uint64_t dl, uint64_t &qh,
                     uint64_t &ql) {
#if defined(__x86_64__)
    // Two 64-bit digits, each by a 3-by-2 division with a precomputed
    // reciprocal of the divisor (Moller and Granlund): one hardware
    // division for the reciprocal instead of one per digit, which is what
    // the hardware instruction costs most in.
    const uint64_t v = reciprocal_3by2(dh, dl);
    uint64_t r1, r0;
    qh = divide_3by2(nh, nl, 0, dh, dl, v, r1, r0);
    ql = divide_3by2(r1, r0, 0, dh, dl, v, r1, r0);
    return (r1 | r0) != 0;
#else
    // Four 32-bit digits; the dividend's low half is zero.
    uint32_t u[9] = {0, 0, 0, 0,
                     static_cast<uint32_t>(nl), static_cast<uint32_t>(nl >> 32),
                     static_cast<uint32_t>(nh), static_cast<uint32_t>(nh >> 32), 0};
    uint32_t v[4] = {static_cast<uint32_t>(dl), static_cast<uint32_t>(dl >> 32),
                     static_cast<uint32_t>(dh), static_cast<uint32_t>(dh >> 32)};
    uint32_t q[4];
    long_divide<4, 4>(u, v, q);
    qh = (static_cast<uint64_t>(q[3]) << 32) | q[2];
    ql = (static_cast<uint64_t>(q[1]) << 32) | q[0];
    return (u[0] | u[1] | u[2] | u[3]) != 0;
#endif
}

}  // namespace

extern "C" void _Qdiv(krm_real16 *result, const krm_real16 *a, const krm_real16 *b) {
    u128 x = load(a), y = load(b);
    uint64_t sign = (x.hi ^ y.hi) & sign_bit;
    bool x_special = exponent_of(x.hi) == exponent_max, y_special = exponent_of(y.hi) == exponent_max;
    if (x_special || y_special) {
        if (is_nan(x) || is_nan(y))
            store(result, nan_of_product(x, y));
        else if (x_special && y_special)
            store(result, default_nan);  // infinity over infinity
        else if (x_special)
            store(result, sign | 0x7FFF000000000000ull, 0);
        else
            store(result, sign, 0);  // finite over infinity
        return;
    }
    if (is_zero(y)) {
        if (is_zero(x))
            store(result, default_nan);
        else
            store(result, sign | 0x7FFF000000000000ull, 0);
        return;
    }
    if (is_zero(x)) {
        store(result, sign, 0);
        return;
    }

    // a's significand with its leading bit at 126 over b's with it at 127:
    // the quotient scaled by 2^128 lies in (2^126, 2^128).
    uint64_t ah, al, bh, bl;
    int e = unpack_normalised(x, ah, al) - unpack_normalised(y, bh, bl) + exponent_bias - 1;
    ah = (ah << 14) | (al >> 50);
    al <<= 14;
    bh = (bh << 15) | (bl >> 49);
    bl <<= 15;

    uint64_t hi, lo;
    bool inexact = quotient(ah, al, bh, bl, hi, lo);
    lo |= inexact;
    if (hi >> 63) {
        lo = (lo >> 1) | (hi << 63) | (lo & 1);
        hi >>= 1;
        ++e;
    }
    round_pack(result, sign, e, hi, lo);
}
