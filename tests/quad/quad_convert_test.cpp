// Conversions between REAL(16) and double and the integers, against GCC's
// __float128 conversions, and the library's own rules where they differ from
// IEEE: subnormal doubles truncated, NaN payloads, out-of-range integers.
#include <gtest/gtest.h>

#include <limits.h>

#include "quad/quad_support.h"

using namespace quadtest;

namespace {

double double_of(uint64_t bits) {
    double d;
    memcpy(&d, &bits, 8);
    return d;
}

uint64_t bits_of(double d) {
    uint64_t b;
    memcpy(&b, &d, 8);
    return b;
}

// Any double that is not a NaN, subnormals and the ends of the range often.
double random_double(operands &gen) {
    for (;;) {
        uint64_t b = gen.bits();
        int pick = gen.below(8);
        if (pick == 0) b &= 0x800FFFFFFFFFFFFFull;  // subnormal or zero
        if (pick == 1) b = (b & 0x800FFFFFFFFFFFFFull) | 0x7FF0000000000000ull * (gen.below(4) == 0);
        double d = double_of(b);
        if (d == d) return d;
    }
}

TEST(QuadConvert, DoubleWidensExactly) {
    operands gen(0x8001);
    for (int i = 0; i < scaled(200000); ++i) {
        double d = random_double(gen);
        krm_real16 r;
        feclearexcept(FE_ALL_EXCEPT);
        _Qdtoq(&r, &d);
        ASSERT_EQ(fetestexcept(FE_ALL_EXCEPT), 0);
        krm_real16 expected = from_f128(static_cast<__float128>(d));
        ASSERT_TRUE(same_bits(r, expected)) << hex(d) << " gave " << hex(r) << ", expected " << hex(expected);
    }
}

// A NaN is made quiet and its fraction goes to the top of the result's.
TEST(QuadConvert, DoubleNaNs) {
    struct {
        uint64_t d;
        krm_real16 expected;
    } cases[] = {
        {0x7FF8000000000000ull, words(0x7FFF8000u, 0, 0, 0)},
        {0x7FF0000000000001ull, words(0x7FFF8000u, 0, 0x10000000u, 0)},
        {0xFFF8000000000001ull, words(0xFFFF8000u, 0, 0x10000000u, 0)},
        {0x7FFFFFFFFFFFFFFFull, words(0x7FFFFFFFu, 0xFFFFFFFFu, 0xF0000000u, 0)},
        {0x7FF4000000000000ull, words(0x7FFFC000u, 0, 0, 0)},
    };
    for (const auto &c : cases) {
        double d = double_of(c.d);
        krm_real16 r;
        _Qdtoq(&r, &d);
        EXPECT_TRUE(same_bits(r, c.expected)) << hex(d) << " gave " << hex(r);
    }
}

// Values spread over the whole range of doubles and beyond, with a bias to
// the subnormal doubles and the boundaries of the rules.
krm_real16 narrowing_operand(operands &gen) {
    int pick = gen.below(10);
    int e;
    if (pick < 3)
        e = 0x3BCC - 4 + gen.below(0x3C02 - 0x3BCC + 8);  // the subnormal band and its edges
    else if (pick < 4)
        e = 0x43FF - 3 + gen.below(6);  // the top
    else if (pick < 5)
        e = gen.below(0x7FFF);
    else
        e = 0x3C01 + gen.below(0x43FF - 0x3C01);
    return gen.with_exponent(e);
}

TEST(QuadConvert, NarrowingToDouble) {
    operands gen(0x8101);
    for (const direction &d : directions) {
        rounding_scope mode(d.fe);
        for (int i = 0; i < scaled(200000); ++i) {
            krm_real16 x = narrowing_operand(gen);
            feclearexcept(FE_ALL_EXCEPT);
            double r = _Qqtod(&x);
            ASSERT_EQ(fetestexcept(FE_ALL_EXCEPT), 0) << hex(x);
            uint32_t top = x.word[3] & 0x7FFFFFFFu;
            double expected;
            bool nonzero = (top | x.word[2] | x.word[1] | x.word[0]) != 0;
            bool negative = x.word[3] >> 31;
            if (top < 0x3BCC0000u) {
                // Below half the least subnormal: zero, or the least
                // subnormal when rounding away from zero. IEEE would also
                // round the values from half of it up to it; not so here.
                bool away = nonzero && ((d.number == 2 && !negative) || (d.number == 1 && negative));
                expected = double_of((negative ? 0x8000000000000000ull : 0) | (away ? 1 : 0));
            } else if (top < 0x3C010000u) {
                // A subnormal double is truncated in every direction, which
                // is the oracle's conversion rounding towards zero.
                rounding_scope truncate(FE_TOWARDZERO);
                expected = static_cast<double>(to_f128(x));
            } else {
                expected = static_cast<double>(to_f128(x));
            }
            ASSERT_EQ(bits_of(r), bits_of(expected)) << hex(x) << " in direction " << d.name << " gave " << hex(r)
                                                     << ", expected " << hex(expected);
        }
    }
}

TEST(QuadConvert, NarrowingSpecialValues) {
    struct {
        const char *what;
        krm_real16 x;
        uint64_t expected[4];  // by direction
    } cases[] = {
        {"infinity", words(0x7FFF0000u, 0, 0, 0), {0x7FF0000000000000ull, 0x7FF0000000000000ull,
                                                   0x7FF0000000000000ull, 0x7FF0000000000000ull}},
        {"-infinity", words(0xFFFF0000u, 0, 0, 0), {0xFFF0000000000000ull, 0xFFF0000000000000ull,
                                                    0xFFF0000000000000ull, 0xFFF0000000000000ull}},
        // NaNs: the sign, quiet, the top bits of the fraction.
        {"signalling NaN", words(0x7FFF0000u, 0, 0x10000000u, 0), {0x7FF8000000000001ull, 0x7FF8000000000001ull,
                                                                  0x7FF8000000000001ull, 0x7FF8000000000001ull}},
        {"negative quiet NaN", words(0xFFFF8000u, 0x12345678u, 0x9ABCDEF0u, 0x11111111u),
         {0xFFF8000123456789ull, 0xFFF8000123456789ull, 0xFFF8000123456789ull, 0xFFF8000123456789ull}},
        {"2^1024 overflows", words(0x43FF0000u, 0, 0, 0), {0x7FF0000000000000ull, 0x7FEFFFFFFFFFFFFFull,
                                                           0x7FF0000000000000ull, 0x7FEFFFFFFFFFFFFFull}},
        {"-2^1024", words(0xC3FF0000u, 0, 0, 0), {0xFFF0000000000000ull, 0xFFF0000000000000ull,
                                                  0xFFEFFFFFFFFFFFFFull, 0xFFEFFFFFFFFFFFFFull}},
        {"just under 2^1024 rounds to infinity", words(0x43FEFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu),
         {0x7FF0000000000000ull, 0x7FEFFFFFFFFFFFFFull, 0x7FF0000000000000ull, 0x7FEFFFFFFFFFFFFFull}},
        {"2^-1076", words(0x3BCB0000u, 0, 0, 0), {0, 0, 1, 0}},
        {"-2^-1076", words(0xBBCB0000u, 0, 0, 0), {0x8000000000000000ull, 0x8000000000000001ull,
                                                   0x8000000000000000ull, 0x8000000000000000ull}},
        // From half the least subnormal up the result is truncated, so the
        // least subnormal only comes from values below half of it.
        {"2^-1075", words(0x3BCC0000u, 0, 0, 0), {0, 0, 0, 0}},
        {"1.5 * 2^-1074", words(0x3BCD8000u, 0, 0, 0), {1, 1, 1, 1}},
        {"just under 2^-1022", words(0x3C00FFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu),
         {0x000FFFFFFFFFFFFFull, 0x000FFFFFFFFFFFFFull, 0x000FFFFFFFFFFFFFull, 0x000FFFFFFFFFFFFFull}},
        {"2^-1022", words(0x3C010000u, 0, 0, 0), {0x0010000000000000ull, 0x0010000000000000ull,
                                                  0x0010000000000000ull, 0x0010000000000000ull}},
        {"-0", words(0x80000000u, 0, 0, 0), {0x8000000000000000ull, 0x8000000000000000ull, 0x8000000000000000ull,
                                             0x8000000000000000ull}},
        {"1 + 2^-53 is a tie", words(0x3FFF0000u, 0, 0x08000000u, 0), {0x3FF0000000000000ull, 0x3FF0000000000000ull,
                                                                      0x3FF0000000000001ull, 0x3FF0000000000000ull}},
    };
    for (const auto &c : cases) {
        for (const direction &d : directions) {
            rounding_scope mode(d.fe);
            double r = _Qqtod(&c.x);
            EXPECT_EQ(bits_of(r), c.expected[d.number]) << c.what << " in direction " << d.name << ": gave " << hex(r);
        }
    }
}

TEST(QuadConvert, IntegersWidenExactly) {
    operands gen(0x8201);
    const int ints[] = {0, 1, -1, INT_MAX, INT_MIN, 3, -1000};
    for (int v : ints) {
        krm_real16 r;
        _Qitoq(&r, v);
        EXPECT_TRUE(same_bits(r, from_f128(v))) << v << " gave " << hex(r);
    }
    const long long longs[] = {0, 1, -1, LLONG_MAX, LLONG_MIN, 1ll << 53, (1ll << 53) + 1};
    for (long long v : longs) {
        krm_real16 r;
        _Qlltoq(&r, v);
        EXPECT_TRUE(same_bits(r, from_f128(v))) << v << " gave " << hex(r);
    }
    const unsigned long long ulongs[] = {0, 1, ULLONG_MAX, 1ull << 63, (1ull << 63) + 1};
    for (unsigned long long v : ulongs) {
        krm_real16 r;
        _Qulltoq(&r, v);
        EXPECT_TRUE(same_bits(r, from_f128(v))) << v << " gave " << hex(r);
    }
    // INT_MIN and its 64-bit like have their direct patterns.
    krm_real16 r;
    _Qitoq(&r, INT_MIN);
    EXPECT_TRUE(same_bits(r, words(0xC01E0000u, 0, 0, 0)));
    _Qlltoq(&r, LLONG_MIN);
    EXPECT_TRUE(same_bits(r, words(0xC03E0000u, 0, 0, 0)));
    for (int i = 0; i < scaled(100000); ++i) {
        uint64_t b = gen.bits() >> gen.below(64);
        int v32 = static_cast<int>(static_cast<uint32_t>(b));
        long long v64 = static_cast<long long>(b * (gen.below(2) ? 1 : ~0ull));
        _Qitoq(&r, v32);
        ASSERT_TRUE(same_bits(r, from_f128(v32))) << v32;
        _Qlltoq(&r, v64);
        ASSERT_TRUE(same_bits(r, from_f128(v64))) << v64;
        _Qulltoq(&r, b);
        ASSERT_TRUE(same_bits(r, from_f128(b))) << b;
    }
}

// Truncation towards zero; a magnitude beyond the range gives the pattern
// with only the top bit set (C leaves such a conversion undefined).
TEST(QuadConvert, NarrowingToIntegers) {
    operands gen(0x8301);
    for (int i = 0; i < scaled(300000); ++i) {
        krm_real16 x = gen.with_exponent(16383 - 4 + gen.below(72));
        __float128 f = to_f128(x);
        __float128 m = f < 0 ? -f : f;
        int expected_i = m < static_cast<__float128>(0x1p31) ? static_cast<int>(f) : INT_MIN;
        long long expected_ll = m < static_cast<__float128>(0x1p63) ? static_cast<long long>(f) : LLONG_MIN;
        unsigned long long mag = m < static_cast<__float128>(0x1p64) ? static_cast<unsigned long long>(m) : 0;
        unsigned long long expected_ull = m < static_cast<__float128>(0x1p64) ? (f < 0 ? 0 - mag : mag) : 1ull << 63;
        ASSERT_EQ(_Qqtoi(&x), expected_i) << hex(x);
        ASSERT_EQ(_Qqtoll(&x), expected_ll) << hex(x);
        ASSERT_EQ(_Qqtoull(&x), expected_ull) << hex(x);
    }
    struct {
        const char *what;
        krm_real16 x;
        int i;
        long long ll;
        unsigned long long ull;
    } cases[] = {
        {"2^31", words(0x401E0000u, 0, 0, 0), INT_MIN, 1ll << 31, 1ull << 31},
        {"-2^31", words(0xC01E0000u, 0, 0, 0), INT_MIN, -(1ll << 31), 0 - (1ull << 31)},
        {"2^31 - 0.5", words(0x401DFFFFu, 0xFFFE0000u, 0, 0), INT_MAX, INT_MAX, INT_MAX},
        {"-0.75", words(0xBFFE8000u, 0, 0, 0), 0, 0, 0},
        {"-1.5", words(0xBFFF8000u, 0, 0, 0), -1, -1, ~0ull},
        {"2^63", words(0x403E0000u, 0, 0, 0), INT_MIN, LLONG_MIN, 1ull << 63},
        {"2^64 - 0.5", words(0x403EFFFFu, 0xFFFFFFFFu, 0xFFFF0000u, 0), INT_MIN, LLONG_MIN, ~0ull},
        {"2^64", words(0x403F0000u, 0, 0, 0), INT_MIN, LLONG_MIN, 1ull << 63},
        {"-2^64", words(0xC03F0000u, 0, 0, 0), INT_MIN, LLONG_MIN, 1ull << 63},
        {"infinity", words(0x7FFF0000u, 0, 0, 0), INT_MIN, LLONG_MIN, 1ull << 63},
        {"NaN", words(0x7FFF8000u, 0, 0, 0), INT_MIN, LLONG_MIN, 1ull << 63},
        {"min subnormal", words(0, 0, 0, 1), 0, 0, 0},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(_Qqtoi(&c.x), c.i) << c.what;
        EXPECT_EQ(_Qqtoll(&c.x), c.ll) << c.what;
        EXPECT_EQ(_Qqtoull(&c.x), c.ull) << c.what;
    }
}

}  // namespace
