// The integer machinery under the binary128 primitives: 128-bit values as
// two 64-bit halves, wide products and quotients, and the one rounding step
// that every operation ends in.
//
// Everything is plain integer arithmetic, so no floating-point flag is ever
// raised, and the i386 and x86-64 builds give the same bits: where they take
// different instructions (a 64-bit multiply or divide, or 32-bit pieces),
// both compute the exact same integer.
#pragma once

#include <stdint.h>
#include <string.h>

#include "krm/quad.h"
#include "platform/rounding_mode.h"

namespace krm::quad {

constexpr uint64_t sign_bit = 0x8000000000000000ull;
constexpr uint64_t hidden_bit = 0x0001000000000000ull;  // bit 112 of the value, in the high half
constexpr uint64_t fraction_high = 0x0000FFFFFFFFFFFFull;
constexpr uint64_t quiet_bit = 0x0000800000000000ull;
constexpr int exponent_bias = 16383;
constexpr int exponent_max = 0x7FFF;

// A value as its two halves; in a krm_real16 the low half is words 0 and 1.
struct u128 {
    uint64_t hi, lo;
};

inline u128 load(const krm_real16 *p) {
    u128 v;
    memcpy(&v.lo, &p->word[0], 8);
    memcpy(&v.hi, &p->word[2], 8);
    return v;
}

inline void store(krm_real16 *p, uint64_t hi, uint64_t lo) {
    memcpy(&p->word[0], &lo, 8);
    memcpy(&p->word[2], &hi, 8);
}

inline void store(krm_real16 *p, u128 v) { store(p, v.hi, v.lo); }

inline int exponent_of(uint64_t hi) { return static_cast<int>((hi >> 48) & 0x7FFF); }

inline bool is_nan(u128 v) {
    return exponent_of(v.hi) == exponent_max && ((v.hi & fraction_high) | v.lo) != 0;
}

inline bool is_signalling(u128 v) { return is_nan(v) && !(v.hi & quiet_bit); }

inline bool is_zero(u128 v) { return ((v.hi & ~sign_bit) | v.lo) == 0; }

inline u128 quieted(u128 v) { return u128{v.hi | quiet_bit, v.lo}; }

// What an invalid operation gives: all bits set but the sign.
constexpr u128 default_nan = {0x7FFFFFFFFFFFFFFFull, 0xFFFFFFFFFFFFFFFFull};

// The rounding direction for a result of this sign: 0 to nearest, 2 away
// from zero, 1 and 3 towards zero. Down and up swap for a negative result,
// so that the rest deals with magnitudes only.
inline int direction_for(uint64_t sign) {
    int d = krm_rounding_direction();
    if (sign && (d == 1 || d == 2)) d ^= 3;
    return d;
}

inline int leading_zeros(uint64_t x) { return __builtin_clzll(x); }  // x != 0

// The full product of two 64-bit numbers.
inline void mul_64(uint64_t a, uint64_t b, uint64_t &hi, uint64_t &lo) {
#if defined(__SIZEOF_INT128__)
    unsigned __int128 p = static_cast<unsigned __int128>(a) * b;
    hi = static_cast<uint64_t>(p >> 64);
    lo = static_cast<uint64_t>(p);
#else
    uint32_t a0 = static_cast<uint32_t>(a), a1 = static_cast<uint32_t>(a >> 32);
    uint32_t b0 = static_cast<uint32_t>(b), b1 = static_cast<uint32_t>(b >> 32);
    uint64_t p00 = static_cast<uint64_t>(a0) * b0;
    uint64_t p01 = static_cast<uint64_t>(a0) * b1;
    uint64_t p10 = static_cast<uint64_t>(a1) * b0;
    uint64_t p11 = static_cast<uint64_t>(a1) * b1;
    uint64_t mid = (p00 >> 32) + static_cast<uint32_t>(p01) + static_cast<uint32_t>(p10);
    lo = (mid << 32) | static_cast<uint32_t>(p00);
    hi = p11 + (p01 >> 32) + (p10 >> 32) + (mid >> 32);
#endif
}

// hi:lo shifted right by n (n >= 1), with every bit shifted out OR-ed into
// bit 0, so that the result still tells an exact value from an inexact one.
inline void shift_right_sticky(uint64_t &hi, uint64_t &lo, int n) {
    if (n < 64) {
        uint64_t lost = lo << (64 - n);
        lo = (lo >> n) | (hi << (64 - n)) | (lost != 0);
        hi >>= n;
    } else if (n < 128) {
        uint64_t lost = lo | (n > 64 ? hi << (128 - n) : 0);
        lo = (n > 64 ? hi >> (n - 64) : hi) | (lost != 0);
        hi = 0;
    } else {
        lo = (hi | lo) != 0;
        hi = 0;
    }
}

// The result of an overflow: an infinity when rounding to nearest or away
// from zero, the greatest finite number otherwise.
inline void store_overflow(krm_real16 *r, uint64_t sign) {
    int d = direction_for(sign);
    if (d == 0 || d == 2)
        store(r, sign | 0x7FFF000000000000ull, 0);
    else
        store(r, sign | 0x7FFEFFFFFFFFFFFFull, 0xFFFFFFFFFFFFFFFFull);
}

// Rounds and packs sign * (hi:lo) * 2^(e - 16383 - 126). The significand
// hi:lo has its leading bit at bit 126 (bit 62 of hi) whenever e > 1; below
// the 113 bits that are kept lie 14 rounding bits, the last of them sticky.
// e may lie outside the exponent range: above it the result overflows, at 0
// or below it is made subnormal by a sticky shift before rounding.
__attribute__((always_inline)) inline void round_pack(krm_real16 *r, uint64_t sign, int e, uint64_t hi,
                                                      uint64_t lo) {
    if (e >= exponent_max) {
        store_overflow(r, sign);
        return;
    }
    if (e < 1) {
        shift_right_sticky(hi, lo, 1 - e);
        e = 1;
    }
    uint64_t rest = lo & 0x3FFF;
    lo = (lo >> 14) | (hi << 50);
    // The hidden bit, if present, adds the last 1 to the exponent field; a
    // carry out of the significand by rounding moves on into the exponent
    // and, at the top, makes the infinity pattern.
    hi = (hi >> 14) + (static_cast<uint64_t>(e - 1) << 48);
    if (rest) {
        int d = direction_for(sign);
        if (d == 2 || (d == 0 && (rest > 0x2000 || (rest == 0x2000 && (lo & 1))))) {
            lo += 1;
            hi += (lo == 0);
        }
    }
    store(r, hi | sign, lo);
}

// A finite value's significand with its hidden bit, and its exponent, a
// subnormal counting as exponent 1.
inline int unpack(u128 v, uint64_t &hi, uint64_t &lo) {
    int e = exponent_of(v.hi);
    hi = v.hi & fraction_high;
    lo = v.lo;
    if (e)
        hi |= hidden_bit;
    else
        e = 1;
    return e;
}

// As unpack, but a subnormal is shifted up until its leading bit stands at
// bit 112, its exponent going below 1. Not for zero.
inline int unpack_normalised(u128 v, uint64_t &hi, uint64_t &lo) {
    int e = unpack(v, hi, lo);
    if (!(hi & hidden_bit)) {
        int n = hi ? leading_zeros(hi) - 15 : 49 + leading_zeros(lo);
        if (n >= 64) {
            hi = lo << (n - 64);
            lo = 0;
        } else {
            hi = (hi << n) | (lo >> (64 - n));
            lo <<= n;
        }
        e -= n;
    }
    return e;
}

// NaN operands of a multiplication or division: a signalling b wins, made
// quiet; a quiet b gives way only to a signalling a; a alone comes out
// quiet.
inline u128 nan_of_product(u128 a, u128 b) {
    if (is_nan(b)) {
        if (is_signalling(b)) return quieted(b);
        if (is_signalling(a)) return quieted(a);
        return b;
    }
    return quieted(a);
}

// 128 by 64-bit division: (hi:lo) / d with hi < d and the top bit of d set.
// The quotient is exact and fits in 64 bits.
#if defined(__x86_64__)
inline uint64_t divide_128(uint64_t hi, uint64_t lo, uint64_t d, uint64_t &remainder) {
    uint64_t q, r;
    __asm__("divq %4" : "=a"(q), "=d"(r) : "a"(lo), "d"(hi), "rm"(d) : "cc");
    remainder = r;
    return q;
}
#else
// 64 by 32-bit division with hi < d: one instruction, where C would call a
// 64-bit division routine.
inline uint32_t divide_64(uint32_t hi, uint32_t lo, uint32_t d, uint32_t &remainder) {
    uint32_t q, r;
    __asm__("divl %4" : "=a"(q), "=d"(r) : "a"(lo), "d"(hi), "rm"(d) : "cc");
    remainder = r;
    return q;
}

// Knuth's long division in 32-bit digits, least significant digit first:
// u (m + n digits) divided by v (n digits, top bit of v[n-1] set), with
// u[m+n-1..m] < v so that the quotient has m digits. u is left holding the
// remainder in its low n digits.
template <int M, int N>
__attribute__((always_inline)) inline void long_divide(uint32_t *u, const uint32_t *v, uint32_t *q) {
#pragma GCC unroll 4
    for (int j = M - 1; j >= 0; --j) {
        uint32_t top = u[j + N], next = u[j + N - 1];
        uint32_t qhat, rhat;
        bool rhat_big = false;
        if (top >= v[N - 1]) {
            // The estimate would not fit a digit; start from the greatest one.
            qhat = 0xFFFFFFFFu;
            uint64_t r = ((static_cast<uint64_t>(top) << 32) | next) -
                         static_cast<uint64_t>(qhat) * v[N - 1];
            rhat_big = (r >> 32) != 0;
            rhat = static_cast<uint32_t>(r);
        } else {
            qhat = divide_64(top, next, v[N - 1], rhat);
        }
        if (N > 1) {
            while (!rhat_big && static_cast<uint64_t>(qhat) * v[N - 2] >
                                    ((static_cast<uint64_t>(rhat) << 32) | u[j + N - 2])) {
                --qhat;
                uint32_t old = rhat;
                rhat += v[N - 1];
                rhat_big = rhat < old;
            }
        }
        // Multiply and subtract; if that went below zero, add one divisor back.
        uint64_t borrow = 0, carry = 0;
#pragma GCC unroll 4
        for (int i = 0; i < N; ++i) {
            uint64_t p = static_cast<uint64_t>(qhat) * v[i] + carry;
            carry = p >> 32;
            uint64_t t = static_cast<uint64_t>(u[i + j]) - static_cast<uint32_t>(p) - borrow;
            u[i + j] = static_cast<uint32_t>(t);
            borrow = (t >> 32) & 1;
        }
        uint64_t t = static_cast<uint64_t>(u[j + N]) - carry - borrow;
        u[j + N] = static_cast<uint32_t>(t);
        if (t >> 63) {
            --qhat;
            uint64_t c = 0;
#pragma GCC unroll 4
            for (int i = 0; i < N; ++i) {
                uint64_t s = static_cast<uint64_t>(u[i + j]) + v[i] + c;
                u[i + j] = static_cast<uint32_t>(s);
                c = s >> 32;
            }
            u[j + N] += static_cast<uint32_t>(c);
        }
        q[j] = qhat;
    }
}

inline uint64_t divide_128(uint64_t hi, uint64_t lo, uint64_t d, uint64_t &remainder) {
    uint32_t u[4] = {static_cast<uint32_t>(lo), static_cast<uint32_t>(lo >> 32),
                     static_cast<uint32_t>(hi), static_cast<uint32_t>(hi >> 32)};
    uint32_t v[2] = {static_cast<uint32_t>(d), static_cast<uint32_t>(d >> 32)};
    uint32_t q[2];
    long_divide<2, 2>(u, v, q);
    remainder = (static_cast<uint64_t>(u[1]) << 32) | u[0];
    return (static_cast<uint64_t>(q[1]) << 32) | q[0];
}
#endif

// The exact sum of big and small (|big| >= |small|, both finite) with the
// given sign, and their difference.
void mag_add(krm_real16 *result, u128 big, u128 small, uint64_t sign);
void mag_sub(krm_real16 *result, u128 big, u128 small, uint64_t sign);

}  // namespace krm::quad
