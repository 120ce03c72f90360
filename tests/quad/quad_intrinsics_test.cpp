// The exported REAL(16) intrinsics: sign manipulation, classification,
// constants, AINT, ANINT, NINT and its kinds, DPROD and MODULO, against
// libquadmath (truncq, roundq, fmodq) where it defines the same thing.
#include <gtest/gtest.h>

#include <limits.h>
#include <quadmath.h>

#include "krm/quad.h"
#include "quad/quad_support.h"

using namespace quadtest;
using namespace quadtest::named;

namespace {

const krm_real16 snan = words(0x7FFF0000u, 0, 0, 5);
const krm_real16 msnan = words(0xFFFF0000u, 0, 0, 5);

krm_real16 q(__float128 f) { return from_f128(f); }

TEST(QuadIntrinsics, AbsAndCopysign) {
    struct {
        krm_real16 a, b, abs, copysign;
    } cases[] = {
        {mone, one, one, one},
        {one, mone, one, mone},
        {mzero, zero, zero, zero},
        {zero, mzero, zero, mzero},
        {msnan, one, snan, snan},  // NaNs too: only the sign bit moves
        {qnan, minf, qnan, words(0xFFFF8000u, 0, 0, 5)},
        {minf, qnan, inf, inf},
        {one, words(0x80000000u, 0, 0, 7), one, mone},
    };
    for (const auto &c : cases) {
        krm_real16 r;
        __Qabs(&r, &c.a);
        EXPECT_TRUE(same_bits(r, c.abs)) << "__Qabs " << hex(c.a) << " gave " << hex(r);
        __Qcopysign(&r, &c.a, &c.b);
        EXPECT_TRUE(same_bits(r, c.copysign)) << "__Qcopysign " << hex(c.a) << " , " << hex(c.b);
        __Qf95_sign(&r, &c.a, &c.b);
        EXPECT_TRUE(same_bits(r, c.copysign)) << "__Qf95_sign " << hex(c.a) << " , " << hex(c.b);
    }
}

// __Qsign reads b's least significant word as if it held a sign: bit 31 of
// the result's low word is set when that word exceeds 0x80000000, or equals
// it while another word of b is not zero. b's real sign plays no part.
TEST(QuadIntrinsics, SignActsOnTheLowWord) {
    const krm_real16 a = words(0x40000000u, 0x11111111u, 0x22222222u, 0x12345678u);
    const krm_real16 a_high = words(0x40000000u, 0x11111111u, 0x22222222u, 0x92345678u);
    struct {
        const char *what;
        krm_real16 a, b;
        krm_real16 expected;
    } cases[] = {
        {"b low word 0x80000001", a, words(0, 0, 0, 0x80000001u), a_high},
        {"b low word 0xFFFFFFFF", a, words(0, 0, 0, 0xFFFFFFFFu), a_high},
        {"b low word 0x80000000, rest zero", a, words(0, 0, 0, 0x80000000u), a},
        {"b low word 0x80000000, rest zero, bit already set", a_high, words(0, 0, 0, 0x80000000u), a},
        {"b low word 0x80000000 and a top word", a, words(0x00000001u, 0, 0, 0x80000000u), a_high},
        {"b low word 0x80000000 and word 1", a, words(0, 0, 1, 0x80000000u), a_high},
        {"b low word 0x7FFFFFFF", a_high, words(0, 0, 0, 0x7FFFFFFFu), a},
        {"b = -1: its low word is 0", a_high, mone, a},
        {"b = -0", a_high, mzero, a},
        {"b = 1 with a low word past 0x80000000", a, words(0x3FFF0000u, 0, 0, 0x90000000u), a_high},
        {"a's sign is not touched", mone, words(0, 0, 0, 0x80000001u), words(0xBFFF0000u, 0, 0, 0x80000000u)},
    };
    for (const auto &c : cases) {
        krm_real16 r;
        __Qsign(&r, &c.a, &c.b);
        EXPECT_TRUE(same_bits(r, c.expected)) << c.what << ": gave " << hex(r) << ", expected " << hex(c.expected);
    }
}

TEST(QuadIntrinsics, Classification) {
    struct {
        const char *what;
        krm_real16 x;
        int finite, isinf, isnormal, issubnormal, iszero, signbit;
    } cases[] = {
        {"+0", zero, 1, 0, 0, 0, 1, 0},
        {"-0", mzero, 1, 0, 0, 0, 1, 1},
        {"1", one, 1, 0, 1, 0, 0, 0},
        {"-1", mone, 1, 0, 1, 0, 0, 1},
        {"min subnormal", min_sub, 1, 0, 0, 1, 0, 0},
        {"max subnormal", max_sub, 1, 0, 0, 1, 0, 0},
        {"-subnormal with a top fraction bit only", words(0x80008000u, 0, 0, 0), 1, 0, 0, 1, 0, 1},
        {"min normal", min_normal, 1, 0, 1, 0, 0, 0},
        {"max normal", max, 1, 0, 1, 0, 0, 0},
        {"+inf", inf, 0, 1, 0, 0, 0, 0},
        {"-inf", minf, 0, 1, 0, 0, 0, 1},
        {"quiet NaN", qnan, 0, 0, 0, 0, 0, 0},
        {"-signalling NaN", msnan, 0, 0, 0, 0, 0, 1},
        {"NaN with a low payload only", words(0x7FFF0000u, 0, 1, 0), 0, 0, 0, 0, 0, 0},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(__Qfinite(&c.x), c.finite) << c.what;
        EXPECT_EQ(__Qisinf(&c.x), c.isinf) << c.what;
        EXPECT_EQ(__Qisnormal(&c.x), c.isnormal) << c.what;
        EXPECT_EQ(__Qissubnormal(&c.x), c.issubnormal) << c.what;
        EXPECT_EQ(__Qiszero(&c.x), c.iszero) << c.what;
        EXPECT_EQ(__Qsignbit(&c.x), c.signbit) << c.what;
    }
}

// The constants in storage order; the quiet NaN is the plain one, not the
// all-ones default NaN of invalid operations.
TEST(QuadIntrinsics, Constants) {
    struct {
        const char *what;
        void (*entry)(krm_real16 *);
        krm_real16 expected;
    } cases[] = {
        {"__infinityq", __infinityq, inf},
        {"__quiet_nanq", __quiet_nanq, words(0x7FFF8000u, 0, 0, 0)},
        {"__signaling_nanq", __signaling_nanq, words(0x7FFF0000u, 0, 0, 1)},
        {"__max_normalq", __max_normalq, q(FLT128_MAX)},
        {"__min_normalq", __min_normalq, q(FLT128_MIN)},
        {"__max_subnormalq", __max_subnormalq, q(FLT128_MIN - FLT128_DENORM_MIN)},
        {"__min_subnormalq", __min_subnormalq, q(FLT128_DENORM_MIN)},
    };
    for (const auto &c : cases) {
        krm_real16 r;
        memset(&r, 0xA5, sizeof r);
        c.entry(&r);
        EXPECT_TRUE(same_bits(r, c.expected)) << c.what << " gave " << hex(r);
    }
}

// Values around the integers: from below 1 to beyond 2^112, ties among them.
krm_real16 integral_operand(operands &gen) {
    int pick = gen.below(8);
    if (pick == 0) {
        // n + 0.5 exactly: a tie
        __float128 n = static_cast<__float128>(gen.bits() >> gen.below(64)) + 0.5;
        if (gen.below(2)) n = -n;
        return q(n);
    }
    if (pick == 1) return gen.with_exponent(16383 + 100 + gen.below(20));
    return gen.with_exponent(16383 - 3 + gen.below(70));
}

TEST(QuadIntrinsics, AintAndAnintMatchTruncAndRound) {
    operands gen(0x9001);
    for (const direction &d : directions) {
        // The results must not depend on the direction, though rintl does.
        rounding_scope mode(d.fe);
        for (int i = 0; i < scaled(100000); ++i) {
            krm_real16 x = integral_operand(gen), r;
            __float128 f = to_f128(x);
            __Qaint(&r, &x);
            ASSERT_TRUE(same_bits(r, q(truncq(f)))) << "__Qaint " << hex(x) << " in " << d.name << " gave " << hex(r);
            __Qanint(&r, &x);
            ASSERT_TRUE(same_bits(r, q(roundq(f)))) << "__Qanint " << hex(x) << " in " << d.name << " gave " << hex(r);
        }
    }
}

TEST(QuadIntrinsics, AintAndAnintEdges) {
    struct {
        const char *what;
        krm_real16 x, aint, anint;
    } cases[] = {
        {"2.5", q(2.5), q(2.0), q(3.0)},
        {"-2.5", q(-2.5), q(-2.0), q(-3.0)},
        {"3.5", q(3.5), q(3.0), q(4.0)},
        {"0.5", q(0.5), zero, one},
        {"-0.5", q(-0.5), mzero, mone},
        {"-0.25", q(-0.25), mzero, mzero},
        {"0.49999", q(0.49999), zero, zero},
        {"-0", mzero, mzero, mzero},
        {"min subnormal", min_sub, zero, zero},
        {"2^112 + 1 stays", words(0x406F0000u, 0, 0, 1), words(0x406F0000u, 0, 0, 1), words(0x406F0000u, 0, 0, 1)},
        {"2^111 + 0.5", words(0x406E0000u, 0, 0, 1), words(0x406E0000u, 0, 0, 0), words(0x406E0000u, 0, 0, 2)},
        {"max", max, max, max},
        {"-inf", minf, minf, minf},
    };
    for (const direction &d : directions) {
        rounding_scope mode(d.fe);
        for (const auto &c : cases) {
            krm_real16 r;
            __Qaint(&r, &c.x);
            EXPECT_TRUE(same_bits(r, c.aint)) << "__Qaint " << c.what << " in " << d.name << " gave " << hex(r);
            __Qanint(&r, &c.x);
            EXPECT_TRUE(same_bits(r, c.anint)) << "__Qanint " << c.what << " in " << d.name << " gave " << hex(r);
        }
    }
    // AINT of a NaN is x + x: quiet.
    krm_real16 r;
    __Qaint(&r, &snan);
    EXPECT_TRUE(same_bits(r, words(0x7FFF8000u, 0, 0, 5))) << hex(r);
    __Qanint(&r, &qnan);
    EXPECT_TRUE(is_nan(r)) << hex(r);
}

TEST(QuadIntrinsics, NintMatchesRoundInRange) {
    operands gen(0x9101);
    for (const direction &d : directions) {
        rounding_scope mode(d.fe);
        for (int i = 0; i < scaled(100000); ++i) {
            krm_real16 x = integral_operand(gen);
            __float128 f = to_f128(x);
            bool in32 = f > -2147483648.5 && f < 2147483647.5;
            bool in64 = f > static_cast<__float128>(INT64_MIN) - 0.5 && f < static_cast<__float128>(INT64_MAX) + 0.5;
            int32_t e32 = in32 ? static_cast<int32_t>(roundq(f)) : INT32_MIN;
            int64_t e64 = in64 ? static_cast<int64_t>(llroundq(f)) : INT64_MIN;
            ASSERT_EQ(__Qnint(&x), e32) << hex(x) << " in " << d.name;
            ASSERT_EQ(__i_Qnnt(&x), e32) << hex(x) << " in " << d.name;
            ASSERT_EQ(__h_Qnnt(&x), static_cast<int16_t>(static_cast<uint16_t>(e32))) << hex(x) << " in " << d.name;
            ASSERT_EQ(__il_Qnnt(&x), e64) << hex(x) << " in " << d.name;
        }
    }
}

// The limits: strictly inside them ANINT converted; outside, and for NaNs,
// the integer with only its top bit set. The 16-bit form is the 32-bit
// result cut to 16 bits, so beyond the 32-bit range it is 0.
TEST(QuadIntrinsics, NintEdges) {
    struct {
        const char *what;
        krm_real16 x;
        int32_t n;
        int16_t h;
        int64_t il;
    } cases[] = {
        {"2.5", q(2.5), 3, 3, 3},
        {"-2.5", q(-2.5), -3, -3, -3},
        {"0.5", q(0.5), 1, 1, 1},
        {"-0.4", q(-0.4), 0, 0, 0},
        {"2147483647.4", q(2147483647.4), INT32_MAX, -1, INT32_MAX},
        {"2147483647.5 is outside", q(2147483647.5), INT32_MIN, 0, 2147483648ll},
        {"-2147483648.4", q(-2147483648.4), INT32_MIN, 0, -2147483648ll},
        {"-2147483648.5 is outside", q(-2147483648.5), INT32_MIN, 0, -2147483649ll},
        {"40000", q(40000.0), 40000, -25536, 40000},
        {"32767.5", q(32767.5), 32768, -32768, 32768},
        {"1e10", q(1e10), INT32_MIN, 0, 10000000000ll},
        {"-1e10", q(-1e10), INT32_MIN, 0, -10000000000ll},
        {"2^62 + 0.5", q(static_cast<__float128>(1ll << 62) + 0.5), INT32_MIN, 0, 4611686018427387905ll},
        {"2^63 - 1", q(static_cast<__float128>(INT64_MAX)), INT32_MIN, 0, INT64_MAX},
        {"2^63 - 0.5 is outside", q(static_cast<__float128>(INT64_MAX) + 0.5), INT32_MIN, 0, INT64_MIN},
        {"-2^63", q(static_cast<__float128>(INT64_MIN)), INT32_MIN, 0, INT64_MIN},
        {"-2^63 - 0.5 is outside", q(static_cast<__float128>(INT64_MIN) - 0.5), INT32_MIN, 0, INT64_MIN},
        {"NaN", qnan, INT32_MIN, 0, INT64_MIN},
        {"-NaN", msnan, INT32_MIN, 0, INT64_MIN},
        {"inf", inf, INT32_MIN, 0, INT64_MIN},
        {"-inf", minf, INT32_MIN, 0, INT64_MIN},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(__Qnint(&c.x), c.n) << c.what;
        EXPECT_EQ(__i_Qnnt(&c.x), c.n) << c.what;
        EXPECT_EQ(__h_Qnnt(&c.x), c.h) << c.what;
        EXPECT_EQ(__il_Qnnt(&c.x), c.il) << c.what;
    }
}

// DPROD: the exact product of two doubles.
TEST(QuadIntrinsics, ProdIsExact) {
    operands gen(0x9201);
    for (const direction &d : directions) {
        rounding_scope mode(d.fe);
        for (int i = 0; i < scaled(50000); ++i) {
            double x, y;
            uint64_t bx = gen.bits(), by = gen.bits();
            if (gen.below(4) == 0) bx &= 0x800FFFFFFFFFFFFFull;
            memcpy(&x, &bx, 8);
            memcpy(&y, &by, 8);
            if (x != x || y != y) continue;
            krm_real16 r;
            __Qprod(&r, &x, &y);
            __float128 e = static_cast<__float128>(x) * static_cast<__float128>(y);
            krm_real16 expected = e != e ? default_nan() : q(e);
            ASSERT_TRUE(same_bits(r, expected)) << hex(x) << " * " << hex(y) << " gave " << hex(r);
        }
    }
}

// MODULO: fmod's exact remainder, moved by p when the signs differ.
TEST(QuadIntrinsics, ModuloMatchesFmod) {
    operands gen(0x9301);
    for (const direction &d : directions) {
        rounding_scope mode(d.fe);
        for (int i = 0; i < scaled(40000); ++i) {
            int ep = gen.below(10) == 0 ? gen.below(3) : 1 + gen.below(0x7FFE);
            int ea = ep - 4 + gen.below(gen.below(2) ? 12 : 300);
            if (ea < 0) ea = 0;
            if (ea > 0x7FFE) ea = 0x7FFE;
            krm_real16 a = gen.with_exponent(ea), p = gen.with_exponent(ep);
            if (gen.below(20) == 0) p = gen.below(2) ? inf : minf;
            __float128 fa = to_f128(a), fp = to_f128(p);
            __float128 e = fmodq(fa, fp);
            if (((fa < 0 && fp > 0) || (fa > 0 && fp < 0)) && e != 0) e = e + fp;
            krm_real16 r;
            __f_modulo_Q(&r, &a, &p);
            if (e != e)
                ASSERT_TRUE(is_nan(r)) << hex(a) << " modulo " << hex(p) << " gave " << hex(r);
            else
                ASSERT_TRUE(same_bits(r, q(e)))
                    << hex(a) << " modulo " << hex(p) << " in " << d.name << " gave " << hex(r) << ", expected "
                    << hex(q(e));
        }
    }
}

TEST(QuadIntrinsics, ModuloEdges) {
    struct {
        const char *what;
        krm_real16 a, p;
        bool nan;
        krm_real16 expected;
    } cases[] = {
        {"5 mod 3", q(5.0), q(3.0), false, q(2.0)},
        {"-5 mod 3", q(-5.0), q(3.0), false, q(1.0)},
        {"5 mod -3", q(5.0), q(-3.0), false, q(-1.0)},
        {"-5 mod -3", q(-5.0), q(-3.0), false, q(-2.0)},
        {"-6 mod 3 is -0: no shift for a zero", q(-6.0), q(3.0), false, mzero},
        {"6 mod -3", q(6.0), q(-3.0), false, zero},
        {"-0 mod 3", mzero, q(3.0), false, mzero},
        {"1 mod 0", one, zero, true, zero},
        {"inf mod 3", inf, q(3.0), true, zero},
        {"NaN mod 3", qnan, q(3.0), true, zero},
        {"3 mod NaN", q(3.0), snan, true, zero},
        {"3 mod inf", q(3.0), inf, false, q(3.0)},
        {"-3 mod inf: the signs differ", q(-3.0), inf, false, inf},
        {"max mod min subnormal", max, min_sub, false, zero},
        {"max mod 3 min subnormal", max, words(0, 0, 0, 3), false, words(0, 0, 0, 2)},
        {"min normal mod max subnormal", min_normal, max_sub, false, min_sub},
    };
    for (const auto &c : cases) {
        krm_real16 r;
        __f_modulo_Q(&r, &c.a, &c.p);
        if (c.nan)
            EXPECT_TRUE(is_nan(r)) << c.what << " gave " << hex(r);
        else
            EXPECT_TRUE(same_bits(r, c.expected)) << c.what << " gave " << hex(r) << ", expected " << hex(c.expected);
    }
}

}  // namespace
