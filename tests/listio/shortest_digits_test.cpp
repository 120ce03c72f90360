// The shortest digits of list-directed output: named cases worked out by
// hand, the exact method and the fixed-width method against a reference of
// the same rule written from its definition, the read-back property, and
// the tables the fixed-width method stands on.

#include <gtest/gtest.h>
#include <quadmath.h>
#include <stdlib.h>
#include <string.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "krm/list_write.h"
#include "listio/shortest_digits.h"
#include "support/shortest_reference.h"

#if defined(KRM_TEST_GMP)
#include <gmp.h>
#endif

using namespace krm_test;

namespace {

// ---------------------------------------------------------------- named cases

struct named_case {
    const char *name;
    binary_value value;
    const char *digits;  // worked out by hand from the rule
    int k;
};
void PrintTo(const named_case &c, std::ostream *os) { *os << c.name; }

// REAL(16) constants without the Q suffix, which strict C++ lacks.
__float128 q(const char *s) { return strtoflt128(s, nullptr); }
__float128 q_pow2(int e) { return ldexpq(q("1"), e); }
__float128 q_bits(uint64_t hi, uint64_t lo) {
    uint64_t w[2] = {lo, hi};
    __float128 x;
    memcpy(&x, w, sizeof x);
    return x;
}
const __float128 kQuadMax = q_bits(0x7ffeffffffffffffull, ~0ull);
const __float128 kQuadMinNormal = q_bits(0x0001000000000000ull, 0);
const __float128 kQuadLeastSubnormal = q_bits(0, 1);

const std::vector<named_case> &named_cases() {
    static const std::vector<named_case> cases = {
        {"one_real4", of_real4(1.0f), "1", 0},
        {"one_real8", of_real8(1.0), "1", 0},
        {"one_real16", of_real16(q("1")), "1", 0},
        // 0.1 of REAL(4) is 0.100000001490116...: the scaling up lands at or
        // above S and the scaling down must put it back.
        {"tenth_real4", of_real4(0.1f), "1", -1},
        {"tenth_real8", of_real8(0.1), "1", -1},
        {"tenth_real16", of_real16(q("0.1")), "1", -1},
        {"three_tenths_real8", of_real8(0.3), "3", -1},
        // 0.66666666666666662966: 0.6666666666666666 is 2.97E-17 away, within
        // half the gap (5.55E-17); ...667 is 7.03E-17 away; 15 digits miss.
        {"two_thirds_real8", of_real8(2.0 / 3.0), "6666666666666666", -16},
        // The value plus half its gap is 1E23 exactly, which is outside: the
        // leading zero of the digit loop is dropped, 16 nines remain.
        {"nearest_1e23_real8", of_real8(1e23), "9999999999999999", 7},
        // 1E49 - 2**49, the interval reaching from 1E49 - 2**50 up to 1E49
        // (outside): 1E49 - 1E15 is the one multiple of 1E15 inside.
        {"nearest_1e49_real16", of_real16(q("1e49")), "9999999999999999999999999999999999", 15},
        // Exactly between two candidates that both lie inside: the tie goes up.
        // 2097152.25 has the gap 0.25; 2097152.2 and .3 are both 0.05 away.
        {"tie_goes_up_real4", of_real4(2097152.25f), "20971523", -1},
        {"tie_goes_up_real8", of_real8(1125899906842624.25), "11258999068426243", -1},
        {"greatest_real4", of_real4(3.40282347e38f), "34028235", 31},
        {"greatest_real8", of_real8(1.7976931348623157e308), "17976931348623157", 292},
        // Subnormals are normalised, so their interval is as narrow as a
        // normal number's: 8 and 16 digits for the least ones.
        {"least_subnormal_real4", of_real4(1.40129846e-45f), "14012985", -52},
        {"least_subnormal_real8", of_real8(4.9406564584124654e-324), "4940656458412465", -339},
        {"power_of_two_2_24_real4", of_real4(16777216.0f), "16777216", 0},
        {"integer_with_zeros_real8", of_real8(1e22), "1", 22},
        {"one_hundred_real8", of_real8(100.0), "1", 2},
        // At a power of two the equal gap takes the wider interval below, and
        // the shortest string there can read back as the neighbour below.
        {"power_of_two_2_m1019_real8", of_real8(std::ldexp(1.0, -1019)), "1780059086805761", -322},
        {"power_of_two_2_m103_real4", of_real4(std::ldexp(1.0f, -103)), "9860761", -38},
    };
    return cases;
}

class NamedDigits : public ::testing::TestWithParam<named_case> {};

TEST_P(NamedDigits, AsWorkedOut) {
    const named_case &c = GetParam();
    shortest_digits want{c.digits, c.k};
    EXPECT_EQ(library_digits(c.value), want);
#if defined(KRM_TEST_GMP)
    EXPECT_EQ(reference_digits(c.value), want) << "the hand-worked case disagrees with the reference";
#endif
}

INSTANTIATE_TEST_SUITE_P(Cases, NamedDigits, ::testing::ValuesIn(named_cases()),
                         [](const auto &info) { return std::string(info.param.name); });

// The digits read back as the stored value, except at powers of two where
// the equal gap allowed a shorter string on the lower side.
bool reads_back(const binary_value &v, const shortest_digits &d) {
    const std::string s = as_number(d);
    if (v.bits == 24) {
        float x = strtof(s.c_str(), nullptr);
        return of_real4(x).f_lo == v.f_lo && of_real4(x).e == v.e;
    }
    if (v.bits == 53) {
        double x = strtod(s.c_str(), nullptr);
        return of_real8(x).f_lo == v.f_lo && of_real8(x).e == v.e;
    }
    binary_value r = of_real16(strtoflt128(s.c_str(), nullptr));
    return r.f_lo == v.f_lo && r.f_hi == v.f_hi && r.e == v.e;
}

TEST(ShortestDigits, PowersOfTwoThatReadBackAsTheNeighbourBelow) {
    // Named: 2**-1019 of REAL(8) prints 1.780059086805761E-307, which reads
    // back as the largest value below it; so do 2**-103 of REAL(4) and these.
    const binary_value named[] = {of_real8(std::ldexp(1.0, -1019)), of_real8(std::ldexp(1.0, -1018)),
                                  of_real4(std::ldexp(1.0f, -103)), of_real4(std::ldexp(1.0f, -60))};
    for (const binary_value &v : named) {
        shortest_digits d = library_digits(v);
        EXPECT_FALSE(reads_back(v, d)) << as_number(d);
        std::string s = as_number(d);
        if (v.bits == 53)
            EXPECT_EQ(strtod(s.c_str(), nullptr), std::nextafter(std::ldexp(1.0, v.e + 52), 0.0)) << s;
        else
            EXPECT_EQ(strtof(s.c_str(), nullptr), std::nextafter(std::ldexp(1.0f, v.e + 23), 0.0f)) << s;
    }
    // Every other power of two reads back, and with the lower gap taken as
    // half (unequal_gap) every one does.
    int count8 = 0;
    for (int e = -1074; e <= 1023; ++e) {
        binary_value v = of_real8(std::ldexp(1.0, e));
        if (!reads_back(v, library_digits(v))) ++count8;
        EXPECT_TRUE(reads_back(v, library_digits(v, true))) << e;
    }
    int count4 = 0;
    for (int e = -149; e <= 127; ++e) {
        binary_value v = of_real4(std::ldexp(1.0f, e));
        if (!reads_back(v, library_digits(v))) ++count4;
        EXPECT_TRUE(reads_back(v, library_digits(v, true))) << e;
    }
    // A fair share of them, as the lower gap is really half as wide.
    EXPECT_GT(count8, 100);
    EXPECT_GT(count4, 10);
}

TEST(ShortestDigits, UnequalGapNarrowsTheLowerSide) {
    // 2**-1019 with the true lower gap: the 16-digit string no longer lies
    // inside, one of 17 digits does.
    binary_value v = of_real8(std::ldexp(1.0, -1019));
    shortest_digits d = library_digits(v, true);
    EXPECT_EQ(d.digits.size(), 17u);
    EXPECT_TRUE(reads_back(v, d)) << as_number(d);
#if defined(KRM_TEST_GMP)
    EXPECT_EQ(d, reference_digits(v, true));
#endif
}

// The greatest REAL(16) value and the least subnormal fit the work arrays
// and read back.
TEST(ShortestDigits, ExtremesOfReal16) {
    const __float128 extremes[] = {kQuadMax,      kQuadLeastSubnormal,        kQuadMinNormal,
                                   q_pow2(16383), q_pow2(-16494),             nextafterq(kQuadMax, 0),
                                   kQuadLeastSubnormal * 3};
    for (__float128 x : extremes) {
        binary_value v = of_real16(x);
        shortest_digits d = library_digits(v);
        ASSERT_FALSE(d.digits.empty());
        EXPECT_NE(d.digits[0], '0');
        if (v.f_lo != 0 || v.f_hi != (uint64_t{1} << 48)) {
            EXPECT_TRUE(reads_back(v, d)) << as_number(d);
        }
#if defined(KRM_TEST_GMP)
        EXPECT_EQ(d, reference_digits(v));
#endif
    }
}

TEST(ShortestDigits, ArgumentsOutsideTheKindsGiveNoDigits) {
    struct bad {
        const char *why;
        uint16_t limbs[8];
        int bits, e;
    };
    const bad cases[] = {
        {"bit count of no kind", {0, 0x80}, 32, 0},
        {"leading bit clear", {0x1234, 0x7f}, 24, 0},
        {"bits above the significand", {0, 0x180}, 24, 0},
        {"exponent above REAL(4)'s range", {0, 0x80}, 24, 105},
        {"exponent below REAL(4)'s range", {0, 0x80}, 24, -173},
        {"exponent above REAL(8)'s range", {0, 0, 0, 0x10}, 53, 972},
        {"exponent below REAL(16)'s range", {0, 0, 0, 0, 0, 0, 0, 1}, 113, -16607},
        {"zero significand", {0, 0, 0, 0}, 53, 0},
    };
    for (const bad &c : cases) {
        char digits[64];
        int n = -1, k = -1;
        __f_cvt_real(c.limbs, c.bits, c.e, 0, digits, &n, &k);
        EXPECT_EQ(n, 0) << c.why;
        EXPECT_EQ(k, 0) << c.why;
    }
    int n = -1, k = -1;
    char digits[64];
    __f_cvt_real(nullptr, 53, 0, 0, digits, &n, &k);
    EXPECT_EQ(n, 0);
}

// ------------------------------------------- random values against the rule

struct random_case {
    const char *name;
    int bits;
    int exponent_span;  // REAL(16): biased exponents within this of the bias; 0: all
    long count;         // optimised build
};
void PrintTo(const random_case &c, std::ostream *os) { *os << c.name; }

// Random finite positive values: random bit patterns of the kind, or for
// REAL(16) a random significand with an exponent near the bias.
binary_value random_value(std::mt19937_64 &rng, const random_case &c) {
    for (;;) {
        if (c.bits == 24) {
            uint32_t b = static_cast<uint32_t>(rng()) & 0x7fffffff;
            if ((b >> 23) == 0xff || b == 0) continue;
            float x;
            memcpy(&x, &b, sizeof x);
            return of_real4(x);
        }
        if (c.bits == 53) {
            uint64_t b = rng() & 0x7fffffffffffffffull;
            if ((b >> 52) == 0x7ff || b == 0) continue;
            double x;
            memcpy(&x, &b, sizeof x);
            return of_real8(x);
        }
        uint64_t w[2] = {rng(), rng() & 0x0000ffffffffffffull};
        int biased = c.exponent_span ? 16383 + static_cast<int>(rng() % (2 * c.exponent_span + 1)) - c.exponent_span
                                     : static_cast<int>(rng() % 0x7fff);
        w[1] |= static_cast<uint64_t>(biased) << 48;
        if (biased == 0 && w[0] == 0 && (w[1] & 0xffffffffffffull) == 0) continue;
        __float128 x;
        memcpy(&x, w, sizeof x);
        return of_real16(x);
    }
}

bool is_power_of_two(const binary_value &v) {
    if (v.bits <= 64) return v.f_lo == uint64_t{1} << (v.bits - 1);
    return v.f_lo == 0 && v.f_hi == uint64_t{1} << (v.bits - 65);
}

std::string describe(const binary_value &v) {
    char b[96];
    snprintf(b, sizeof b, "f=0x%llx%016llx e=%d bits=%d", static_cast<unsigned long long>(v.f_hi),
             static_cast<unsigned long long>(v.f_lo), v.e, v.bits);
    return b;
}

class RandomDigits : public ::testing::TestWithParam<random_case> {};

// __f_cvt_real (the fixed-width method for REAL(4) and REAL(8), the exact
// one for REAL(16)) against the reference, and the read-back property.
TEST_P(RandomDigits, MatchTheRuleAndReadBack) {
    const random_case &c = GetParam();
    std::mt19937_64 rng(std::hash<std::string>()(c.name));
    const long n = scaled_count(c.count);
    long failures = 0;
    for (long i = 0; i < n && failures < 10; ++i) {
        binary_value v = random_value(rng, c);
        shortest_digits got = library_digits(v);
#if defined(KRM_TEST_GMP)
        shortest_digits want = reference_digits(v);
        if (!(got == want)) {
            ADD_FAILURE() << describe(v) << ": library " << got << ", reference " << want;
            ++failures;
        }
#endif
        if (!is_power_of_two(v) && !reads_back(v, got)) {
            ADD_FAILURE() << describe(v) << ": " << as_number(got) << " does not read back";
            ++failures;
        }
    }
}

// About 100000 values of each kind, in shards that ctest can run side by
// side; REAL(16) mostly near 1, where its scaling is cheap. The fixed-width
// method meets many more REAL(8) values in FixedWidthDigits below.
const random_case kRandomCases[] = {
    {"real4_a", 24, 0, 50000},
    {"real4_b", 24, 0, 50000},
    {"real8_a", 53, 0, 50000},
    {"real8_b", 53, 0, 50000},
    {"real16_near_one", 113, 64, 60000},
    {"real16_moderate", 113, 600, 30000},
    {"real16_all", 113, 0, 2000},
};

INSTANTIATE_TEST_SUITE_P(Kinds, RandomDigits, ::testing::ValuesIn(kRandomCases),
                         [](const auto &info) { return std::string(info.param.name); });

// The exact method alone against the reference: for REAL(4) and REAL(8) it is
// what the fixed-width method falls back on, and what that method is judged by.
#if defined(KRM_TEST_GMP)
TEST(ExactDigits, MatchTheRuleOnRandomValues) {
    for (int bits : {24, 53}) {
        random_case c = {"exact", bits, 0, 0};
        std::mt19937_64 rng(static_cast<uint64_t>(bits) * 7919);
        const long n = scaled_count(bits == 24 ? 60000 : 15000);
        for (long i = 0; i < n; ++i) {
            binary_value v = random_value(rng, c);
            uint16_t limbs[4];
            for (int j = 0; j < 4; ++j) limbs[j] = static_cast<uint16_t>(v.f_lo >> (16 * j));
            char digits[krm::shortest::max_digits];
            int nd, k;
            krm::shortest::exact_digits(limbs, bits, v.e, 0, digits, &nd, &k);
            shortest_digits got{std::string(digits, static_cast<size_t>(nd)), k};
            ASSERT_EQ(got, reference_digits(v)) << describe(v);
        }
    }
}
#endif

// ------------------------------- the fixed-width method against the exact one

// Both methods on one value: the fixed-width one may give up, but when it
// answers the digits are the same.
struct method_tally {
    long answered = 0, gave_up = 0, differ = 0;
};

void compare_methods(uint64_t f, int bits, int e, method_tally &t) {
    char fast[krm::shortest::max_digits], exact[krm::shortest::max_digits];
    int nf = 0, kf = 0, ne = 0, ke = 0;
    uint16_t limbs[4];
    for (int j = 0; j < 4; ++j) limbs[j] = static_cast<uint16_t>(f >> (16 * j));
    krm::shortest::exact_digits(limbs, bits, e, 0, exact, &ne, &ke);
    if (!krm::shortest::fast_digits(f, e, fast, &nf, &kf)) {
        ++t.gave_up;
        return;
    }
    ++t.answered;
    if (nf != ne || kf != ke || memcmp(fast, exact, static_cast<size_t>(ne)) != 0) {
        if (++t.differ <= 10)
            ADD_FAILURE() << "f=" << f << " e=" << e << " bits=" << bits << ": fixed-width "
                          << std::string(fast, static_cast<size_t>(nf)) << " k " << kf << ", exact "
                          << std::string(exact, static_cast<size_t>(ne)) << " k " << ke;
    }
}

void compare_double(double x, method_tally &t) {
    if (x == 0) return;
    binary_value v = of_real8(x);
    compare_methods(v.f_lo, 53, v.e, t);
}

void compare_float(float x, method_tally &t) {
    if (x == 0) return;
    binary_value v = of_real4(x);
    compare_methods(v.f_lo, 24, v.e, t);
}

// Boundary values of REAL(8): both ends of every binade and their
// neighbours, the doubles nearest every power of ten and their neighbours,
// small integers and dyadic fractions, the tie and leading-zero cases.
TEST(FixedWidthDigits, SameAsExactOnBoundaryValuesOfReal8) {
    method_tally t;
    const long step = scaled_count(20) == 1 ? 8 : 1;
    for (int e = -1126; e <= 971; e += static_cast<int>(step)) {
        const uint64_t lead = uint64_t{1} << 52;
        for (uint64_t f : {lead, lead + 1, lead + 2, 2 * lead - 1, 2 * lead - 2, lead + (lead >> 1), lead + 5})
            compare_methods(f, 53, e, t);
    }
    for (int p = -325; p <= 308; ++p) {
        char s[16];
        snprintf(s, sizeof s, "1e%d", p);
        double x = strtod(s, nullptr);
        if (x == 0 || std::isinf(x)) continue;
        compare_double(x, t);
        compare_double(std::nextafter(x, 0.0), t);
        compare_double(std::nextafter(x, HUGE_VAL), t);
        for (double m : {2.0, 3.0, 5.0, 7.0, 9.0, 1.5, 2.5}) {
            double y = x * m;
            if (std::isfinite(y) && y != 0) compare_double(y, t);
        }
    }
    for (int i = 1; i <= 100000; i += static_cast<int>(step)) {
        compare_double(i, t);
        compare_double(i / 1024.0, t);
        compare_double(i + 0.25, t);
        compare_double(static_cast<double>(i) * 1e15, t);
    }
    for (double x : {1e23, 1125899906842624.25, 9007199254740991.0, 9007199254740992.0, 4503599627370495.5,
                     2.2250738585072014e-308, 2.2250738585072009e-308, 4.9406564584124654e-324}) {
        compare_double(x, t);
    }
    EXPECT_EQ(t.differ, 0);
    EXPECT_LT(t.gave_up * 10000, t.answered + 10000) << "gave up " << t.gave_up << " of " << t.answered + t.gave_up;
}

TEST(FixedWidthDigits, SameAsExactOnRandomReal8) {
    method_tally t;
    std::mt19937_64 rng(20231);
    const long n = scaled_count(150000);
    for (long i = 0; i < n; ++i) {
        uint64_t b = rng() & 0x7fffffffffffffffull;
        if ((b >> 52) == 0x7ff || b == 0) continue;
        double x;
        memcpy(&x, &b, sizeof x);
        compare_double(x, t);
        // and values with few significant digits, where exact cases crowd
        char s[32];
        snprintf(s, sizeof s, "%llue%d", static_cast<unsigned long long>(rng() % 100000),
                 static_cast<int>(rng() % 600) - 300);
        double y = strtod(s, nullptr);
        if (y != 0 && std::isfinite(y)) compare_double(y, t);
    }
    EXPECT_EQ(t.differ, 0);
    EXPECT_LT(t.gave_up * 10000, t.answered + 10000);
}

TEST(FixedWidthDigits, SameAsExactOnBoundaryValuesOfReal4) {
    method_tally t;
    for (int e = -172; e <= 104; ++e) {
        const uint64_t lead = uint64_t{1} << 23;
        for (uint64_t f : {lead, lead + 1, 2 * lead - 1, lead + (lead >> 1)}) compare_methods(f, 24, e, t);
    }
    for (int p = -45; p <= 38; ++p) {
        char s[16];
        snprintf(s, sizeof s, "1e%d", p);
        float x = strtof(s, nullptr);
        if (x == 0 || std::isinf(x)) continue;
        compare_float(x, t);
        compare_float(std::nextafter(x, 0.0f), t);
        compare_float(std::nextafter(x, HUGE_VALF), t);
    }
    for (int i = 1; i <= 1 << 14; ++i) {
        compare_float(static_cast<float>(i), t);
        compare_float(static_cast<float>(i) / 1024.0f, t);
    }
    compare_float(2097152.25f, t);
    EXPECT_EQ(t.differ, 0);
}

// -------------------------------------------------- what the method stands on

#if defined(KRM_TEST_GMP)
// Every entry is 5**-j rounded up to 128 bits: P >= 5**-j * 2**-exp > P - 1.
TEST(FixedWidthDigits, PowerOfFiveTableIsRoundedUp) {
    using krm::shortest::pow5_table;
    mpz_t p, lhs, rhs, five;
    mpz_inits(p, lhs, rhs, five, nullptr);
    for (int j = krm::shortest::pow5_min_index; j <= krm::shortest::pow5_max_index; ++j) {
        const auto &en = pow5_table[j - krm::shortest::pow5_min_index];
        mpz_set_ui(p, static_cast<unsigned long>(en.hi));
        mpz_mul_2exp(p, p, 64);
        mpz_add_ui(p, p, static_cast<unsigned long>(en.lo));
        ASSERT_EQ(mpz_sizeinbase(p, 2), 128u) << j;
        // Compare P * 2**exp with 5**-j, both sides made whole.
        mpz_ui_pow_ui(five, 5, static_cast<unsigned long>(j < 0 ? -j : j));
        for (int minus = 0; minus <= 1; ++minus) {
            mpz_sub_ui(lhs, p, static_cast<unsigned long>(minus));
            mpz_set_ui(rhs, 1);
            if (en.exp >= 0) mpz_mul_2exp(lhs, lhs, static_cast<unsigned long>(en.exp));
            else mpz_mul_2exp(rhs, rhs, static_cast<unsigned long>(-en.exp));
            if (j <= 0) mpz_mul(rhs, rhs, five);
            else mpz_mul(lhs, lhs, five);
            if (minus == 0) EXPECT_GE(mpz_cmp(lhs, rhs), 0) << "entry " << j << " below 5**-j";
            else EXPECT_LT(mpz_cmp(lhs, rhs), 0) << "entry " << j << " a whole unit or more above 5**-j";
        }
    }
    mpz_clears(p, lhs, rhs, five, nullptr);
}

// floor(e * log10(2)) over REAL(8)'s exponents and beyond: 10**j <= 2**e < 10**(j+1).
TEST(FixedWidthDigits, FloorLog10OfPowersOfTwo) {
    mpz_t two, ten;
    mpz_inits(two, ten, nullptr);
    for (int e = -1200; e <= 1100; ++e) {
        const int j = krm::shortest::floor_log10_pow2(e);
        for (int jj : {j, j + 1}) {
            // 2**e against 10**jj, whole on both sides.
            mpz_set_ui(two, 1);
            mpz_set_ui(ten, 1);
            if (e >= 0) mpz_mul_2exp(two, two, static_cast<unsigned long>(e));
            else mpz_mul_2exp(ten, ten, static_cast<unsigned long>(-e));
            mpz_t p;
            mpz_init(p);
            mpz_ui_pow_ui(p, 10, static_cast<unsigned long>(jj < 0 ? -jj : jj));
            if (jj >= 0) mpz_mul(ten, ten, p);
            else mpz_mul(two, two, p);
            mpz_clear(p);
            if (jj == j) EXPECT_GE(mpz_cmp(two, ten), 0) << e;
            else EXPECT_LT(mpz_cmp(two, ten), 0) << e;
        }
    }
    mpz_clears(two, ten, nullptr);
}
#endif

// ----------------------------------------------------------------- v_cmp

struct cmp_case {
    const char *name;
    std::vector<uint16_t> a;
    int a_top, a_low;
    std::vector<uint16_t> b;
    int b_top, b_low;
    int want;
};

TEST(ShortestDigits, BigNumberComparison) {
    const cmp_case cases[] = {
        {"equal", {1, 2, 3}, 2, 0, {1, 2, 3}, 2, 0, 0},
        {"high limb decides", {0, 0, 4}, 2, 0, {9, 9, 3}, 2, 0, 1},
        {"low limb decides", {1, 2, 3}, 2, 0, {2, 2, 3}, 2, 0, -1},
        {"high zero limbs skipped", {5, 0, 0, 0}, 3, 0, {5}, 0, 0, 0},
        {"more limbs is larger", {0, 1}, 1, 0, {0xffff}, 0, 0, 1},
        {"both zero", {0, 0}, 1, 0, {0}, 0, 0, 0},
        {"no limbs is zero", {7}, -1, 0, {0}, 0, 0, 0},
        {"zero below non-zero", {0, 0}, 1, 0, {1}, 0, 0, -1},
        // limbs below `low` are zeros whatever is stored there
        {"unstored low limbs", {0xdead, 0, 1}, 2, 1, {0, 0, 1}, 2, 0, 0},
        {"other number's low limbs decide", {0, 0, 1}, 2, 2, {0, 3, 1}, 2, 0, -1},
        {"stored low limb of a decides", {2, 0, 1}, 2, 0, {0, 0, 1}, 2, 2, 1},
    };
    for (const cmp_case &c : cases) {
        EXPECT_EQ(krm::shortest::v_cmp(c.a.data(), c.a_top, c.a_low, c.b.data(), c.b_top, c.b_low), c.want) << c.name;
        EXPECT_EQ(krm::shortest::v_cmp(c.b.data(), c.b_top, c.b_low, c.a.data(), c.a_top, c.a_low), -c.want) << c.name;
    }
}

// --------------------------------------------------- the 80-bit companions

TEST(ExtendedCompanions, BitsMoveBetweenTheLayouts) {
    // GCC's conversions are exact for values of 64 significant bits.
    std::mt19937_64 rng(80);
    for (int i = 0; i < 2000; ++i) {
        long double x = std::ldexp(static_cast<long double>(rng() | (uint64_t{1} << 63)),
                                   static_cast<int>(rng() % 32000) - 16000 - 63);
        if (i & 1) x = -x;
        real16_words q;
        ldouble2quadruple(q.word, x);
        real16_words want = to_real16(static_cast<__float128>(x));
        ASSERT_EQ(memcmp(&q, &want, sizeof q), 0) << static_cast<double>(x);
        EXPECT_EQ(quadruple2ldouble(q.word[0], q.word[1], q.word[2], q.word[3]), x);
    }
    // Fraction bits below the 63 that fit are dropped, not rounded.
    real16_words w = to_real16(q("1") + q_pow2(-63) * q("1.75"));
    EXPECT_EQ(quadruple2ldouble(w.word[0], w.word[1], w.word[2], w.word[3]), 1.0L + std::ldexp(1.0L, -63));
    w = to_real16(q("-2"));
    EXPECT_EQ(quadruple2ldouble(w.word[0], w.word[1], w.word[2], w.word[3]), -2.0L);
}

TEST(ExtendedCompanions, UnaryMinusFlipsTheSignBitOnly) {
    for (__float128 x : {q("1"), q("-3.5"), q("0"), q("-0"), kQuadMax}) {
        real16_words a = to_real16(x), r;
        unary_minus(r.word, a.word[0], a.word[1], a.word[2], a.word[3]);
        real16_words want = to_real16(-x);
        EXPECT_EQ(memcmp(&r, &want, sizeof r), 0);
    }
    real16_words nan = to_real16(nanq("")), r;
    unary_minus(r.word, nan.word[0], nan.word[1], nan.word[2], nan.word[3]);
    EXPECT_EQ(r.word[3], nan.word[3] ^ 0x80000000u);
    EXPECT_EQ(r.word[0], nan.word[0]);
}

}  // namespace
