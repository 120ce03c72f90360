// Division.
#include "quad/long_double.h"
#include "quad/quad_core.h"

using namespace krm::quad;

namespace {

// q = floor(n * 2^128 / d) for n < d, the top bit of d set, so that q fits
// in 128 bits; returns whether the division left a remainder.
inline bool quotient(uint64_t nh, uint64_t nl, uint64_t dh, uint64_t dl, uint64_t &qh,
                     uint64_t &ql) {
#if defined(__x86_64__)
    // Two 64-bit digits of Knuth's long division, each estimated from the
    // divisor's top half by one hardware division and corrected.
    uint64_t digit[2];
    uint64_t r2 = nh, r1 = nl, r0 = 0;  // the running remainder, three halves
    for (int j = 1; j >= 0; --j) {
        uint64_t rhat;
        uint64_t q;
        bool rhat_big = false;
        if (r2 >= dh) {
            q = ~0ull;
            // rhat = r2:r1 - q * dh = r1 + dh when r2 == dh.
            rhat = r1 + dh;
            rhat_big = rhat < r1;
        } else {
            q = divide_128(r2, r1, dh, rhat);
        }
        for (;;) {
            if (rhat_big) break;
            uint64_t ph, pl;
            mul_64(q, dl, ph, pl);
            if (ph < rhat || (ph == rhat && pl <= r0)) break;
            --q;
            uint64_t old = rhat;
            rhat += dh;
            rhat_big = rhat < old;
        }
        // r2:r1:r0 -= q * (dh:dl); q is at most one too great, which shows
        // as a borrow out of the top and is put right by adding d back.
        uint64_t ah, al, bh, bl;
        mul_64(q, dl, ah, al);
        mul_64(q, dh, bh, bl);
        uint64_t t1 = bl + ah;
        uint64_t t2 = bh + (t1 < bl);
        uint64_t n0 = r0 - al;
        uint64_t b0 = r0 < al;
        uint64_t n1 = r1 - t1;
        uint64_t b1 = (r1 < t1) | (n1 < b0);
        n1 -= b0;
        bool negative = r2 < t2 || (r2 == t2 && b1);
        if (negative) {
            --q;
            n0 += dl;
            uint64_t c = n0 < dl;
            n1 += dh + c;  // the carry out of the top cancels the borrow
        }
        digit[j] = q;
        // Shift the remainder one digit up for the next step.
        r2 = n1;
        r1 = n0;
        r0 = 0;
    }
    qh = digit[1];
    ql = digit[0];
    return (r2 | r1) != 0;
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
