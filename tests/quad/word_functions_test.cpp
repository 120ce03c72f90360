// The REAL(16) functions that work on the words of a value: SCALE and its
// like, the exponent, the significand, the neighbour, CEILING, FLOOR and the
// remainder, against libquadmath and libgcc's __float128 in every rounding
// direction.
#include <gtest/gtest.h>

#include <limits.h>
#include <quadmath.h>

#include "krm/quad_functions.h"
#include "quad/ldmath.h"
#include "quad/quad_support.h"

using namespace quadtest;
using namespace quadtest::named;

namespace {


// 2^n for n in the normal range, exactly.
__float128 power_of_two(int n) { return ldexpq(1.0Q, n); }

TEST(QuadWordFunctions, ScalbnAgreesWithOneMultiplication) {
    // Within the normal range of the factor, x * 2^n is one correctly
    // rounded multiplication, which libgcc does in the current direction:
    // subnormal results are where a second rounding would show.
    operands gen(11);
    for (const direction &d : directions) {
        rounding_scope scope(d.fe);
        for (long i = 0; i < cases_per_direction(); ++i) {
            krm_real16 x = gen.any();
            int n = gen.below(4) == 0 ? gen.below(32767) - 16382 : gen.below(400) - 200 - (gen.below(2) ? 16300 : 0);
            if (n > 16383 || n < -16382) continue;
            krm_real16 r;
            __Qscalbn(&r, &x, &n);
            volatile __float128 f = to_f128(x);
            __float128 expected = f * power_of_two(n);
            ASSERT_TRUE(same_bits(r, from_f128(expected)))
                << d.name << " scalbn(" << hex(x) << ", " << n << ") gave " << hex(r) << ", not "
                << hex(from_f128(expected));
        }
    }
}

TEST(QuadWordFunctions, ScalbnBeyondOneFactor) {
    // Steps of more than one power-of-two factor: exact until the last,
    // which rounds once; far beyond the range, an overflow or underflow
    // that depends on the direction.
    struct {
        krm_real16 x;
        int n;
        int direction;
        krm_real16 expected;
    } cases[] = {
        {min_sub, 16494 + 16383, 0, words(0x7FFE0000u, 0, 0, 0)},  // up from the least subnormal to 2^16383
        {max, -16383 - 16494 - 1, 0, min_sub},  // (1 - 2^-113) quanta: up to the least subnormal
        {max, -16383 - 16494 - 1, 3, zero},     // and towards zero, none
        {max, -16383 - 16494 + 1, 3, words(0, 0, 0, 3)},  // just under 4 quanta
        {one, INT_MAX, 0, inf},
        {one, INT_MAX, 3, max},
        {one, INT_MIN, 0, zero},
        {one, INT_MIN, 2, min_sub},
        {words(0xBFFF0000u, 0, 0, 0), INT_MIN, 1, words(0x80000000u, 0, 0, 1)},
        {words(0x00008000u, 0, 0, 0), 1, 0, words(0x00010000u, 0, 0, 0)},  // subnormal to the least normal, exactly
        {words(0x3FFF8000u, 0, 0, 0), -16494, 0, words(0, 0, 0, 2)},  // 1.5 quanta: a tie, to even
        {words(0x3FFF8000u, 0, 0, 0), -16494 - 1, 0, words(0, 0, 0, 1)},  // 0.75 quanta
        {inf, -5, 0, inf},
        {mzero, 100, 0, mzero},
    };
    for (const auto &c : cases) {
        rounding_scope scope(directions[c.direction].fe);
        krm_real16 r;
        __Qscalbn(&r, &c.x, &c.n);
        EXPECT_TRUE(same_bits(r, c.expected)) << directions[c.direction].name << " scalbn(" << hex(c.x) << ", "
                                              << c.n << ") gave " << hex(r);
    }
    krm_real16 r;
    int n = 3;
    __Qscalbn(&r, &qnan, &n);
    EXPECT_TRUE(is_nan(r));
}

TEST(QuadWordFunctions, IlogbAndSignificand) {
    operands gen(12);
    for (long i = 0; i < cases_per_direction(); ++i) {
        krm_real16 x = gen.any();
        __float128 f = to_f128(x);
        if (f == 0 || isinfq(f)) continue;
        int e = __Qilogb(&x);
        ASSERT_EQ(e, ilogbq(f)) << hex(x);
        krm_real16 s;
        __Qsignificand(&s, &x);
        ASSERT_TRUE(same_bits(s, from_f128(scalbnq(f, -e)))) << hex(x) << " gave " << hex(s);
        __float128 m = fabsq(to_f128(s));
        ASSERT_TRUE(m >= 1 && m < 2) << hex(x);
    }
    // The two ends that libquadmath numbers differently.
    EXPECT_EQ(__Qilogb(&zero), static_cast<int>(0x80000001u));
    EXPECT_EQ(__Qilogb(&mzero), static_cast<int>(0x80000001u));
    EXPECT_EQ(__Qilogb(&inf), 0x7FFFFFFF);
    EXPECT_EQ(__Qilogb(&minf), 0x7FFFFFFF);
    EXPECT_EQ(__Qilogb(&qnan), 0x7FFFFFFF);
    EXPECT_EQ(__Qilogb(&min_sub), -16494);
    krm_real16 s;
    __Qsignificand(&s, &min_sub);
    EXPECT_TRUE(same_bits(s, one)) << hex(s);
}

TEST(QuadWordFunctions, NextafterSteps) {
    operands gen(13);
    for (long i = 0; i < cases_per_direction(); ++i) {
        krm_real16 x = gen.any(), y = gen.any();
        krm_real16 r;
        __Qnextafter(&r, &x, &y);
        ASSERT_TRUE(same_bits(r, from_f128(nextafterq(to_f128(x), to_f128(y)))))
            << hex(x) << " towards " << hex(y) << " gave " << hex(r);
    }
    struct {
        krm_real16 x, y, expected;
    } cases[] = {
        {zero, one, min_sub},
        {zero, minf, words(0x80000000u, 0, 0, 1)},
        {mzero, zero, zero},  // equal: y itself
        {max, inf, inf},
        {inf, one, max},
        {min_sub, zero, zero},
        {words(0x00010000u, 0, 0, 0), zero, words(0x0000FFFFu, ~0u, ~0u, ~0u)},
        {words(0x3FFEFFFFu, ~0u, ~0u, ~0u), inf, one},  // the carry runs through every word
    };
    for (const auto &c : cases) {
        krm_real16 r;
        __Qnextafter(&r, &c.x, &c.y);
        EXPECT_TRUE(same_bits(r, c.expected)) << hex(c.x) << " towards " << hex(c.y) << " gave " << hex(r);
    }
    krm_real16 r;
    __Qnextafter(&r, &one, &qnan);
    EXPECT_TRUE(is_nan(r));
}

TEST(QuadWordFunctions, CeilingFloorAndRemainder) {
    operands gen(14);
    for (const direction &d : directions) {
        rounding_scope scope(d.fe);
        for (long i = 0; i < cases_per_direction(); ++i) {
            // Exponents near the integer boundary are the interesting ones.
            krm_real16 x = gen.below(2) ? gen.with_exponent(16383 + gen.below(120) - 4) : gen.any();
            krm_real16 r;
            __Qceil(&r, &x);
            ASSERT_TRUE(same_bits(r, from_f128(ceilq(to_f128(x))))) << d.name << " ceil " << hex(x) << " gave " << hex(r);
            __Qfloor(&r, &x);
            ASSERT_TRUE(same_bits(r, from_f128(floorq(to_f128(x)))))
                << d.name << " floor " << hex(x) << " gave " << hex(r);
            if (i % 16) continue;  // the remainder loops a bit at a time: fewer of those
            krm_real16 p = gen.any();
            __float128 expected = fmodq(to_f128(x), to_f128(p));
            __Qfmod(&r, &x, &p);
            if (isnanq(expected))
                ASSERT_TRUE(is_nan(r)) << hex(x) << " mod " << hex(p);
            else
                ASSERT_TRUE(same_bits(r, from_f128(expected))) << hex(x) << " mod " << hex(p) << " gave " << hex(r);
        }
    }
    krm_real16 r;
    const krm_real16 mhalf = words(0xBFFE0000u, 0, 0, 0);
    __Qceil(&r, &mhalf);
    EXPECT_TRUE(same_bits(r, mzero)) << hex(r);  // the sign of the zero survives
    __Qceil(&r, &qnan);
    EXPECT_TRUE(is_nan(r));
    __Qfloor(&r, &minf);
    EXPECT_TRUE(same_bits(r, minf));
}

}  // namespace
