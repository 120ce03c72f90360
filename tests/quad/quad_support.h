// Helpers for the REAL(16) tests: conversions between the library's words and
// GCC's __float128 (the oracle), rounding-direction guards, operand
// generators that reach the corners, and an exact check of square roots.
#pragma once

#include <fenv.h>
#include <stdint.h>
#include <string.h>

#include <string>

#include "quad/long_double.h"

namespace quadtest {

// Storage order is __float128's own layout on x86, least significant first.
inline __float128 to_f128(const krm_real16 &x) {
    __float128 f;
    memcpy(&f, &x, 16);
    return f;
}

inline krm_real16 from_f128(__float128 f) {
    krm_real16 x;
    memcpy(&x, &f, 16);
    return x;
}

// Storage order from the top word down, as the values are written in the
// tests: words(hi, w2, w1, lo).
inline krm_real16 words(uint32_t top, uint32_t w2, uint32_t w1, uint32_t w0) {
    krm_real16 x;
    x.word[0] = w0;
    x.word[1] = w1;
    x.word[2] = w2;
    x.word[3] = top;
    return x;
}

inline krm_real16 halves(uint64_t hi, uint64_t lo) {
    return words(static_cast<uint32_t>(hi >> 32), static_cast<uint32_t>(hi),
                 static_cast<uint32_t>(lo >> 32), static_cast<uint32_t>(lo));
}

// The values the tables name most, in storage order.
namespace named {
inline const krm_real16 one = words(0x3FFF0000u, 0, 0, 0);
inline const krm_real16 mone = words(0xBFFF0000u, 0, 0, 0);
inline const krm_real16 zero = words(0, 0, 0, 0);
inline const krm_real16 mzero = words(0x80000000u, 0, 0, 0);
inline const krm_real16 inf = words(0x7FFF0000u, 0, 0, 0);
inline const krm_real16 minf = words(0xFFFF0000u, 0, 0, 0);
inline const krm_real16 qnan = words(0x7FFF8000u, 0, 0, 5);  // a payload, to see it kept
inline const krm_real16 min_sub = words(0, 0, 0, 1);
inline const krm_real16 max_sub = words(0x0000FFFFu, ~0u, ~0u, ~0u);
inline const krm_real16 min_normal = words(0x00010000u, 0, 0, 0);
inline const krm_real16 max = words(0x7FFEFFFFu, ~0u, ~0u, ~0u);
}  // namespace named

inline bool same_bits(const krm_real16 &a, const krm_real16 &b) { return memcmp(&a, &b, 16) == 0; }

std::string hex(const krm_real16 &x);
std::string hex(double d);

inline bool is_nan(const krm_real16 &x) {
    return (x.word[3] & 0x7FFF0000u) == 0x7FFF0000u &&
           ((x.word[3] & 0xFFFFu) | x.word[2] | x.word[1] | x.word[0]) != 0;
}

// The default NaN of an invalid operation.
inline krm_real16 default_nan() { return words(0x7FFFFFFFu, ~0u, ~0u, ~0u); }

// The four directions, numbered as the library numbers them.
struct direction {
    int number;  // 0 nearest, 1 down, 2 up, 3 towards zero
    int fe;      // fesetround's value
    const char *name;
};
extern const direction directions[4];

// Sets the direction for a scope and puts the old one back.
class rounding_scope {
public:
    explicit rounding_scope(int fe) : old_(fegetround()) { fesetround(fe); }
    ~rounding_scope() { fesetround(old_); }
    rounding_scope(const rounding_scope &) = delete;
    rounding_scope &operator=(const rounding_scope &) = delete;

private:
    int old_;
};

// Operands that reach the corners: random and sparse significands (long
// runs of ones and zeros give exact, halfway and carry-through cases),
// subnormals, exponents near both ends, and now and then a zero or an
// infinity. Never a NaN: NaNs have their own tables.
class operands {
public:
    explicit operands(uint64_t seed) : state_(seed) {}

    // splitmix64: fast, and plenty for test operands.
    uint64_t bits() {
        uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    int below(int n) { return static_cast<int>(bits() % static_cast<uint64_t>(n)); }

    // A significand of 112 fraction bits, as the two halves of a value.
    void fraction(uint64_t &hi, uint64_t &lo);
    // Any finite or infinite value.
    krm_real16 any();
    // A value with the given biased exponent (0: subnormal or zero).
    krm_real16 with_exponent(int e, bool may_be_negative = true);
    // A pair for addition: exponents close together most of the time.
    void for_add(krm_real16 &a, krm_real16 &b);
    // A pair for multiplication or division: exponents whose sum or
    // difference lands anywhere from below the subnormals to past the top.
    void for_mul(krm_real16 &a, krm_real16 &b, bool divide);
    // A positive value for a square root.
    krm_real16 for_sqrt();

private:
    uint64_t state_;
};

// Whether r is sqrt(x) correctly rounded in the direction (0..3), decided by
// exact integer arithmetic on the squares of the rounding bounds. x is
// positive and finite, not zero.
bool sqrt_is_correct(const krm_real16 &x, const krm_real16 &r, int direction);

// Whether r is a / b correctly rounded in the direction, by the same exact
// arithmetic: for the quotients where the oracle itself is in doubt. a and
// b are finite and not zero.
bool quotient_is_correct(const krm_real16 &a, const krm_real16 &b, const krm_real16 &r, int direction);

// How many random cases each oracle test runs per direction: a million in an
// optimised build, fewer where the sanitizers slow everything down.
long cases_per_direction();
// A count of cases for an optimised build, cut down in the same way.
long scaled(long optimised);

}  // namespace quadtest
