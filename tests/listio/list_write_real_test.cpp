// PRINT * and WRITE (u, *) of REAL, COMPLEX and interval items: the exact
// bytes of each form in both dialects, folding, DECIMAL='COMMA', and the
// exponent and width estimates of the older dialect.
//
// The expected texts are worked out by hand from the layout rules; the
// digits of the standard dialect are the shortest ones (checked against the
// rule's reference in shortest_digits_test.cpp). gfortran is no oracle here:
// its list-directed output has fixed widths and 17 or 9 digits.

#include <gtest/gtest.h>
#include <quadmath.h>
#include <stdio.h>
#include <stdlib.h>

#include <cmath>
#include <limits>
#include <string>

#include "support/child.h"
#include "support/files.h"
#include "support/shortest_reference.h"
#include "support/statements.h"
#include "units/unit_tables.h"

using namespace krm_test;

namespace {

__float128 q(const char *s) { return strtoflt128(s, nullptr); }
__float128 q_bits(uint64_t hi, uint64_t lo) {
    uint64_t w[2] = {lo, hi};
    __float128 x;
    memcpy(&x, w, sizeof x);
    return x;
}

float f_bits(uint32_t b) {
    float x;
    memcpy(&x, &b, sizeof x);
    return x;
}
double d_bits(uint64_t b) {
    double x;
    memcpy(&x, &b, sizeof x);
    return x;
}

const float kInf4 = std::numeric_limits<float>::infinity();
const double kInf8 = std::numeric_limits<double>::infinity();
const float kNaN4 = f_bits(0x7fc00000);
const float kNegNaN4 = f_bits(0xffc00000);
const double kNaN8 = d_bits(0x7ff8000000000000ull);
const double kNegNaN8 = d_bits(0xfff8000000000000ull);
const __float128 kInf16 = q_bits(0x7fff000000000000ull, 0);
const __float128 kNaN16 = q_bits(0x7fff800000000000ull, 0);

constexpr uint32_t kComma = IO_DECIMAL_COMMA;
constexpr uint32_t kF77 = IO_F77COMPAT;

class PrintReal : public ::testing::TestWithParam<print_case> {};

TEST_P(PrintReal, WritesExactBytesToStdout) { expect_prints(GetParam()); }

const print_case kStandardCases[] = {
    // The symbol within nine places of the first digit: plain form.
    {"one", {r8(1.0)}, 0, " 1.0\n"},
    {"hundred", {r8(100.0)}, 0, " 100.0\n"},
    {"half", {r8(0.5)}, 0, " 0.5\n"},
    {"five_hundredths", {r8(0.05)}, 0, " 0.05\n"},
    {"tenth", {r8(0.1)}, 0, " 0.1\n"},
    {"thousandth_is_e_form", {r8(0.001)}, 0, " 1.0E-3\n"},
    {"nine_nines", {r8(999999999.0)}, 0, " 999999999.0\n"},
    {"ten_digit_integer_is_e_form", {r8(1e9)}, 0, " 1.0E+9\n"},
    {"e_form_with_digits", {r8(1234567890.0)}, 0, " 1.23456789E+9\n"},
    {"digits_both_sides", {r8(123.456)}, 0, " 123.456\n"},
    {"negative", {r8(-2.5)}, 0, " -2.5\n"},
    {"padded_with_zeros", {r8(120000000.0)}, 0, " 120000000.0\n"},
    {"small_e_form", {r4(2.5e-5f)}, 0, " 2.5E-5\n"},
    {"ten_to_ten", {r4(1.0e10f)}, 0, " 1.0E+10\n"},
    {"two_thirds", {r8(2.0 / 3.0)}, 0, " 0.6666666666666666\n"},
    {"nearest_1e23", {r8(1e23)}, 0, " 9.999999999999999E+22\n"},
    {"greatest_real8", {r8(1.7976931348623157e308)}, 0, " 1.7976931348623157E+308\n"},
    {"tenth_real4", {r4(0.1f)}, 0, " 0.1\n"},
    {"greatest_real4", {r4(3.40282347e38f)}, 0, " 3.4028235E+38\n"},
    {"two_to_24_real4", {r4(16777216.0f)}, 0, " 16777216.0\n"},
    // Zero of either sign; the negative zero's sign is dropped.
    {"zero", {r8(0.0)}, 0, " 0.0E+0\n"},
    {"negative_zero", {r8(-0.0)}, 0, " 0.0E+0\n"},
    {"negative_zero_real4", {r4(-0.0f)}, 0, " 0.0E+0\n"},
    {"infinities", {r8(kInf8), r8(-kInf8), r4(kInf4), r4(-kInf4)}, 0, " Inf -Inf Inf -Inf\n"},
    {"nans", {r8(kNaN8), r8(kNegNaN8), r4(kNaN4), r4(kNegNaN4)}, 0, " NaN -NaN NaN -NaN\n"},
    // Subnormals always take the E form, from digits of a normal number's
    // precision.
    {"least_subnormal_real8", {r8(4.9406564584124654e-324)}, 0, " 4.940656458412465E-324\n"},
    {"least_subnormal_real4", {r4(1.40129846e-45f)}, 0, " 1.4012985E-45\n"},
    {"largest_subnormal_real4", {r4(f_bits(0x007fffff))}, 0, " 1.1754942E-38\n"},
    // REAL(16) by value and by address.
    {"one_real16", {r16(q("1")), r16_ref(q("1"))}, 0, " 1.0 1.0\n"},
    {"tenth_real16", {r16(q("0.1"))}, 0, " 0.1\n"},
    {"third_real16", {r16_ref(q("1") / q("3"))}, 0, " 0.3333333333333333333333333333333333\n"},
    {"nearest_1e49_real16", {r16(q("1e49"))}, 0, " 9.999999999999999999999999999999999E+48\n"},
    {"specials_real16", {r16(kInf16), r16(-kInf16), r16(kNaN16), r16(q("-0"))}, 0, " Inf -Inf NaN 0.0E+0\n"},
    {"greatest_real16", {r16_ref(q_bits(0x7ffeffffffffffffull, ~0ull))}, 0,
     " 1.189731495357231765085759326628007E+4932\n"},
    {"least_subnormal_real16", {r16(q_bits(0, 1))}, 0, " 6.475175119438025110924438958227647E-4966\n"},
    // Separators between items.
    {"several_items", {r8(1.0), r4(2.0f), i4(3), ch("x"), r8(-4.0)}, 0, " 1.0 2.0 3 x -4.0\n"},
    // Complex values: two blocks, ',' between the parts.
    {"complex8", {c8(1.0, -2.0)}, 0, " (1.0,-2.0)\n"},
    {"complex4", {c4(0.1f, 1e10f)}, 0, " (0.1,1.0E+10)\n"},
    {"complex16", {c16(q("0.5"), q("-3"))}, 0, " (0.5,-3.0)\n"},
    {"complex_zero_parts", {c8(0.0, -0.0)}, 0, " (0.0E+0,0.0E+0)\n"},
    {"complex_specials", {c8(kInf8, kNaN8)}, 0, " (Inf,NaN)\n"},
    {"complex_between_items", {i4(1), c4(1.5f, 2.5f), i4(2)}, 0, " 1 (1.5,2.5) 2\n"},
    // DECIMAL='COMMA': ',' for the point, ';' between parts.
    {"comma_real", {r8(1.5)}, kComma, " 1,5\n"},
    {"comma_complex", {c8(1.5, 2.5)}, kComma, " (1,5;2,5)\n"},
    {"comma_e_form_and_zero", {r4(1e10f), r8(0.0), r8(0.05)}, kComma, " 1,0E+10 0,0E+0 0,05\n"},
    // Intervals: lower endpoint rounded down, upper up, 8 or 17 digits,
    // trailing zeros dropped.
    {"interval8_exact", {ia8(1.0f, 2.0f)}, 0, " [1.0,2.0]\n"},
    // 0.1 of REAL(4) is 0.100000001490116...: 0.10000000 down, 0.10000001 up.
    {"interval8_tenth", {ia8(0.1f, 0.1f)}, 0, " [0.1,0.10000001]\n"},
    {"interval8_negative_tenth", {ia8(-0.1f, -0.1f)}, 0, " [-0.10000001,-0.1]\n"},
    // 0.1 of REAL(8) is 0.1000000000000000055511...: 17 digits each way.
    {"interval16_tenth", {ia16(0.1, 0.1)}, 0, " [0.1,0.10000000000000001]\n"},
    // 1.00000000000000002506E-300 down and 1.00000000000000005250E+300 up.
    {"interval16_e_form", {ia16(1e-300, 1e300)}, 0, " [1.0E-300,1.0000000000000001E+300]\n"},
    {"interval_empty", {ia8(kNaN4, kNaN4), ia16(kNaN8, kNegNaN8)}, 0, " [EMPTY] [EMPTY]\n"},
    {"interval_one_nan", {ia16(kNaN8, 1.0)}, 0, " [NaN,1.0]\n"},
    {"interval_infinite", {ia16(-kInf8, kInf8)}, 0, " [-Inf,Inf]\n"},
    {"interval_zero", {ia8(-0.0f, 0.0f)}, 0, " [0.0E+0,0.0E+0]\n"},
    {"interval_comma", {ia8(0.1f, 0.5f)}, kComma, " [0,1;0,5]\n"},
};

INSTANTIATE_TEST_SUITE_P(Standard, PrintReal, ::testing::ValuesIn(kStandardCases),
                         [](const auto &info) { return std::string(info.param.name); });

// The older dialect: fixed fields with their leading blanks, no separators.
const print_case kOlderDialectCases[] = {
    // REAL(4): 6 digits; F field of 11, E field of 15.
    {"r4_one", {r4(1.0f)}, kF77, "     1.00000\n"},
    {"r4_two_items", {r4(1.0f), r4(-1.5f)}, kF77, "     1.00000   -1.50000\n"},
    // est(0.5) is -1: F form with 6 places.
    {"r4_half", {r4(0.5f)}, kF77, "    0.500000\n"},
    // est(0.1) is -2: E form.
    {"r4_tenth", {r4(0.1f)}, kF77, "     1.00000E-01\n"},
    {"r4_negative_e_form", {r4(-2.5e-5f)}, kF77, "    -2.50000E-05\n"},
    // est(1.0E6) is 5, one short: F form with no places.
    {"r4_million", {r4(1e6f)}, kF77, "    1000000.\n"},
    {"r4_ten_million", {r4(1e7f)}, kF77, "     1.00000E+07\n"},
    {"r4_digits", {r4(123.456f)}, kF77, "     123.456\n"},
    {"r4_zero", {r4(0.0f), r4(-0.0f)}, kF77, "   0.  0.\n"},
    {"r4_specials", {r4(kInf4), r4(-kInf4), r4(kNaN4)}, kF77,
     "  Inf            -Inf           NaN           \n"},
    // REAL(8): 14 digits; F field of 19, E field of 23; D, and no letter at
    // an exponent of 100 or more.
    {"r8_one", {r8(1.0)}, kF77, "     1.0000000000000\n"},
    {"r8_tenth", {r8(0.1)}, kF77, "     1.0000000000000D-01\n"},
    {"r8_big_exponent", {r8(1e100)}, kF77, "     1.0000000000000+100\n"},
    {"r8_small_exponent", {r8(-1e-100)}, kF77, "    -1.0000000000000-100\n"},
    {"r8_zero", {r8(-0.0)}, kF77, "   0.\n"},
    {"r8_infinity", {r8(-kInf8)}, kF77, "  -Infinity             \n"},
    // REAL(16): 35 digits; F field of 40, E field of 45; Q and 3 exponent
    // digits, and no letter at an exponent of 1000 or more.
    {"r16_one", {r16(q("1"))}, kF77, "     1.0000000000000000000000000000000000\n"},
    {"r16_ref_negative", {r16_ref(q("-2.5"))}, kF77, "    -2.5000000000000000000000000000000000\n"},
    // est 2: 32 places, the last rounded up from ...99773.
    {"r16_digits", {r16(q("123.456"))}, kF77, "     123.45600000000000000000000000000000\n"},
    {"r16_tenth", {r16(q("0.1"))}, kF77, "     1.0000000000000000000000000000000000Q-001\n"},
    {"r16_nearest_1e1000", {r16(q("1e1000"))}, kF77, "     9.9999999999999999999999999999999996Q+999\n"},
    {"r16_exponent_1001", {r16(q("1e1001"))}, kF77, "     1.0000000000000000000000000000000000+1001\n"},
    {"r16_zero", {r16(q("-0"))}, kF77, "   0.\n"},
    {"r16_infinity", {r16(-kInf16)}, kF77, "  -Infinity                                   \n"},
    // The imaginary part's own fold test (w 36 at position 45 of 80) moves
    // it to the next record.
    {"c16", {c16(q("1"), q("2"))}, kF77,
     "   (    1.0000000000000000000000000000000000,\n     2.0000000000000000000000000000000000)\n"},
    // Complex: "  (", the two fields, ")".
    {"c4", {c4(1.0f, 2.0f)}, kF77, "   (    1.00000,    2.00000)\n"},
    {"c8_zero_part", {c8(0.0, 1.0)}, kF77, "   (  0.,    1.0000000000000)\n"},
    {"comma", {r4(1.0f), c4(0.5f, 1.0f)}, kF77 | kComma, "     1,00000  (   0,500000;    1,00000)\n"},
    // Integers between: two blanks each.
    {"mixed", {i4(7), r4(1.0f), i4(8)}, kF77, "   7    1.00000  8\n"},
};

INSTANTIATE_TEST_SUITE_P(OlderDialect, PrintReal, ::testing::ValuesIn(kOlderDialectCases),
                         [](const auto &info) { return std::string(info.param.name); });

// The plain entries go to the fixed-width ones under the older dialect; the
// fixed-width entries can also be called directly.
TEST(PrintRealOlderDialect, PlainAndCompatibilityEntriesAgree) {
    child_result r = run_forked([] {
        io_control_list_write ctl = {IO_DEFAULT_UNIT | IO_F77COMPAT, &kPrintAt, 0, nullptr};
        ASSERT_EQ(__f90_sslw(&ctl), 0);
        float cf[2] = {1.0f, 2.0f};
        ASSERT_EQ(__f90_slw_r4_f77compat(&ctl, 0.5f), 0);
        ASSERT_EQ(__f90_slw_r8_f77compat(&ctl, 0.5), 0);
        ASSERT_EQ(__f90_slw_c4_f77compat(&ctl, cf), 0);
        ASSERT_EQ(__f90_eslw(&ctl), 0);
    });
    // 1 + 11 + 19 = 31; the complex value's estimated width is 25, and 56
    // is within the limit of 80.
    EXPECT_EQ(r.out, std::string(" ") + "   0.500000" + "   0.50000000000000" + "  (    1.00000,    2.00000)\n");
}

// --------------------------------------------------------------- folding

// What OPEN would leave on unit n: connected to fort.n with RECL=.
void connect_with_recl(int64_t n, int64_t recl) {
    with_unit(n, [&](unit *up) {
        ASSERT_EQ(__f90_open_for_output_r(n, up), 0);
        up->flags |= UNIT_SEQUENTIAL | UNIT_FORMATTED;
        up->recl = recl;
        up->record_limit = recl;
    });
}

std::string file_after_stop(const std::function<void()> &statements) {
    child_result r = run_forked([&] {
        statements();
        __f90_stop();
    });
    EXPECT_EQ(r.exit_code, 0) << r.err;
    return read_file("fort.11");
}

struct fold_case {
    const char *name;
    int64_t recl;  // 0: implicit connection
    std::initializer_list<item> items;
    uint32_t flags;
    const char *expected;
};
void PrintTo(const fold_case &c, std::ostream *os) { *os << c.name; }

class FoldReal : public InTempDir, public ::testing::WithParamInterface<fold_case> {};

TEST_P(FoldReal, FileHoldsExactRecords) {
    const fold_case &c = GetParam();
    std::string got = file_after_stop([&] {
        if (c.recl) connect_with_recl(11, c.recl);
        EXPECT_EQ(write_list(11, c.items, c.flags | IO_RETURNING), 0);
    });
    EXPECT_EQ(got, c.expected);
}

const fold_case kFoldCases[] = {
    // A real folds like any other block.
    {"real_folds", 10, {r8(1.5), r8(2.5), r8(3.5)}, 0, " 1.5 2.5\n 3.5\n"},
    // " (1.0," then "2.0)": the second complex value folds before it starts.
    {"complex_folds_before", 12, {c8(1.0, 2.0), c8(1.0, 2.0)}, 0, " (1.0,2.0)\n (1.0,2.0)\n"},
    // The first block just fits (12 >= 6 + 1 + 5); the second has no fold
    // test, so the record runs past RECL= rather than split the value.
    {"complex_never_split", 12, {i4(12345), c8(1.5, 2.5)}, 0, " 12345 (1.5,2.5)\n"},
    {"interval_never_split", 12, {i4(12345), ia8(1.5f, 2.5f)}, 0, " 12345 [1.5,2.5]\n"},
    // Older dialect on a file: column 80. Nine-digit integer, then 23-wide
    // E fields whose fold width is 15: the third starts at 58 (58 + 15 <= 80)
    // and the line reaches 81.
    {"older_dialect_line_runs_past_limit",
     0,
     {i4(123456789), r8(0.1), r8(0.1), r8(0.1), r8(0.1)},
     kF77,
     "   123456789    1.0000000000000D-01    1.0000000000000D-01    1.0000000000000D-01\n"
     "     1.0000000000000D-01\n"},
    // Six 11-wide fields reach 67; a complex value of estimated width 25
    // folds before its two blanks.
    {"older_dialect_complex_folds_before",
     0,
     {r4(1.0f), r4(1.0f), r4(1.0f), r4(1.0f), r4(1.0f), r4(1.0f), c4(1.0f, 2.0f)},
     kF77,
     "     1.00000    1.00000    1.00000    1.00000    1.00000    1.00000\n"
     "   (    1.00000,    2.00000)\n"},
};

INSTANTIATE_TEST_SUITE_P(Cases, FoldReal, ::testing::ValuesIn(kFoldCases),
                         [](const auto &info) { return std::string(info.param.name); });

class RealRecordLength : public InTempDir {};

// A real longer than RECL= - 1 can never fit.
TEST_F(RealRecordLength, TooLongIsError1010) {
    child_result r = run_forked([] {
        connect_with_recl(11, 5);
        EXPECT_EQ(write_list(11, {r8(123.456)}, IO_RETURNING), 1010);
        EXPECT_EQ(write_list(11, {r8(1.5)}, IO_RETURNING), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out;
}

// On i386 a REAL(8) pair need only be 4-byte aligned: the entries take the
// parts at an address that is not a multiple of 8 (the sanitizer build
// reports any misaligned load).
TEST(PrintRealAlignment, PairsOfReal8AtFourByteAlignment) {
    child_result r = run_forked([] {
        alignas(8) uint32_t storage[6];
        const double parts[2] = {1.5, -0.25};
        memcpy(storage + 1, parts, sizeof parts);
        const double *p = reinterpret_cast<const double *>(storage + 1);
        io_control_list_write ctl = {IO_DEFAULT_UNIT, &kPrintAt, 0, nullptr};
        ASSERT_EQ(__f90_sslw(&ctl), 0);
        ASSERT_EQ(__f90_slw_c8(&ctl, p), 0);
        ASSERT_EQ(__f90_slw_ia16(&ctl, p), 0);
        ASSERT_EQ(__f90_eslw(&ctl), 0);
        io_control_list_write old = {IO_DEFAULT_UNIT | IO_F77COMPAT, &kPrintAt, 0, nullptr};
        ASSERT_EQ(__f90_sslw(&old), 0);
        ASSERT_EQ(__f90_slw_c8(&old, p), 0);
        ASSERT_EQ(__f90_eslw(&old), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(r.out, " (1.5,-0.25) [1.5,-0.25]\n"
                     "   (    1.5000000000000,  -0.25000000000000)\n");
}

// Older dialect on a line of 20 columns: the complex value's estimated width
// (22 + 22 + 5) never fits, and the fold before it does nothing on a line
// holding only its leading blank; the imaginary part then folds on its own
// test (28 + 15 > 20), inside the value.
TEST(PrintRealOlderDialect, ComplexPartFoldsOnANarrowLine) {
    child_result r = run_forked([] {
        __f90_stdout_reclen = 21;
        EXPECT_EQ(print_list({c8(1e20, -1e20)}, IO_F77COMPAT), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(r.out, "   (    1.0000000000000D+20,\n    -1.0000000000000D+20)\n");
}

// ----------------------------------------------------- estimates and widths

struct estimate_case {
    const char *name;
    double value;
    int silog, ilog, qilog;  // by hand from the shift formulas
    int width, dwidth, qwidth;
};

TEST(RealEstimates, ByTheShiftFormulas) {
    // silog: ((bits - 0x3f800000) >> 11) * 1233 >> 24; for 10.0 that is
    // 13312 * 1233 / 2**24 = 0.98, so 0: the estimates run low.
    const estimate_case cases[] = {
        {"one", 1.0, 0, 0, 0, 10, 18, 39},
        {"two", 2.0, 0, 0, 0, 10, 18, 39},
        {"ten", 10.0, 0, 0, 0, 10, 18, 39},
        {"hundred", 100.0, 1, 1, 1, 10, 18, 39},
        {"half", 0.5, -1, -1, -1, 14, 22, 44},
        {"million", 1e6, 5, 5, 5, 10, 18, 39},
        {"ten_million", 1e7, 6, 6, 6, 10, 18, 39},
        {"hundred_million", 1e8, 7, 7, 7, 14, 18, 39},
        {"ten_to_15", 1e15, 14, 14, 14, 14, 18, 39},
        {"ten_to_16", 1e16, 15, 15, 15, 14, 22, 39},
    };
    for (const estimate_case &c : cases) {
        float f = static_cast<float>(c.value);
        real16_words w = to_real16(static_cast<__float128>(c.value));
        EXPECT_EQ(__f90_silog(&f), c.silog) << c.name;
        EXPECT_EQ(__f90_ilog(c.value), c.ilog) << c.name;
        EXPECT_EQ(__f90_qilog(w.word), c.qilog) << c.name;
        EXPECT_EQ(__f90_width_f77compat(&f), c.width) << c.name;
        EXPECT_EQ(__f90_dwidth_f77compat(c.value), c.dwidth) << c.name;
        EXPECT_EQ(__f90_qwidth_f77compat(w.word[0], w.word[1], w.word[2], w.word[3]), c.qwidth) << c.name;
    }
    // The sign does not count.
    float m = -100.0f;
    EXPECT_EQ(__f90_silog(&m), 1);
    EXPECT_EQ(__f90_ilog(-100.0), 1);
    // Zero: REAL(4) by comparison (either sign), REAL(16) by the bits of +0.0
    // only; REAL(8) has no zero test and a negative estimate.
    float z = 0.0f, nz = -0.0f, nan = kNaN4;
    EXPECT_EQ(__f90_width_f77compat(&z), 10);
    EXPECT_EQ(__f90_width_f77compat(&nz), 10);
    EXPECT_EQ(__f90_width_f77compat(&nan), 14);
    EXPECT_EQ(__f90_dwidth_f77compat(0.0), 22);
    real16_words pz = to_real16(q("0")), mz = to_real16(q("-0"));
    EXPECT_EQ(__f90_qwidth_f77compat(pz.word[0], pz.word[1], pz.word[2], pz.word[3]), 39);
    EXPECT_EQ(__f90_qwidth_f77compat(mz.word[0], mz.word[1], mz.word[2], mz.word[3]), 44);
    // 1E36 and 1E37 of REAL(16): 35 and 36.
    real16_words a = to_real16(q("1e36")), b = to_real16(q("1e37"));
    EXPECT_EQ(__f90_qilog(a.word), 35);
    EXPECT_EQ(__f90_qilog(b.word), 36);
    EXPECT_EQ(__f90_qwidth_f77compat(b.word[0], b.word[1], b.word[2], b.word[3]), 44);
}

}  // namespace
