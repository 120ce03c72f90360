// Interval endpoints in list-directed output: the lower one is the greatest
// number of 8 (REAL(4)) or 17 (REAL(8)) significant digits not above the
// stored value, the upper one the least not below it. Checked with exact
// rational arithmetic on random values of every binade, subnormals included.

#include <gtest/gtest.h>
#include <fenv.h>
#include <string.h>

#include <random>
#include <string>

#include "listio/real_layout.h"
#include "support/shortest_reference.h"

#if defined(KRM_TEST_GMP)
#include <gmp.h>

namespace {

// RAII for one rational.
struct q {
    mpq_t v;
    q() { mpq_init(v); }
    ~q() { mpq_clear(v); }
    q(const q &) = delete;
    q &operator=(const q &) = delete;
};

// 10**p as a rational.
void set_pow10(mpq_t r, int p) {
    mpz_t t;
    mpz_init(t);
    mpz_ui_pow_ui(t, 10, static_cast<unsigned long>(p < 0 ? -p : p));
    mpq_set_z(r, t);
    if (p < 0) mpq_inv(r, r);
    mpz_clear(t);
}

// The endpoint text ("-1.25E-3", "0.1", "120.0") as a rational; *first gets
// the power of ten of its first significant digit. False if malformed.
bool parse(const std::string &text, mpq_t r, int *first) {
    size_t i = 0;
    bool negative = false;
    if (i < text.size() && text[i] == '-') {
        negative = true;
        ++i;
    }
    std::string digits;
    int point = -1, exponent = 0;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (c >= '0' && c <= '9') {
            digits += c;
        } else if (c == '.' && point < 0) {
            point = static_cast<int>(digits.size());
        } else if (c == 'E') {
            exponent = atoi(text.c_str() + i + 1);
            break;
        } else {
            return false;
        }
    }
    if (point < 0 || digits.empty()) return false;
    size_t lead = 0;
    while (lead + 1 < digits.size() && digits[lead] == '0') ++lead;
    *first = point - static_cast<int>(lead) - 1 + exponent;
    mpz_t m;
    mpz_init_set_str(m, digits.c_str(), 10);
    mpq_set_z(r, m);
    mpz_clear(m);
    q scale;
    set_pow10(scale.v, exponent - (static_cast<int>(digits.size()) - point));
    mpq_mul(r, r, scale.v);
    if (negative) mpq_neg(r, r);
    return true;
}

// lower <= v < lower + unit and upper - unit < v <= upper, the unit being
// that of the last of `count` significant digits of the endpoint.
void check_pair(double v, const std::string &lower, const std::string &upper, int count) {
    q value, x, unit, t;
    mpq_set_d(value.v, v);
    int first = 0;
    ASSERT_TRUE(parse(lower, x.v, &first)) << lower;
    set_pow10(unit.v, first - count + 1);
    EXPECT_LE(mpq_cmp(x.v, value.v), 0) << v << " lower " << lower;
    mpq_add(t.v, x.v, unit.v);
    EXPECT_GT(mpq_cmp(t.v, value.v), 0) << v << " lower " << lower << " is not the greatest";
    ASSERT_TRUE(parse(upper, x.v, &first)) << upper;
    set_pow10(unit.v, first - count + 1);
    EXPECT_GE(mpq_cmp(x.v, value.v), 0) << v << " upper " << upper;
    mpq_sub(t.v, x.v, unit.v);
    EXPECT_LT(mpq_cmp(t.v, value.v), 0) << v << " upper " << upper << " is not the least";
}

std::string text_of(int (*fn)(char *, double, bool, char), double v, bool up) {
    char out[krm::real_layout::text_size];
    int n = fn(out, v, up, '.');
    return std::string(out, static_cast<size_t>(n));
}

int interval8(char *out, double v, bool up, char point) { return krm::real_layout::interval8_text(out, v, up, point); }
int interval4(char *out, double v, bool up, char point) {
    return krm::real_layout::interval4_text(out, static_cast<float>(v), up, point);
}

TEST(IntervalEndpoints, DirectedDigitsOfReal8) {
    std::mt19937_64 rng(1717);
    const long n = krm_test::scaled_count(20000);
    for (long i = 0; i < n; ++i) {
        uint64_t b = rng();
        if ((b >> 52 & 0x7ff) == 0x7ff || (b << 1) == 0) continue;
        double v;
        memcpy(&v, &b, sizeof v);
        check_pair(v, text_of(interval8, v, false), text_of(interval8, v, true), 17);
        if (HasFailure()) return;
    }
}

TEST(IntervalEndpoints, DirectedDigitsOfReal4) {
    std::mt19937_64 rng(1718);
    const long n = krm_test::scaled_count(20000);
    for (long i = 0; i < n; ++i) {
        uint32_t b = static_cast<uint32_t>(rng());
        if ((b >> 23 & 0xff) == 0xff || (b << 1) == 0) continue;
        float f;
        memcpy(&f, &b, sizeof f);
        check_pair(f, text_of(interval4, f, false), text_of(interval4, f, true), 8);
        if (HasFailure()) return;
    }
}

// The statement's rounding direction is left as it was.
TEST(IntervalEndpoints, RoundingDirectionRestored) {
    char out[krm::real_layout::text_size];
    fesetround(FE_TOWARDZERO);
    krm::real_layout::interval8_text(out, 0.1, true, '.');
    EXPECT_EQ(fegetround(), FE_TOWARDZERO);
    fesetround(FE_TONEAREST);
}

}  // namespace

#endif
