// The shortest-digit rule of list-directed output, written out from its
// definition for use as an oracle: of the open interval of half a unit in
// the last place on either side of the value (the gap taken as equal on both
// sides also at a power of two), take the largest power 10**k that has a
// multiple inside, and of those multiples the one nearest the value, the
// upper one on a tie. The reference does this with whole numbers of any
// size (GMP, where the build has it); the digit loop it judges is nowhere
// in it.
#pragma once

#include <stdint.h>

#include <string>


namespace krm_test {

// A REAL(16) value as the library takes it: four words, least significant
// first.
struct real16_words {
    uint32_t word[4];
};

// A positive finite value f * 2**e of one of the kinds: f has exactly `bits`
// bits (24, 53 or 113) with the leading one set; a subnormal is normalised.
struct binary_value {
    uint64_t f_lo = 0, f_hi = 0;
    int e = 0;
    int bits = 0;
};

binary_value of_real4(float x);
binary_value of_real8(double x);
binary_value of_real16(__float128 x);

inline real16_words to_real16(__float128 x) {
    real16_words r;
    static_assert(sizeof r == sizeof x, "binary128 in storage order");
    __builtin_memcpy(&r, &x, sizeof r);
    return r;
}

// Digits and the power of ten of the last one.
struct shortest_digits {
    std::string digits;
    int k = 0;
    bool operator==(const shortest_digits &o) const { return digits == o.digits && k == o.k; }
};
std::ostream &operator<<(std::ostream &os, const shortest_digits &d);

// What __f_cvt_real says, called as list-directed output calls it.
shortest_digits library_digits(const binary_value &v, bool unequal_gap = false);

// The digits as a number that strtof, strtod or strtoflt128 reads.
std::string as_number(const shortest_digits &d);

#if defined(KRM_TEST_GMP)
// The rule by its definition; with unequal_gap the lower half of the
// interval is half as wide.
shortest_digits reference_digits(const binary_value &v, bool unequal_gap = false);
#endif

// Sample counts of the random tests: smaller under the sanitizers and
// without optimisation, where every operation costs many times more; the
// environment variable KRM_TEST_SAMPLE_FACTOR multiplies them.
long scaled_count(long optimised_count);

}  // namespace krm_test
