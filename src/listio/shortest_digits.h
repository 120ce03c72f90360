// Shortest decimal digits of a binary value: the fewest digits that lie
// strictly inside the interval of half a unit in the last place on either
// side of the value, the gap being taken as equal on both sides also at a
// power of two. List-directed and namelist output of reals use them.
//
// Two ways to the same digits: the exact multi-precision method, for every
// kind, and a fixed-width method for significands of up to 53 bits that
// gives up (and leaves the value to the exact method) whenever its
// approximations could not decide.
#pragma once

#include <stdint.h>

namespace krm::shortest {

// Most digits any kind can produce, with room to spare.
constexpr int max_digits = 40;

// The value f * 2**exponent, f having exactly `bits` bits (the leading one
// set). Kinds: 24, 53 and 113 bits.
struct kind_limits {
    int bits;
    int min_exponent;  // of the least subnormal, normalised
    int max_exponent;  // of the greatest finite value
};
extern const kind_limits real4_limits, real8_limits, real16_limits;

// The exact method. `fraction` holds (bits + 15) / 16 limbs of 16 bits, least
// significant first. The digits (no terminator) go to `digits`, at least
// max_digits bytes; the value is their integer times ten to *k. An argument
// outside the kinds' ranges gives no digits (*ndigits 0).
void exact_digits(const uint16_t *fraction, int bits, int exponent, int unequal_gap, char *digits, int *ndigits,
                  int *k);

// The fixed-width method for f below 2**54 and an exponent within REAL(8)'s
// range. Returns false, having written nothing, when it cannot decide.
bool fast_digits(uint64_t f, int exponent, char *digits, int *ndigits, int *k);

// The digits of a REAL(4) or REAL(8) value: the fixed-width method, or the
// exact one where it gives up. f has `bits` bits, the leading one set.
void digits_of(uint64_t f, int bits, int exponent, char *digits, int *ndigits, int *k);

// Compares two numbers given by 16-bit limbs, the index of the highest limb
// and of the lowest one that may be non-zero (limbs below it are zeros).
// High zero limbs are skipped; a number with no limbs left is zero.
int v_cmp(const uint16_t *a, int a_top, int a_low, const uint16_t *b, int b_top, int b_low);

// floor(e * log10(2)) for |e| up to 16384.
inline int floor_log10_pow2(int e) {
    return static_cast<int>((static_cast<int64_t>(e) * 1292913986) >> 32);
}

// Powers of five for the fixed-width method: entry j - pow5_min_index
// approximates 5**-j as (hi * 2**64 + lo) * 2**exp, rounded up, with the
// 128-bit integer normalised (bit 127 set).
struct pow5_entry {
    uint64_t hi, lo;
    int32_t exp;
};
constexpr int pow5_min_index = -340;
constexpr int pow5_max_index = 293;
extern const pow5_entry pow5_table[pow5_max_index - pow5_min_index + 1];

}  // namespace krm::shortest
