// The decimal engine and the platform conversions of REAL(4), REAL(8) and the
// x87 extended format, against exact integer references.
#include <fenv.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <stdio.h>
#include <string.h>

#include <random>
#include <string>
#include <vector>

#include "platform/big_decimal.h"
#include "platform/big_decimal_tables.h"
#include "platform/decimal_record.h"
#include "support/decimal_harness.h"

using namespace krm_test;

namespace {

// ------------------------------------------------------------------ tables

// The cells of n in the radix, least significant first.
std::vector<uint16_t> cells_of(const big_uint &n, unsigned radix) {
    std::vector<uint16_t> cells;
    if (radix == 65536) {
        for (big_uint v = n; !v.is_zero(); v = v >> 16) cells.push_back(static_cast<uint16_t>(v.low64() & 0xFFFF));
    } else {
        std::string s = n.to_decimal();
        for (long end = static_cast<long>(s.size()); end > 0; end -= 4) {
            long begin = end >= 4 ? end - 4 : 0;
            cells.push_back(static_cast<uint16_t>(std::stoi(s.substr(begin, end - begin))));
        }
    }
    return cells;
}

struct table_case {
    const char *name;
    const uint16_t *digits;
    const uint16_t *start;
    unsigned rows, base, step, radix;
};

TEST(DecimalTables, EveryRowIsItsPower) {
    const table_case tables[] = {
        {"10 small", __x86quad__tbl_10_small_digits, __x86quad__tbl_10_small_start, 64, 5, 1, 65536},
        {"10 big", __x86quad__tbl_10_big_digits, __x86quad__tbl_10_big_start, 16, 5, 64, 65536},
        {"10 huge", __x86quad__tbl_10_huge_digits, __x86quad__tbl_10_huge_start, 5, 5, 1024, 65536},
        {"2 small", __x86quad__tbl_2_small_digits, __x86quad__tbl_2_small_start, 176, 2, 1, 10000},
        {"2 big", __x86quad__tbl_2_big_digits, __x86quad__tbl_2_big_start, 16, 2, 176, 10000},
        {"2 huge", __x86quad__tbl_2_huge_digits, __x86quad__tbl_2_huge_start, 6, 2, 2816, 10000},
    };
    for (const table_case &t : tables) {
        for (unsigned k = 0; k < t.rows; ++k) {
            std::vector<uint16_t> want = cells_of(big_uint::power(t.base, t.step * k), t.radix);
            std::vector<uint16_t> got(t.digits + t.start[k], t.digits + t.start[k + 1]);
            ASSERT_EQ(got, want) << t.name << " row " << k;
        }
    }
}

TEST(DecimalTables, FourDigitsQuickSpellsEveryValue) {
    for (unsigned v = 0; v < 10000; ++v) {
        char got[5] = {0}, want[5];
        __x86quad__four_digits_quick(v, got);
        snprintf(want, sizeof want, "%04u", v);
        ASSERT_STREQ(got, want);
    }
    EXPECT_EQ(std::string(__x86quad__four_digits_quick_table[1249], 4), "9992");
}

// ------------------------------------------------------- both ways, by kind

int random_length(std::mt19937_64 &rng) {
    switch (rng() % 4) {
    case 0: return 1 + static_cast<int>(rng() % 9);
    case 1: return 10 + static_cast<int>(rng() % 30);
    case 2: return 40 + static_cast<int>(rng() % 80);
    default: return 120 + static_cast<int>(rng() % 392);
    }
}

// Random digit strings of 1 to 511 digits with exponents that reach past
// both ends of the range, in all four directions.
TEST_P(DecimalKind, DigitsToBinaryRandom) {
    const fp_kind k = GetParam();
    const format_info &f = kind_format(k);
    std::mt19937_64 rng(0x5eed0001 + static_cast<int>(k));
    // decimal exponents of the value's leading digit that matter
    const long low = static_cast<long>(f.min_exponent - f.precision) * 30103 / 100000 - 3;
    const long high = static_cast<long>(f.max_exponent) * 30103 / 100000 + 3;
    const int cases = case_count(k == fp_kind::quad || k == fp_kind::extended ? 500 : 800);
    for (int i = 0; i < cases; ++i) {
        int n = random_length(rng);
        std::string d = random_digits(rng, n);
        long lead = low + static_cast<long>(rng() % static_cast<uint64_t>(high - low + 1));
        if (i % 4 == 0) lead = static_cast<long>(rng() % 80) - 40;  // everyday magnitudes
        bool more = n == 511 && rng() % 2;
        for (int rd = 0; rd < 4; ++rd) {
            std::string err = check_to_binary(k, d, lead - n + 1, rng() % 2, more, rd);
            ASSERT_EQ(err, "");
        }
    }
}

// Points halfway between neighbours, exactly, cut short, and one unit off,
// with and without a dropped tail.
TEST_P(DecimalKind, DigitsToBinaryNearHalfway) {
    const fp_kind k = GetParam();
    std::mt19937_64 rng(0x5eed0002 + static_cast<int>(k));
    const int cases = case_count(k == fp_kind::quad || k == fp_kind::extended ? 60 : 150);
    for (int i = 0; i < cases; ++i) {
        bits128 b = random_value(k, rng, i % 2 == 0);
        exact_expansion h = halfway_above(k, b);
        bool negative = rng() % 2;
        long len = static_cast<long>(h.digits.size());
        std::vector<std::string> errors;
        auto check = [&](const std::string &d, long e, bool more) {
            for (int rd = 0; rd < 4; ++rd) {
                std::string err = check_to_binary(k, d, e, negative, more, rd);
                if (!err.empty()) errors.push_back(err);
            }
        };
        if (len <= 511) check(h.digits, h.exponent, false);  // the tie itself
        // cut to n digits: below the tie; a dropped tail only says so
        long n = len <= 511 ? 1 + static_cast<long>(rng() % static_cast<uint64_t>(len)) : 511;
        std::string cut = h.digits.substr(0, static_cast<size_t>(n));
        long e = h.exponent + len - n;
        check(cut, e, n == 511);
        check(cut, e, false);
        // one unit of the last digit above and below
        std::string up = cut, down = cut;
        for (long j = n - 1; j >= 0; --j) {
            if (up[j] != '9') {
                ++up[j];
                break;
            }
            up[j] = '0';
            if (j == 0) up.insert(up.begin(), '1');
        }
        if (up.size() <= 511) check(up, e, false);
        bool all_zero = true;
        for (long j = n - 1; j >= 0; --j) {
            if (down[j] != '0') {
                --down[j];
                break;
            }
            down[j] = '9';
        }
        for (char c : down) all_zero = all_zero && c == '0';
        if (!all_zero) check(down, e, n == 511);
        ASSERT_TRUE(errors.empty()) << errors[0];
    }
}

// Random values to 1 to 511 significant digits, and to fixed places.
TEST_P(DecimalKind, BinaryToDigitsRandom) {
    const fp_kind k = GetParam();
    std::mt19937_64 rng(0x5eed0003 + static_cast<int>(k));
    const int cases = case_count(k == fp_kind::quad || k == fp_kind::extended ? 150 : 400);
    for (int i = 0; i < cases; ++i) {
        bits128 b = random_value(k, rng, i % 2 == 0);
        for (int rd = 0; rd < 4; ++rd) {
            int n = i % 5 == 0 ? random_length(rng) : 1 + static_cast<int>(rng() % 40);
            ASSERT_EQ(check_to_decimal(k, b, rd, true, n), "");
            int places = static_cast<int>(rng() % 60) - 10;
            if (i % 7 == 0) places = static_cast<int>(rng() % 5200);
            ASSERT_EQ(check_to_decimal(k, b, rd, false, places), "");
        }
    }
}

// Values next to a decimal tie at n digits: the nearest binary values to
// d5 * 10**e and their neighbours, in each direction.
TEST_P(DecimalKind, BinaryToDigitsNearDecimalTies) {
    const fp_kind k = GetParam();
    const format_info &f = kind_format(k);
    std::mt19937_64 rng(0x5eed0004 + static_cast<int>(k));
    const int digits_max = f.precision * 30103 / 100000;  // ties the format can come close to
    for (int i = 0; i < case_count(150); ++i) {
        int n = 1 + static_cast<int>(rng() % static_cast<uint64_t>(digits_max));
        std::string tie = random_digits(rng, n) + "5";
        long e = static_cast<long>(rng() % 60) - 30 - n;
        if (i % 3 == 0) e = static_cast<long>(rng() % 600) - 300;
        binary_result near = round_to_binary(tie, e, false, rng() % 2, 0, f);
        bits128 b = reference_bits(k, near);
        if (!is_finite_nonzero(k, b)) continue;
        for (int rd = 0; rd < 4; ++rd) {
            ASSERT_EQ(check_to_decimal(k, b, rd, true, n), "");
            ASSERT_EQ(check_to_decimal(k, b, rd, true, n + 1), "");
            ASSERT_EQ(check_to_decimal(k, b, rd, false, static_cast<int>(-e - 1)), "");
        }
    }
}

// The ends of the range: least subnormal, greatest subnormal, least and
// greatest normal, and values on both sides of the overflow and underflow
// thresholds, from digits.
TEST_P(DecimalKind, RangeBoundaries) {
    const fp_kind k = GetParam();
    const format_info &f = kind_format(k);
    std::vector<binary_result> ends;
    auto value = [&](long biased, const big_uint &sig) {
        binary_result r;
        r.biased = biased;
        r.significand = sig;
        return r;
    };
    const big_uint top = big_uint(1) << (f.precision - 1);
    const big_uint all = (big_uint(1) << f.precision) - big_uint(1);
    ends.push_back(value(0, big_uint(1)));             // least subnormal
    ends.push_back(value(0, top - big_uint(1)));       // greatest subnormal
    ends.push_back(value(1, top));                     // least normal
    ends.push_back(value(2L * f.max_exponent, all));   // greatest finite
    ends.push_back(value(2L * f.max_exponent, top));   // its binade's start
    for (const binary_result &r : ends) {
        bits128 b = reference_bits(k, r);
        // the value's digits, cut short, and the halfway point above it
        const exact_expansion x = expand(decode(k, b));
        const exact_expansion h = halfway_above(k, b);
        for (int rd = 0; rd < 4; ++rd) {
            for (int n : {1, 2, 17, 36, 120, 511}) ASSERT_EQ(check_to_decimal(k, b, rd, true, n), "");
            for (const exact_expansion &v : {x, h}) {
                long len = static_cast<long>(v.digits.size());
                for (long n : {1L, 5L, 20L, 40L, 511L}) {
                    if (n > len) n = len;
                    std::string cut = v.digits.substr(0, static_cast<size_t>(n));
                    long e = v.exponent + len - n;
                    for (bool more : {false, true}) {
                        if (more && n != 511) continue;
                        for (bool neg : {false, true}) ASSERT_EQ(check_to_binary(k, cut, e, neg, more, rd), "");
                    }
                }
            }
        }
    }
}

// Records no reader makes: digits that stop early, more digits claimed
// than the record holds, exponents at the ends of int, unknown classes and
// directions. Nothing crashes or reads past the record, and the value is the
// one the readable digits give.
TEST_P(DecimalKind, BadRecordsGiveTheReadableValue) {
    const fp_kind k = GetParam();
    struct {
        const char *digits;
        int ndigits, exponent, fpclass, rd;
        const char *as_digits;  // the record it must act as
        long as_exponent;
    } cases[] = {
        {"12x45", 5, 0, DECIMAL_NORMAL, 0, "12", 0},        // stops at the first non-digit
        {"0001250", 7, -3, DECIMAL_NORMAL, 0, "125", -2},   // leading and trailing zeros
        {"000", 3, 5, DECIMAL_NORMAL, 0, "0", 0},           // zero
        {"1", 1, INT_MAX, DECIMAL_NORMAL, 0, "1", 6000},    // overflow, as any exponent past the range
        {"1", 1, INT_MIN, DECIMAL_NORMAL, 2, "1", -6000},   // underflow, up: the least subnormal
        {"7", 1, 0, 9, 0, "7", 0},                          // unknown class: a number
        {"25", 2, -1, DECIMAL_SUBNORMAL, 0, "25", -1},      // the reader's class is not trusted
        {"25", 2, -1, DECIMAL_NORMAL, 7, "25", -1},         // unknown direction: nearest
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
        bits128 got, want;
        int flags = library_to_binary(k, rec, c.rd, got);
        int rd = c.rd > 3 ? 0 : c.rd;
        binary_result r = round_to_binary(c.as_digits, c.as_exponent, false, false, rd, kind_format(k));
        want = reference_bits(k, r);
        EXPECT_EQ(bits_text(k, got), bits_text(k, want)) << c.digits << " e" << c.exponent;
        EXPECT_EQ(flags, r.flags) << c.digits << " e" << c.exponent;
    }
    // 600 digits claimed: the 511 the record holds are read, not one more
    decimal_record rec;
    memset(&rec, '9', sizeof rec);
    rec.ndigits = 600;
    rec.fpclass = DECIMAL_NORMAL;
    rec.exponent = -511;
    rec.sign = 0;
    rec.more = 0;
    bits128 got;
    library_to_binary(k, rec, DECIMAL_ROUND_TO_ZERO, got);
    binary_result r = round_to_binary(std::string(511, '9'), -511, false, false, 3, kind_format(k));
    EXPECT_EQ(bits_text(k, got), bits_text(k, reference_bits(k, r)));
}

INSTANTIATE_TEST_SUITE_P(Platform, DecimalKind, ::testing::Values(fp_kind::single, fp_kind::double_, fp_kind::extended),
                         kind_test_name);

// ------------------------------------------------------ named cases, REAL(8)

struct double_case {
    const char *digits;
    int exponent;
    int rd;
    uint64_t bits;
    int flags;
};

// Each expectation follows from the rule, not from a run: the value of the
// digits, rounded in the direction, with the exception word of the Part's
// table (overflow 8, underflow 16, inexact 32).
TEST(DecimalToDouble, NamedCases) {
    const double_case table[] = {
        {"1", 0, 0, 0x3FF0000000000000ull, 0},
        // 0.1 lies between 0x3FB9999999999999 (below) and ...9A (above, nearer)
        {"5", -1, 0, 0x3FE0000000000000ull, 0},
        {"1", -1, 0, 0x3FB999999999999Aull, 32},
        {"1", -1, 1, 0x3FB9999999999999ull, 32},
        {"1", -1, 2, 0x3FB999999999999Aull, 32},
        {"1", -1, 3, 0x3FB9999999999999ull, 32},
        // 2**53 + 1 is a tie: to even (down) when nearest, up when asked
        {"9007199254740993", 0, 0, 0x4340000000000000ull, 32},
        {"9007199254740993", 0, 2, 0x4340000000000001ull, 32},
        // 2**53 + 3 is a tie: to even (up)
        {"9007199254740995", 0, 0, 0x4340000000000002ull, 32},
        // 10**309 overflows: infinity, or the greatest finite where the
        // direction rounds the magnitude down
        {"1", 309, 0, 0x7FF0000000000000ull, 40},
        {"1", 309, 3, 0x7FEFFFFFFFFFFFFFull, 40},
        {"1", 309, 1, 0x7FEFFFFFFFFFFFFFull, 40},
        {"1", 309, 2, 0x7FF0000000000000ull, 40},
        // 10**-400 underflows: zero, or the least subnormal going up
        {"1", -400, 0, 0x0000000000000000ull, 48},
        {"1", -400, 2, 0x0000000000000001ull, 48},
    };
    for (const double_case &c : table) {
        decimal_record rec = make_record(c.digits, c.exponent, false, false);
        decimal_mode mode = {c.rd, 1, 0};
        double d = -1;
        int flags = -1;
        decimal_to_double(&d, &mode, &rec, &flags);
        uint64_t bits;
        memcpy(&bits, &d, 8);
        EXPECT_EQ(bits, c.bits) << c.digits << "e" << c.exponent << " rd " << c.rd;
        EXPECT_EQ(flags, c.flags) << c.digits << "e" << c.exponent << " rd " << c.rd;
    }
}

// A record of ndigits -1 stores nothing; one of ndigits 0 is a zero with
// its sign.
TEST(DecimalToBinary, NothingAndZeroRecords) {
    decimal_record rec = make_record("123", 0, true, false);
    decimal_mode mode = {0, 1, 0};
    rec.ndigits = -1;
    double d = 42.0;
    float f = 42.0f;
    int flags = -1;
    decimal_to_double(&d, &mode, &rec, &flags);
    EXPECT_EQ(d, 42.0);
    EXPECT_EQ(flags, 0);
    flags = -1;
    decimal_to_single(&f, &mode, &rec, &flags);
    EXPECT_EQ(f, 42.0f);
    EXPECT_EQ(flags, 0);
    rec.ndigits = 0;
    decimal_to_double(&d, &mode, &rec, &flags);
    EXPECT_EQ(d, 0.0);
    EXPECT_TRUE(__builtin_signbit(d));
    decimal_to_single(&f, &mode, &rec, &flags);
    EXPECT_EQ(f, 0.0f);
    EXPECT_TRUE(__builtin_signbit(f));
    EXPECT_EQ(flags, 0);
}

// ------------------------------------------------- digit strings, REAL(4/8)

struct rounding_guard {
    int saved = fegetround();
    ~rounding_guard() { fesetround(saved); }
};

const int fe_modes[4] = {FE_TONEAREST, FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO};

// Each expectation is the exact value of the binary number rounded as the
// mode says: 0.1 is 0.1000000000000000055511151231257827..., 0.1f is
// 0.100000001490116119384765625, 2.5 is a tie.
TEST(Econvert, SignificantDigitsInTheProcessorsDirection) {
    rounding_guard guard;
    struct {
        double value;
        int ndigit;
        const char *want[4];  // nearest, down, up, toward zero
        int decpt, sign;
    } cases[] = {
        {0.1, 5, {"10000", "10000", "10001", "10000"}, 0, 0},
        {0.1, 17, {"10000000000000001", "10000000000000000", "10000000000000001", "10000000000000000"}, 0, 0},
        {-2.5, 1, {"2", "3", "2", "2"}, 1, 1},
        {3.5, 1, {"4", "3", "4", "3"}, 1, 0},
        {999.96, 4, {"1000", "9999", "1000", "9999"}, 3, 0},  // decpt of the nines; 1000 carries it
        {1e300, 1, {"1", "1", "2", "1"}, 301, 0},
    };
    for (const auto &c : cases) {
        for (int m = 0; m < 4; ++m) {
            ASSERT_EQ(fesetround(fe_modes[m]), 0);
            char buf[32];
            int decpt = -7, sign = -7;
            char *r = econvert(c.value, c.ndigit, &decpt, &sign, buf);
            fesetround(FE_TONEAREST);
            EXPECT_EQ(r, buf);
            EXPECT_STREQ(buf, c.want[m]) << c.value << " mode " << m;
            bool carried = strcmp(c.want[m], "1000") == 0 && c.decpt == 3;
            EXPECT_EQ(decpt, c.decpt + (carried ? 1 : 0)) << c.value << " mode " << m;
            EXPECT_EQ(sign, c.sign);
        }
    }
}

TEST(Econvert, ZeroInfinityNanAndSingle) {
    char buf[32];
    int decpt, sign;
    econvert(-0.0, 4, &decpt, &sign, buf);
    EXPECT_STREQ(buf, "0000");
    EXPECT_EQ(decpt, 1);
    EXPECT_EQ(sign, 1);
    econvert(__builtin_inf(), 8, &decpt, &sign, buf);
    EXPECT_STREQ(buf, "Infinity");
    econvert(-__builtin_inf(), 7, &decpt, &sign, buf);
    EXPECT_STREQ(buf, "Inf");
    EXPECT_EQ(sign, 1);
    EXPECT_EQ(decpt, 0);
    econvert(__builtin_nan(""), 9, &decpt, &sign, buf);
    EXPECT_STREQ(buf, "NaN");
    float f = 1.5f;
    seconvert(&f, 3, &decpt, &sign, buf);
    EXPECT_STREQ(buf, "150");
    EXPECT_EQ(decpt, 1);
    f = 0.1f;
    seconvert(&f, 12, &decpt, &sign, buf);
    EXPECT_STREQ(buf, "100000001490");
    EXPECT_EQ(decpt, 0);
}

TEST(Fconvert, DigitsBehindThePoint) {
    struct {
        double value;
        int ndigit;
        const char *want;
        int decpt;
    } cases[] = {
        {1.5, 2, "150", 1},
        {0.05, 3, "50", -1},              // 0.050
        {0.05, 20, "5000000000000000278", -1},  // 0.0500000000000000027755...
        {123.456, -1, "123", 3},          // no places: units
        {0.0004, 3, "", -3},              // rounds to nothing
        {0.9996, 3, "1000", 1},
        {1e22, 1, "100000000000000000000000", 23},
    };
    for (const auto &c : cases) {
        char buf[600];
        int decpt = -7, sign = -7;
        char *r = fconvert(c.value, c.ndigit, &decpt, &sign, buf);
        EXPECT_EQ(r, buf);
        EXPECT_STREQ(buf, c.want) << c.value << " " << c.ndigit;
        EXPECT_EQ(decpt, c.decpt) << c.value << " " << c.ndigit;
    }
    char buf[600];
    int decpt, sign;
    float f = 0.1f;
    sfconvert(&f, 10, &decpt, &sign, buf);
    EXPECT_STREQ(buf, "1000000015");
    EXPECT_EQ(decpt, 0);
    fconvert(0.0, 2, &decpt, &sign, buf);
    EXPECT_STREQ(buf, "00");
    EXPECT_EQ(decpt, 0);
    memset(buf, 'x', 8);
    char *r = fconvert(__builtin_inf(), 8, &decpt, &sign, buf);
    EXPECT_NE(r, buf);
    EXPECT_STREQ(r, "Infinity");
    EXPECT_EQ(buf[0], 'x');
    // The greatest double: 309 digits before the point and 511 in all.
    fconvert(1.7976931348623157e308, 400, &decpt, &sign, buf);
    EXPECT_EQ(decpt, 309);
    EXPECT_EQ(strlen(buf), 511u);
}

// The directed forms take 16 (REAL(8)) or 7 (REAL(4)) significant digits in
// the direction, then cut or raise them at the place asked for.
TEST(FconvertDirected, UpAndDown) {
    struct {
        double value;
        bool up;
        int ndigit;
        const char *want;
        int decpt, sign;
    } cases[] = {
        {1.21, true, 1, "13", 1, 0},
        {1.21, false, 1, "12", 1, 0},
        {-1.21, true, 1, "12", 1, 1},
        {-1.21, false, 1, "13", 1, 1},
        {0.001, true, 2, "1", -1, 0},    // below the last place: one unit of it
        {0.001, false, 2, "000", 0, 0},  // or nothing
        {0.995, true, 2, "100", 1, 0},   // the carry makes a digit more
        {2.0, true, 3, "2000", 1, 0},
        {1.0 / 3, true, 20, "33333333333333340000", 0, 0},
        {1.0 / 3, false, 20, "33333333333333330000", 0, 0},
        {0.0, true, 3, "0000", 0, 0},
    };
    for (const auto &c : cases) {
        char buf[64];
        int decpt = -7, sign = -7;
        char *r = c.up ? fconvert_up(c.value, c.ndigit, &decpt, &sign, buf)
                       : fconvert_down(c.value, c.ndigit, &decpt, &sign, buf);
        EXPECT_STREQ(r, c.want) << c.value << (c.up ? " up " : " down ") << c.ndigit;
        EXPECT_EQ(decpt, c.decpt) << c.value << (c.up ? " up " : " down ") << c.ndigit;
        EXPECT_EQ(sign, c.sign) << c.value;
    }
    char buf[64];
    int decpt, sign;
    float third = 1.0f / 3;  // 0.3333333432674407958984375
    EXPECT_STREQ(sfconvert_up(&third, 10, &decpt, &sign, buf), "3333334000");
    EXPECT_STREQ(sfconvert_down(&third, 10, &decpt, &sign, buf), "3333333000");
    EXPECT_STREQ(fconvert_up(__builtin_inf(), 2, &decpt, &sign, buf), "Inf");
    EXPECT_STREQ(fconvert_down(__builtin_nan(""), 2, &decpt, &sign, buf), "NaN");
}

// The conversions hand back their exception word and raise the same flags
// in the processor; an exact conversion leaves the flags alone.
TEST(DecimalFlags, RaisedAsTheWordSays) {
    struct {
        const char *digits;
        int exponent;
        int word, raised;
    } cases[] = {
        {"15", -1, 0, 0},
        {"1", -1, DECIMAL_INEXACT, FE_INEXACT},
        {"1", 400, DECIMAL_OVERFLOW | DECIMAL_INEXACT, FE_OVERFLOW | FE_INEXACT},
        {"1", -400, DECIMAL_UNDERFLOW | DECIMAL_INEXACT, FE_UNDERFLOW | FE_INEXACT},
    };
    for (const auto &c : cases) {
        feclearexcept(FE_ALL_EXCEPT);
        decimal_record rec = make_record(c.digits, c.exponent, false, false);
        decimal_mode mode = {0, 1, 0};
        double d;
        int flags = -1;
        decimal_to_double(&d, &mode, &rec, &flags);
        EXPECT_EQ(flags, c.word) << c.digits << "e" << c.exponent;
        EXPECT_EQ(fetestexcept(FE_ALL_EXCEPT), c.raised) << c.digits << "e" << c.exponent;
    }
    feclearexcept(FE_ALL_EXCEPT);
    feraiseexcept(FE_DIVBYZERO);
    double half = 0.5;
    decimal_mode mode = {0, 1, 3};
    decimal_record rec;
    int flags = -1;
    double_to_decimal(&half, &mode, &rec, &flags);
    EXPECT_EQ(flags, 0);
    EXPECT_EQ(fetestexcept(FE_ALL_EXCEPT), FE_DIVBYZERO);
    feclearexcept(FE_ALL_EXCEPT);
    float tenth = 0.1f;
    single_to_decimal(&tenth, &mode, &rec, &flags);
    EXPECT_EQ(flags, DECIMAL_INEXACT);
    EXPECT_EQ(fetestexcept(FE_ALL_EXCEPT), FE_INEXACT);
    feclearexcept(FE_ALL_EXCEPT);
}

}  // namespace
