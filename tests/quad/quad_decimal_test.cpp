// Decimal conversion of REAL(16): the exported entries as compiled code calls
// them, checked against exact integer references and, on x86-64, MPFR.
#include <fenv.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>

#include <random>
#include <string>

#include "krm/quad_decimal.h"
#include "quad/quad_decimal.h"
#include "support/decimal_harness.h"

#ifdef KRM_TEST_MPFR
#include <mpfr.h>
#endif

using namespace krm_test;

// The random and near-halfway sweeps of both directions (defined with the
// platform kinds) for binary128.
INSTANTIATE_TEST_SUITE_P(Quad, DecimalKind, ::testing::Values(fp_kind::quad), kind_test_name);

namespace {

// A REAL(16) from its storage words given top word first, as the bit
// patterns are usually read.
krm_real16 q(uint32_t top, uint32_t w2, uint32_t w1, uint32_t w0) { return krm_real16{{w0, w1, w2, top}}; }

const krm_real16 q_zero = q(0, 0, 0, 0);
const krm_real16 q_negative_zero = q(0x80000000u, 0, 0, 0);
const krm_real16 q_one = q(0x3FFF0000u, 0, 0, 0);
const krm_real16 q_one_and_half = q(0x3FFF8000u, 0, 0, 0);
const krm_real16 q_infinity = q(0x7FFF0000u, 0, 0, 0);
const krm_real16 q_negative_infinity = q(0xFFFF0000u, 0, 0, 0);
const krm_real16 q_nan = q(0x7FFF8000u, 0, 0, 0);
const krm_real16 q_least_subnormal = q(0, 0, 0, 1);
const krm_real16 q_greatest = q(0x7FFEFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu);

// The binary128 nearest to the digits, by the reference.
krm_real16 nearest(const std::string &digits, long exponent, bool negative = false) {
    bits128 b = reference_bits(fp_kind::quad, round_to_binary(digits, exponent, false, negative, 0, quad_info));
    return krm_real16{{b[0], b[1], b[2], b[3]}};
}

krm_real16 next_down(krm_real16 x) {
    // magnitude one unit lower, for a positive normal value
    for (int i = 0; i < 4; ++i)
        if (x.word[i]--) break;
    return x;
}

struct rounding_guard {
    int saved = fegetround();
    ~rounding_guard() { fesetround(saved); }
};

const int fe_modes[4] = {FE_TONEAREST, FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO};

// ------------------------------------------------------------ x86_qeconvert

TEST(QuadEconvert, ZeroGivesZerosAndPointOne) {
    char buf[16];
    int dp = -7, sign = -7;
    EXPECT_EQ(x86_qeconvert(&q_zero, 5, &dp, &sign, buf), buf);
    EXPECT_STREQ(buf, "00000");
    EXPECT_EQ(dp, 1);
    EXPECT_EQ(sign, 0);
    x86_qeconvert(&q_negative_zero, 3, &dp, &sign, buf);
    EXPECT_STREQ(buf, "000");
    EXPECT_EQ(sign, 1);
}

TEST(QuadEconvert, InfinityAndNanTexts) {
    struct {
        const krm_real16 *x;
        int ndigits;
        const char *text;
        int sign;
    } cases[] = {
        {&q_infinity, 5, "Inf", 0},
        {&q_infinity, 7, "Inf", 0},
        {&q_infinity, 8, "Infinity", 0},
        {&q_negative_infinity, 36, "Infinity", 1},
        {&q_nan, 5, "NaN", 0},
        {&q_nan, 30, "NaN", 0},
    };
    for (const auto &c : cases) {
        char buf[40];
        int dp = -7, sign = -7;
        x86_qeconvert(c.x, c.ndigits, &dp, &sign, buf);
        EXPECT_STREQ(buf, c.text) << c.ndigits;
        EXPECT_EQ(dp, 0);
        EXPECT_EQ(sign, c.sign);
    }
}

// Digits and point of finite values, in the processor's rounding direction.
TEST(QuadEconvert, RoundsInTheProcessorsDirection) {
    rounding_guard guard;
    const krm_real16 third = nearest("3333333333333333333333333333333333333333333", -43);
    const krm_real16 minus_third = nearest("3333333333333333333333333333333333333333333", -43, true);
    struct {
        const krm_real16 *x;
        int ndigits;
        const char *want[4];  // nearest, down, up, toward zero
        int dp;
        int sign;
    } cases[] = {
        {&third, 5, {"33333", "33333", "33334", "33333"}, 0, 0},
        {&minus_third, 5, {"33333", "33334", "33333", "33333"}, 0, 1},
        {&q_one_and_half, 1, {"2", "1", "2", "1"}, 1, 0},
        {&q_one, 3, {"100", "100", "100", "100"}, 1, 0},
    };
    for (const auto &c : cases) {
        for (int m = 0; m < 4; ++m) {
            ASSERT_EQ(fesetround(fe_modes[m]), 0);
            char buf[40];
            int dp = -7, sign = -7;
            x86_qeconvert(c.x, c.ndigits, &dp, &sign, buf);
            fesetround(FE_TONEAREST);
            EXPECT_STREQ(buf, c.want[m]) << "mode " << m;
            EXPECT_EQ(dp, c.dp);
            EXPECT_EQ(sign, c.sign);
        }
    }
}

// The least subnormal to 36 digits in every direction, and 2**-16494 to 5.
TEST(QuadEconvert, LeastSubnormalInEveryDirection) {
    rounding_guard guard;
    exact_expansion x = expand(decode(fp_kind::quad, bits128{1, 0, 0, 0}));
    for (int m = 0; m < 4; ++m) {
        decimal_result want = round_to_decimal(x, false, m, true, 36);
        ASSERT_EQ(fesetround(fe_modes[m]), 0);
        char buf[40];
        int dp, sign;
        x86_qeconvert(&q_least_subnormal, 36, &dp, &sign, buf);
        fesetround(FE_TONEAREST);
        EXPECT_EQ(std::string(buf), want.ds) << "mode " << m;
        EXPECT_EQ(dp, want.exponent + 36) << "mode " << m;
    }
    // 2**-16494 = 6.4751751194380251109244389582276465525e-4966
    char buf[8];
    int dp, sign;
    x86_qeconvert(&q_least_subnormal, 5, &dp, &sign, buf);
    EXPECT_STREQ(buf, "64752");
    EXPECT_EQ(dp, -4965);
}

// Just below the tie 1.25 at two digits: up goes to 13, the others to 12.
TEST(QuadToDecimal, JustBelowATieRoundsUpOnlyUpwards) {
    const krm_real16 below = next_down(q(0x3FFF4000u, 0, 0, 0));  // 1.25 less one unit
    const char *want[4] = {"12", "12", "13", "12"};
    for (int rd = 0; rd < 4; ++rd) {
        decimal_mode mode = {rd, 1, 2};
        decimal_record rec;
        int flags = -1;
        x86_quadruple_to_decimal(&below, &mode, &rec, &flags);
        EXPECT_STREQ(rec.ds, want[rd]) << rd;
        EXPECT_EQ(rec.exponent, -1);
        EXPECT_EQ(flags, DECIMAL_INEXACT);
    }
}

// Nines rounding up: "100" and the exponent one greater in floating form; one
// digit more in fixed form.
TEST(QuadToDecimal, AllNinesCarryToOneAndZeros) {
    const krm_real16 x = nearest("99999", -4);  // 9.9999
    decimal_record rec;
    int flags;
    decimal_mode floating = {DECIMAL_ROUND_NEAREST, 1, 3};
    x86_quadruple_to_decimal(&x, &floating, &rec, &flags);
    EXPECT_STREQ(rec.ds, "100");
    EXPECT_EQ(rec.ndigits, 3);
    EXPECT_EQ(rec.exponent, -1);  // 100 * 10**-1 = 10.0
    decimal_mode fixed = {DECIMAL_ROUND_NEAREST, 0, 2};
    x86_quadruple_to_decimal(&x, &fixed, &rec, &flags);
    EXPECT_STREQ(rec.ds, "1000");
    EXPECT_EQ(rec.ndigits, 4);
    EXPECT_EQ(rec.exponent, -2);
    EXPECT_EQ(flags, DECIMAL_INEXACT);
}

TEST(QuadToDecimal, ZeroInfinityAndNanClasses) {
    struct {
        const krm_real16 *x;
        int fpclass, sign;
    } cases[] = {
        {&q_zero, DECIMAL_ZERO, 0},
        {&q_negative_zero, DECIMAL_ZERO, 1},
        {&q_negative_infinity, DECIMAL_INFINITY, 1},
        {&q_nan, DECIMAL_QUIET_NAN, 0},
    };
    krm_real16 signalling = q(0xFFFF0000u, 0, 0, 1);
    for (const auto &c : cases) {
        decimal_mode mode = {0, 1, 10};
        decimal_record rec;
        int flags = -1;
        x86_quadruple_to_decimal(c.x, &mode, &rec, &flags);
        EXPECT_EQ(rec.fpclass, c.fpclass);
        EXPECT_EQ(rec.sign, c.sign);
        EXPECT_EQ(flags, 0);
    }
    decimal_mode mode = {0, 1, 10};
    decimal_record rec;
    int flags = -1;
    x86_quadruple_to_decimal(&signalling, &mode, &rec, &flags);
    EXPECT_EQ(rec.fpclass, DECIMAL_SIGNALING_NAN);
    EXPECT_EQ(rec.sign, 1);
}

// ------------------------------------------------------------ x86_qfconvert

TEST(QuadFconvert, DigitsBehindThePoint) {
    struct {
        krm_real16 x;
        int ndigits;
        const char *digits;
        int dp;
    } cases[] = {
        {q_one_and_half, 3, "1500", 1},              // 1.500
        {nearest("5", -2), 3, "50", -1},            // 0.050
        {nearest("123456", -1), -2, "12346", 5},    // no places: units
        {nearest("123456", -1), 0, "12346", 5},
        {nearest("4", -4), 3, "", -3},              // 0.0004 rounds to nothing
        {nearest("6", -4), 3, "1", -2},             // 0.0006 rounds to 0.001
        {nearest("9996", -4), 3, "1000", 1},        // 0.9996 carries to 1.000
        {q_greatest, 2, nullptr, 4933},             // 511 digits at most
    };
    for (const auto &c : cases) {
        char buf[600];
        int dp = -7, sign = -7;
        char *r = x86_qfconvert(&c.x, c.ndigits, &dp, &sign, buf);
        EXPECT_EQ(r, buf);
        if (c.digits) EXPECT_STREQ(buf, c.digits) << c.ndigits;
        else EXPECT_EQ(strlen(buf), 511u);
        EXPECT_EQ(dp, c.dp) << c.ndigits;
        EXPECT_EQ(sign, 0);
    }
}

TEST(QuadFconvert, ZeroInfinityAndNan) {
    char buf[40];
    int dp = -7, sign = -7;
    EXPECT_EQ(x86_qfconvert(&q_zero, 4, &dp, &sign, buf), buf);
    EXPECT_STREQ(buf, "0000");
    EXPECT_EQ(dp, 0);
    x86_qfconvert(&q_negative_zero, 0, &dp, &sign, buf);
    EXPECT_STREQ(buf, "0");  // one zero at least
    EXPECT_EQ(sign, 1);
    memset(buf, 'x', sizeof buf);
    char *r = x86_qfconvert(&q_infinity, 8, &dp, &sign, buf);
    EXPECT_NE(r, buf);  // a constant text; buf stays as it was
    EXPECT_STREQ(r, "Infinity");
    EXPECT_EQ(buf[0], 'x');
    EXPECT_STREQ(x86_qfconvert(&q_negative_infinity, 2, &dp, &sign, buf), "Inf");
    EXPECT_EQ(sign, 1);
    EXPECT_STREQ(x86_qfconvert(&q_nan, 2, &dp, &sign, buf), "NaN");
}

// ------------------------------------------------- x86_decimal_to_quadruple

struct record_case {
    const char *digits;
    int exponent;
    int sign;
    int rd;
    krm_real16 want;
    int flags;
};

// Expectations from the rules: overflow gives infinity, or the greatest
// finite value where the direction rounds the magnitude down; a record below
// the range gives zero or the least subnormal, with underflow.
TEST(DecimalToQuadruple, RangeEnds) {
    const krm_real16 minus_greatest = q(0xFFFEFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu);
    const krm_real16 minus_least = q(0x80000000u, 0, 0, 1);
    const record_case cases[] = {
        {"1", 12331, 0, 0, q_infinity, 40},   // overflows whatever its digits
        {"1", 12331, 0, 3, q_greatest, 40},
        {"1", 12331, 0, 1, q_greatest, 40},
        {"1", 12331, 0, 2, q_infinity, 40},
        {"1", 12331, 1, 1, q_negative_infinity, 40},
        {"1", 12331, 1, 2, minus_greatest, 40},
        {"1", 4933, 0, 0, q_infinity, 40},
        {"1", -12842, 0, 0, q_zero, 48},      // underflows
        {"1", -12842, 0, 2, q_least_subnormal, 48},
        {"1", -12842, 1, 1, minus_least, 48},
        {"1", -12842, 1, 2, q_negative_zero, 48},
        {"1", -4966, 0, 3, q_zero, 48},
    };
    for (const record_case &c : cases) {
        decimal_record rec = make_record(c.digits, c.exponent, c.sign, false);
        decimal_mode mode = {c.rd, 1, 0};
        krm_real16 r = q(1, 2, 3, 4);
        int flags = -1;
        x86_decimal_to_quadruple(&r, &mode, &rec, &flags);
        EXPECT_EQ(memcmp(&r, &c.want, 16), 0) << c.digits << "e" << c.exponent << " rd " << c.rd << " sign "
                                               << c.sign;
        EXPECT_EQ(flags, c.flags);
    }
}

// 1 + 2**-113 is the tie between 1 and its successor: 114 digits. To even
// it goes down; a dropped tail (more) makes it go up.
TEST(DecimalToQuadruple, MoreBreaksATie) {
    exact_expansion tie = halfway_above(fp_kind::quad, bits128{0, 0, 0, 0x3FFF0000u});
    ASSERT_EQ(tie.digits.size(), 114u);
    std::string padded = tie.digits + std::string(511 - tie.digits.size(), '0');
    long e = tie.exponent - static_cast<long>(511 - tie.digits.size());
    const krm_real16 successor = q(0x3FFF0000u, 0, 0, 1);
    for (bool more : {false, true}) {
        decimal_record rec = make_record(padded, e, false, more);
        decimal_mode mode = {DECIMAL_ROUND_NEAREST, 1, 0};
        krm_real16 r;
        int flags;
        x86_decimal_to_quadruple(&r, &mode, &rec, &flags);
        EXPECT_EQ(memcmp(&r, more ? &successor : &q_one, 16), 0) << more;
        EXPECT_EQ(flags, DECIMAL_INEXACT);
    }
}

TEST(DecimalToQuadruple, ClassesGiveTheirPatterns) {
    struct {
        int fpclass, sign;
        krm_real16 want;
    } cases[] = {
        {DECIMAL_ZERO, 1, q_negative_zero},
        {DECIMAL_INFINITY, 0, q_infinity},
        {DECIMAL_QUIET_NAN, 0, q(0x7FFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu)},
        {DECIMAL_SIGNALING_NAN, 1, q(0xFFFF7FFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu)},
    };
    for (const auto &c : cases) {
        decimal_record rec = make_record("123", 0, c.sign, false);
        rec.fpclass = c.fpclass;
        decimal_mode mode = {0, 1, 0};
        krm_real16 r;
        int flags = -1;
        x86_decimal_to_quadruple(&r, &mode, &rec, &flags);
        EXPECT_EQ(memcmp(&r, &c.want, 16), 0) << c.fpclass;
        EXPECT_EQ(flags, 0);
    }
    // ndigits -1: nothing is stored
    decimal_record rec = make_record("123", 0, 0, false);
    rec.ndigits = -1;
    decimal_mode mode = {0, 1, 0};
    krm_real16 r = q(1, 2, 3, 4);
    int flags = -1;
    x86_decimal_to_quadruple(&r, &mode, &rec, &flags);
    krm_real16 untouched = q(1, 2, 3, 4);
    EXPECT_EQ(memcmp(&r, &untouched, 16), 0);
    EXPECT_EQ(flags, 0);
}

// Records no reader makes: no crash, no read past the record, a sane value.
TEST(DecimalToQuadruple, BadRecords) {
    struct {
        const char *digits;
        int ndigits;
        int exponent;
        int fpclass;
    } cases[] = {
        {"12x45", 5, 0, 2},        // stops at the first non-digit: 12
        {"", 0, 0, 2},             // zero
        {"000", 3, 5, 2},          // zero
        {"1", 1, INT_MAX, 2},      // overflow
        {"1", 1, INT_MIN, 2},      // underflow
        {"7", 1, 0, 9},            // unknown class: a number
    };
    for (const auto &c : cases) {
        decimal_record rec;
        memset(&rec, '7', sizeof rec);  // no NUL anywhere
        memcpy(rec.ds, c.digits, strlen(c.digits));
        rec.ndigits = c.ndigits;
        rec.exponent = c.exponent;
        rec.fpclass = c.fpclass;
        rec.sign = 0;
        rec.more = 0;
        decimal_mode mode = {0, 1, 0};
        krm_real16 r;
        int flags = -1;
        x86_decimal_to_quadruple(&r, &mode, &rec, &flags);
        EXPECT_GE(flags, 0);
    }
    // 600 digits claimed, 511 read: the record's own NUL-less digits
    decimal_record rec;
    memset(&rec, 0, sizeof rec);
    memset(rec.ds, '9', sizeof rec.ds);
    rec.ndigits = 600;
    rec.fpclass = DECIMAL_NORMAL;
    rec.exponent = -511;
    decimal_mode mode = {DECIMAL_ROUND_TO_ZERO, 1, 0};
    krm_real16 r;
    int flags;
    x86_decimal_to_quadruple(&r, &mode, &rec, &flags);
    krm_real16 below_one = next_down(q_one);  // 0.99...9 (511 nines) truncates to it
    EXPECT_EQ(memcmp(&r, &below_one, 16), 0);
}

// ------------------------------------------------------------ flags

// An exact conversion hands back 0 and leaves the processor's flags as they
// were; an inexact one raises inexact, overflow and underflow their own.
TEST(QuadDecimalFlags, RaisedOnlyWhenTheWordSaysSo) {
    feclearexcept(FE_ALL_EXCEPT);
    decimal_mode mode = {0, 1, 2};
    decimal_record rec;
    int flags = -1;
    x86_quadruple_to_decimal(&q_one_and_half, &mode, &rec, &flags);
    EXPECT_EQ(flags, 0);
    EXPECT_EQ(fetestexcept(FE_ALL_EXCEPT), 0);
    feraiseexcept(FE_DIVBYZERO);
    x86_quadruple_to_decimal(&q_one_and_half, &mode, &rec, &flags);
    EXPECT_EQ(fetestexcept(FE_ALL_EXCEPT), FE_DIVBYZERO);  // untouched

    feclearexcept(FE_ALL_EXCEPT);
    mode.ndigits = 1;
    x86_quadruple_to_decimal(&q_one_and_half, &mode, &rec, &flags);
    EXPECT_EQ(flags, DECIMAL_INEXACT);
    EXPECT_EQ(fetestexcept(FE_ALL_EXCEPT), FE_INEXACT);

    struct {
        int exponent, word, raised;
    } cases[] = {
        {12331, DECIMAL_OVERFLOW | DECIMAL_INEXACT, FE_OVERFLOW | FE_INEXACT},
        {-12842, DECIMAL_UNDERFLOW | DECIMAL_INEXACT, FE_UNDERFLOW | FE_INEXACT},
        {-1, DECIMAL_INEXACT, FE_INEXACT},
        {0, 0, 0},
    };
    for (const auto &c : cases) {
        feclearexcept(FE_ALL_EXCEPT);
        decimal_record in = make_record("1", c.exponent, 0, false);
        krm_real16 r;
        x86_decimal_to_quadruple(&r, &mode, &in, &flags);
        EXPECT_EQ(flags, c.word) << c.exponent;
        EXPECT_EQ(fetestexcept(FE_ALL_EXCEPT), c.raised) << c.exponent;
    }
}

// ------------------------------------------------------ directed fixed form

TEST(QuadDirected, UpAndDownAtPlaces) {
    struct {
        krm_real16 x;
        int up, ndigits;
        const char *digits;
        int dp, sign;
    } cases[] = {
        {nearest("121", -2), 1, 1, "13", 1, 0},       // 1.21 up: 1.3
        {nearest("121", -2), 0, 1, "12", 1, 0},       // down: 1.2
        {nearest("121", -2, true), 1, 1, "12", 1, 1}, // -1.21 toward +inf: -1.2
        {nearest("121", -2, true), 0, 1, "13", 1, 1}, // toward -inf: -1.3
        {nearest("1", -3), 1, 2, "1", -1, 0},         // 0.001 up at 2 places: 0.01
        {nearest("1", -3), 0, 2, "000", 0, 0},        // down: zeros
        {nearest("995", -3), 1, 2, "100", 1, 0},      // 0.995 up: carries to 1.00
        {q_one, 1, 3, "1000", 1, 0},                  // exact: zeros behind
        {q_zero, 1, 3, "0000", 0, 0},
        {q_infinity, 1, 3, "Inf", 0, 0},
        {q_nan, 0, 3, "NaN", 0, 0},
    };
    for (const auto &c : cases) {
        char buf[64];
        int dp = -7, sign = -7;
        char *r = c.up ? qfconvert_up(&c.x, c.ndigits, &dp, &sign, buf) : qfconvert_down(&c.x, c.ndigits, &dp, &sign, buf);
        EXPECT_STREQ(r, c.digits) << c.digits;
        EXPECT_EQ(dp, c.dp) << c.digits;
        EXPECT_EQ(sign, c.sign) << c.digits;
    }
    // Only 34 digits are significant: the rest of the field is zeros.
    const krm_real16 third = nearest("3333333333333333333333333333333333333333333", -43);
    char buf[64];
    int dp, sign;
    qfconvert_up(&third, 40, &dp, &sign, buf);
    EXPECT_EQ(std::string(buf), "3333333333333333333333333333333334000000");
    EXPECT_EQ(dp, 0);
}

#ifdef KRM_TEST_MPFR
// ------------------------------------------------------ MPFR as a second judge

const mpfr_rnd_t mpfr_modes[4] = {MPFR_RNDN, MPFR_RNDD, MPFR_RNDU, MPFR_RNDZ};

struct mpfr_quad_range {
    mpfr_exp_t emin = mpfr_get_emin(), emax = mpfr_get_emax();
    mpfr_quad_range() {
        mpfr_set_emin(-16493);  // 2**-16494 = 0.1b * 2**-16493
        mpfr_set_emax(16384);
    }
    ~mpfr_quad_range() {
        mpfr_set_emin(emin);
        mpfr_set_emax(emax);
    }
};

TEST(QuadDecimalMpfr, DigitsAgreeWithMpfr) {
    std::mt19937_64 rng(0x5eed0101);
    mpfr_t x;
    mpfr_init2(x, 113);
    for (int i = 0; i < case_count(400); ++i) {
        bits128 b = random_value(fp_kind::quad, rng, i % 2 == 0);
        binary_number v = decode(fp_kind::quad, b);
        // x = M * 2**e exactly
        std::string m = v.m.to_decimal();
        mpfr_set_str(x, m.c_str(), 10, MPFR_RNDN);
        mpfr_mul_2si(x, x, v.e, MPFR_RNDN);
        if (v.negative) mpfr_neg(x, x, MPFR_RNDN);
        int n = 1 + static_cast<int>(rng() % 60);
        for (int rd = 0; rd < 4; ++rd) {
            mpfr_exp_t e10;
            char *want = mpfr_get_str(nullptr, &e10, 10, static_cast<size_t>(n), x, mpfr_modes[rd]);
            krm_real16 qx = {{b[0], b[1], b[2], b[3]}};
            decimal_mode mode = {rd, 1, n};
            decimal_record rec;
            int flags;
            x86_quadruple_to_decimal(&qx, &mode, &rec, &flags);
            const char *digits = want[0] == '-' ? want + 1 : want;
            EXPECT_STREQ(rec.ds, digits) << bits_text(fp_kind::quad, b) << " n " << n << " rd " << rd;
            EXPECT_EQ(rec.exponent + n, e10);
            mpfr_free_str(want);
        }
    }
    mpfr_clear(x);
}

TEST(QuadDecimalMpfr, BinaryAgreesWithMpfr) {
    mpfr_quad_range range;
    std::mt19937_64 rng(0x5eed0102);
    mpfr_t x;
    mpfr_init2(x, 113);
    for (int i = 0; i < case_count(600); ++i) {
        int n = 1 + static_cast<int>(rng() % (i % 5 == 0 ? 511 : 45));
        std::string d = random_digits(rng, n);
        long lead = static_cast<long>(rng() % 9920) - 4970;
        if (i % 3 == 0) lead = static_cast<long>(rng() % 80) - 40;
        long e = lead - n + 1;
        std::string text = d + "e" + std::to_string(e);
        for (int rd = 0; rd < 4; ++rd) {
            int t = mpfr_strtofr(x, text.c_str(), nullptr, 10, mpfr_modes[rd]);
            t = mpfr_subnormalize(x, t, mpfr_modes[rd]);
            // the library's answer, as a number MPFR can compare
            decimal_record rec = make_record(d, e, false, false);
            decimal_mode mode = {rd, 1, 0};
            krm_real16 r;
            int flags;
            x86_decimal_to_quadruple(&r, &mode, &rec, &flags);
            bits128 b = {r.word[0], r.word[1], r.word[2], r.word[3]};
            if (mpfr_inf_p(x)) {
                EXPECT_EQ(b, (bits128{0, 0, 0, 0x7FFF0000u})) << text << " rd " << rd;
                continue;
            }
            if (mpfr_zero_p(x)) {
                EXPECT_EQ(b, (bits128{0, 0, 0, 0})) << text << " rd " << rd;
                continue;
            }
            ASSERT_TRUE(is_finite_nonzero(fp_kind::quad, b)) << text << " rd " << rd;
            binary_number v = decode(fp_kind::quad, b);
            mpfr_t y;
            mpfr_init2(y, 113);
            mpfr_set_str(y, v.m.to_decimal().c_str(), 10, MPFR_RNDN);
            mpfr_mul_2si(y, y, v.e, MPFR_RNDN);
            EXPECT_TRUE(mpfr_equal_p(x, y)) << text << " rd " << rd;
            EXPECT_EQ(flags != 0, t != 0) << text << " rd " << rd;
            mpfr_clear(y);
        }
    }
    mpfr_clear(x);
}
#endif

}  // namespace
