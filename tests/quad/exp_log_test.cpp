// The REAL(16) exponentials and logarithms: accuracy against MPFR beside
// libquadmath, special values, and the entries against their functions.
#include <gtest/gtest.h>
#include <quadmath.h>
#include <string.h>

#include "quad/exp_log_test_support.h"

using namespace quadtest;
using namespace exptest;

namespace {

// ---- special values, both builds ------------------------------------------

struct special1 {
    const char *what;
    __float128 x;
    __float128 want;  // compared bit for bit, but any NaN matches any NaN
};

void check_table(const char *name, fn1 f, const special1 *rows, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        __float128 got = call(f, rows[i].x);
        EXPECT_TRUE(same_value(got, rows[i].want))
            << name << ": " << rows[i].what << ": got " << show(got) << ", want " << show(rows[i].want);
    }
}

const __float128 inf = __builtin_infq();
const __float128 nan_ = __builtin_nanq("");
const __float128 tiny = 0x1p-16494Q;  // the least subnormal
const __float128 huge = FLT128_MAX;

TEST(ExpLogSpecial, Exp) {
    const special1 rows[] = {
        {"+0", 0, 1},
        {"-0", -0.0Q, 1},
        {"+inf", inf, inf},
        {"-inf", -inf, 0},
        {"NaN", nan_, nan_},
        {"1", 1, expq(1)},
        {"past overflow threshold", 11357, inf},
        {"largest", huge, inf},
        {"below underflow threshold", -11434, 0},
        {"most negative", -huge, 0},
        {"tiny", tiny, 1},
        {"-tiny", -tiny, 1},
    };
    check_table("expl", exp_, rows, sizeof rows / sizeof rows[0]);
}

TEST(ExpLogSpecial, ExpOverflowFollowsDirection) {
    // Beyond the threshold: an infinity to nearest or up, the largest number
    // towards zero; below the other one: zero, or the least subnormal up.
    rounding_scope up(FE_UPWARD);
    EXPECT_TRUE(same_value(call(exp_, 11400), inf));
    EXPECT_TRUE(same_value(call(exp_, -11500), tiny));
    rounding_scope zero(FE_TOWARDZERO);
    EXPECT_TRUE(same_value(call(exp_, 11400), huge));
    EXPECT_TRUE(same_value(call(exp_, -11500), 0));
}

TEST(ExpLogSpecial, Exp2IsExactOnWholeNumbers) {
    for (int n : {-16494, -16400, -16382, -1000, -1, 0, 1, 2, 63, 1000, 16383}) {
        EXPECT_TRUE(same_value(call(exp2_, n), ldexpq(1, n))) << n;
    }
    EXPECT_TRUE(same_value(call(exp2_, 16384), inf));
    EXPECT_TRUE(same_value(call(exp2_, -16496), 0));
    EXPECT_TRUE(same_value(call(exp2_, -inf), 0));
}

TEST(ExpLogSpecial, Expm1) {
    const special1 rows[] = {
        {"+0", 0, 0},          {"-0", -0.0Q, -0.0Q}, {"+inf", inf, inf}, {"-inf", -inf, -1},
        {"NaN", nan_, nan_},   {"-200", -200, -1},   {"tiny", tiny, tiny}, {"big", 12000, inf},
    };
    check_table("expm1l", expm1_, rows, sizeof rows / sizeof rows[0]);
}

TEST(ExpLogSpecial, Log) {
    const special1 rows[] = {
        {"+0", 0, -inf},       {"-0", -0.0Q, -inf}, {"1", 1, 0},          {"+inf", inf, inf},
        {"-inf", -inf, nan_},  {"-1", -1, nan_},    {"-tiny", -tiny, nan_}, {"NaN", nan_, nan_},
        {"tiny", tiny, logq(tiny)}, {"largest", huge, logq(huge)},
    };
    check_table("logl", log_, rows, sizeof rows / sizeof rows[0]);
}

TEST(ExpLogSpecial, LogOfOneIsPlusZeroInEveryDirection) {
    for (int fe : {FE_TONEAREST, FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO}) {
        rounding_scope r(fe);
        EXPECT_TRUE(same_value(call(log_, 1), 0)) << fe;
    }
}

TEST(ExpLogSpecial, EntriesAgreeWithFunctions) {
    samples xs = log_uniform(-20, 14, 300, 11);
    append(xs, uniform(-11440, 11360, 200, 12));
    for (__float128 x : xs) {
        EXPECT_TRUE(same_bits_f(call(exp_, x), entry(__Qexp, x))) << show(x);
        __float128 ax = x < 0 ? -x : x;
        EXPECT_TRUE(same_bits_f(call(log_, ax), entry(__Qlog, ax))) << show(ax);
    }
}

#if defined(KRM_TEST_MPFR)

// ---- accuracy against MPFR ------------------------------------------------

samples exp_samples() {
    samples xs = uniform(-1, 1, scaled(3000), 21);
    append(xs, log_uniform(-120, 14, scaled(3000), 22));
    append(xs, uniform(11350, 11356.52, scaled(500), 23));   // near overflow
    append(xs, uniform(-11433.5, -11350, scaled(1000), 24)); // subnormal results
    append(xs, uniform(-0.011, 0.011, scaled(1000), 25));    // the polynomial alone
    return xs;
}

TEST(ExpLogAccuracy, Exp) {
    accuracy a = measure("expl", __Qexp, expq, mpfr_exp, exp_samples());
    EXPECT_LE(a.ours, 1.0) << "worst at " << show(a.worst_x);
}

TEST(ExpLogAccuracy, Exp2) {
    samples xs = uniform(-2, 2, scaled(2000), 31);
    append(xs, log_uniform(-120, 14, scaled(2000), 32));
    append(xs, uniform(16380, 16384, scaled(300), 33));
    append(xs, uniform(-16496, -16370, scaled(700), 34));
    accuracy a = measure("exp2l", wrap<exp2_>, exp2q, mpfr_exp2, xs);
    EXPECT_LE(a.ours, 1.0) << "worst at " << show(a.worst_x);
}

TEST(ExpLogAccuracy, Expm1) {
    samples xs = log_uniform(-130, 7, scaled(4000), 41);
    append(xs, uniform(-1, 1, scaled(1000), 42));
    append(xs, uniform(-0.05, 0.05, scaled(1000), 43));
    append(xs, uniform(60, 11356, scaled(300), 44));
    accuracy a = measure("expm1l", wrap<expm1_>, expm1q, mpfr_expm1, xs);
    EXPECT_LE(a.ours, 1.0) << "worst at " << show(a.worst_x);
}

samples log_samples() {
    samples xs = log_uniform(-16382, 16383, scaled(3000), 51, false);
    append(xs, log_uniform(-16494, -16382, scaled(300), 52, false));  // subnormals
    append(xs, uniform(0.9, 1.1, scaled(2000), 53));                    // near 1
    append(xs, uniform(0.999, 1.001, scaled(1000), 54));
    append(xs, uniform(0.5, 2, scaled(2000), 55));                      // every table row
    samples near1 = log_uniform(-112, -8, scaled(1000), 56);
    for (__float128 &x : near1) x = 1 + x;
    append(xs, near1);
    return xs;
}

TEST(ExpLogAccuracy, Log) {
    accuracy a = measure("logl", __Qlog, logq, mpfr_log, log_samples());
    EXPECT_LE(a.ours, 1.0) << "worst at " << show(a.worst_x);
}

#endif

}  // namespace
