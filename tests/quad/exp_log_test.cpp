// The REAL(16) exponentials and logarithms: accuracy against MPFR beside
// libquadmath, special values, and the entries against their functions.
#include <gtest/gtest.h>
#include <quadmath.h>
#include <string.h>

#include "quad/exp_log_tables.h"
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
    append(xs, uniform(-82, 82, scaled(1000), 45));  // both sides of the switch at |x| = 1 and at 80
    accuracy a = measure("expm1l", wrap<expm1_>, expm1q, mpfr_expm1, xs);
    EXPECT_LE(a.ours, 1.0) << "worst at " << show(a.worst_x);
}

samples log_samples() {
    samples xs = log_uniform(-16382, 16383, scaled(3000), 51, false);
    append(xs, log_uniform(-16494, -16382, scaled(300), 52, false));  // subnormals
    append(xs, uniform(0.9, 1.1, scaled(2000), 53));                    // near 1
    append(xs, uniform(0.999, 1.001, scaled(1000), 54));
    append(xs, uniform(0.5, 2, scaled(2000), 55));                      // every table row
    append(xs, uniform(0x1.e0f8p-1Q - 0x1p-12Q, 0x1.e0f8p-1Q + 0x1p-12Q, scaled(300), 57));  // the direct series' ends
    append(xs, uniform(0x1.1085p0Q - 0x1p-12Q, 0x1.1085p0Q + 0x1p-12Q, scaled(300), 58));
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

namespace {

TEST(ExpLogSpecial, Log10AndLog1p) {
    const special1 rows10[] = {
        {"+0", 0, -inf}, {"-0", -0.0Q, -inf}, {"1", 1, 0}, {"10", 10, 1}, {"1e-4", 1e-4Q, -4},
        {"+inf", inf, inf}, {"-2", -2, nan_}, {"NaN", nan_, nan_}, {"1e4000", 1e4000Q, 4000},
    };
    check_table("log10l", log10_, rows10, sizeof rows10 / sizeof rows10[0]);
    const special1 rows1p[] = {
        {"+0", 0, 0}, {"-0", -0.0Q, -0.0Q}, {"-1", -1, -inf}, {"-1.5", -1.5Q, nan_}, {"-inf", -inf, nan_},
        {"+inf", inf, inf}, {"NaN", nan_, nan_}, {"tiny", tiny, tiny}, {"-tiny", -tiny, -tiny},
    };
    check_table("log1pl", log1p_, rows1p, sizeof rows1p / sizeof rows1p[0]);
    for (__float128 x : log_uniform(-30, 30, 200, 61, false))
        EXPECT_TRUE(same_bits_f(call(log10_, x), entry(__Qlog10, x))) << show(x);
}

#if defined(KRM_TEST_MPFR)

TEST(ExpLogAccuracy, Log10) {
    samples xs = log_samples();
    for (int n = -4900; n <= 4900; n += 97) xs.push_back(powq(10, n));  // near the powers of ten
    // Both sides of the switch between the series near 1 and the table.
    append(xs, uniform(1 - 0x1p-9Q - 0x1p-16Q, 1 - 0x1p-9Q + 0x1p-16Q, scaled(300), 62));
    append(xs, uniform(1 + 0x1p-8Q - 0x1p-16Q, 1 + 0x1p-8Q + 0x1p-16Q, scaled(300), 63));
    accuracy a = measure("log10l", __Qlog10, log10q, mpfr_log10, xs);
    EXPECT_LE(a.ours, 1.0) << "worst at " << show(a.worst_x);
}

TEST(ExpLogAccuracy, Log1p) {
    samples xs = log_uniform(-130, 100, scaled(4000), 71);
    for (__float128 &x : xs)
        if (x < -1) x = -1 / x;  // keep above -1
    append(xs, uniform(-0.999, 1, scaled(2000), 72));
    append(xs, uniform(-0.01, 0.01, scaled(1000), 73));
    append(xs, uniform(-1, -0.99, scaled(500), 74));
    // Both sides of the switch between the series and the table.
    append(xs, uniform(0x1p-8Q - 0x1p-16Q, 0x1p-8Q + 0x1p-16Q, scaled(300), 75));
    append(xs, uniform(-0x1p-8Q - 0x1p-16Q, -0x1p-8Q + 0x1p-16Q, scaled(300), 76));
    accuracy a = measure("log1pl", wrap<log1p_>, log1pq, mpfr_log1p, xs);
    EXPECT_LE(a.ours, 1.0) << "worst at " << show(a.worst_x);
}

// The real part of the complex log, half log(x^2 + y^2), against MPFR's
// exact sum of squares.
int half_log_hypot(mpfr_ptr r, mpfr_srcptr x, mpfr_srcptr y, mpfr_rnd_t rnd) {
    mpfr_t s, t;
    mpfr_init2(s, 1024);
    mpfr_init2(t, 1024);
    mpfr_sqr(s, x, MPFR_RNDN);
    mpfr_sqr(t, y, MPFR_RNDN);
    mpfr_add(s, s, t, MPFR_RNDN);
    mpfr_log(s, s, MPFR_RNDN);
    int v = mpfr_div_2ui(r, s, 1, rnd);
    mpfr_clear(s);
    mpfr_clear(t);
    return v;
}

void k_clog_entry(krm_real16 *r, const krm_real16 *x, const krm_real16 *y) {
    *r = krm::ldmath::__k_clog_rl(long_double::of_storage(*x), long_double::of_storage(*y)).storage();
}

TEST(ExpLogAccuracy, HalfLogOfSumOfSquares) {
    // Pairs with |x| >= |y|: anywhere, and on the unit circle's neighbourhood.
    samples xs = log_uniform(-16000, 16000, scaled(1500), 81, false);
    samples ys = log_uniform(-16000, 16000, scaled(1500), 82, false);
    for (size_t i = 0; i < xs.size(); ++i)
        if (ys[i] > xs[i]) std::swap(xs[i], ys[i]);
    samples t = uniform(0, 0.785, scaled(1500), 83);  // angles up to pi/4
    samples rad = uniform(-0.02, 0.02, scaled(1500), 84);
    for (size_t i = 0; i < t.size(); ++i) {
        __float128 r = 1 + rad[i] * rad[i] * rad[i];
        xs.push_back(r * cosq(t[i]));
        ys.push_back(r * sinq(t[i]));
    }
    accuracy a = measure("__k_clog_rl", k_clog_entry, nullptr, half_log_hypot, xs, ys);
    EXPECT_LE(a.ours, 1.0) << "worst at " << show(a.worst_x) << ", " << show(a.worst_y);
}

#endif

}  // namespace

namespace {

#if defined(KRM_TEST_MPFR)

// __explog_mul's head and tail sum to the exact product within 2^-220 of
// it, on the integer path (exponents well inside the range) and across
// its lower edge (products from 2^-16200 up), both signs.
TEST(ExpLogAccuracy, ExactProductPair) {
    samples as = log_uniform(-200, 200, scaled(2000), 401);
    samples bs = log_uniform(-200, 200, scaled(2000), 402);
    append(as, log_uniform(-8100, -8000, scaled(300), 403));
    append(bs, log_uniform(-8100, -8000, scaled(300), 404));
    mpfr_t exact, sum, t;
    mpfr_init2(exact, 512);
    mpfr_init2(sum, 512);
    mpfr_init2(t, 512);
    for (size_t i = 0; i < as.size(); ++i) {
        long_double lo;
        long_double hi = krm::ldmath::__explog_mul(ld(as[i]), ld(bs[i]), &lo);
        mpfr_set_float128(exact, as[i], MPFR_RNDN);
        mpfr_set_float128(t, bs[i], MPFR_RNDN);
        mpfr_mul(exact, exact, t, MPFR_RNDN);  // exact: 226 bits
        mpfr_set_float128(sum, f128(hi), MPFR_RNDN);
        mpfr_set_float128(t, f128(lo), MPFR_RNDN);
        mpfr_add(sum, sum, t, MPFR_RNDN);
        mpfr_sub(sum, sum, exact, MPFR_RNDN);
        if (mpfr_zero_p(sum)) continue;
        long gap = mpfr_get_exp(exact) - mpfr_get_exp(sum);
        EXPECT_GE(gap, 220) << show(as[i]) << " * " << show(bs[i]);
    }
    mpfr_clear(t);
    mpfr_clear(exact);
    mpfr_clear(sum);
}

// In the directed roundings the last operation rounds the other way, so a
// result may lie up to an ulp further off; nothing else may change.
TEST(ExpLogAccuracy, DirectedRoundings) {
    samples xs = uniform(-700, 700, scaled(300), 301);
    append(xs, uniform(-11433, -11350, scaled(100), 302));
    samples ls = log_uniform(-16494, 16383, scaled(300), 303, false);
    append(ls, uniform(0.99, 1.01, scaled(100), 304));
    samples hs = uniform(-45, 45, scaled(300), 305);
    samples py = uniform(-30, 30, scaled(300), 306), px = uniform(0, 20, scaled(300), 307);
    for (int fe : {FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO}) {
        rounding_scope r(fe);
        EXPECT_LE(measure("expl directed", __Qexp, nullptr, mpfr_exp, xs).ours, 1.5) << fe;
        EXPECT_LE(measure("expm1l directed", wrap<expm1_>, nullptr, mpfr_expm1, hs).ours, 1.5) << fe;
        EXPECT_LE(measure("logl directed", __Qlog, nullptr, mpfr_log, ls).ours, 1.5) << fe;
        EXPECT_LE(measure("log10l directed", __Qlog10, nullptr, mpfr_log10, ls).ours, 1.5) << fe;
        EXPECT_LE(measure("log1pl directed", wrap<log1p_>, nullptr, mpfr_log1p, px).ours, 1.5) << fe;
        EXPECT_LE(measure("sinhl directed", __Qsinh, nullptr, mpfr_sinh, hs).ours, 1.5) << fe;
        EXPECT_LE(measure("coshl directed", __Qcosh, nullptr, mpfr_cosh, hs).ours, 1.5) << fe;
        EXPECT_LE(measure("tanhl directed", __Qtanh, nullptr, mpfr_tanh, hs).ours, 1.5) << fe;
        EXPECT_LE(measure("powl directed", __Qpow, nullptr, mpfr_pow, px, py).ours, 1.5) << fe;
    }
}

// __k_cexpl(x, &n) * 2^n is exp(x), also where exp(x) itself overflows.
void cexp_scaled(krm_real16 *r, const krm_real16 *x) {
    int n;
    long_double v = krm::ldmath::__k_cexpl(long_double::of_storage(*x), &n);
    // Bring the value back by n, in __float128 only when it stays finite:
    // the test samples keep n + exponent in range by dividing x's exp by
    // 2^16000 below.
    *r = krm::ldmath::__scalbnl(v, n - 16000).storage();
}

int exp_less_16000(mpfr_ptr r, mpfr_srcptr x, mpfr_rnd_t rnd) {
    mpfr_t t;
    mpfr_init2(t, 512);
    mpfr_exp(t, x, MPFR_RNDN);
    int v = mpfr_div_2ui(r, t, 16000, rnd);
    mpfr_clear(t);
    return v;
}

TEST(ExpLogAccuracy, ExpAsValueAndPowerOfTwo) {
    samples xs = uniform(11000, 11400, scaled(1000), 311);  // exp(x) beyond the range
    accuracy a = measure("__k_cexpl", cexp_scaled, nullptr, exp_less_16000, xs);
    // The value is rounded once and then scaled exactly.
    EXPECT_LE(a.ours, 1.0) << "worst at " << show(a.worst_x);
}

#endif

}  // namespace

namespace {

// The exponentials put their subnormal results in place with __scalbnl;
// its steps below the normal range must land on the right power.
TEST(ExpLogSpecial, ScalingIntoSubnormals) {
    const __float128 xs[] = {1, 1.5Q, 1.75Q, -1.25Q, 0x1.ffffffffffffffffffffffffffffp0Q, 3};
    for (__float128 x : xs) {
        for (int n : {-16382, -16383, -16400, -16493, -16494, -16495, -16496, -20000}) {
            __float128 got = f128(krm::ldmath::__scalbnl(ld(x), n));
            EXPECT_TRUE(same_value(got, ldexpq(x, n))) << show(x) << " * 2^" << n << " = " << show(got);
        }
    }
}

}  // namespace

#if defined(KRM_TEST_MPFR)

namespace {

// 2^m (hi + lo) rounded once to binary128, subnormals included, by MPFR.
__float128 rounded_once(__float128 hi, __float128 lo, int m) {
    mpfr_exp_t old_min = mpfr_get_emin(), old_max = mpfr_get_emax();
    mpfr_t a, b, r;
    mpfr_init2(a, 113);
    mpfr_init2(b, 113);
    mpfr_init2(r, 113);
    mpfr_set_float128(a, hi, MPFR_RNDN);
    mpfr_set_float128(b, lo, MPFR_RNDN);
    mpfr_mul_2si(a, a, m, MPFR_RNDN);  // exact: 113-bit significands, MPFR's wide range
    mpfr_mul_2si(b, b, m, MPFR_RNDN);
    int t = mpfr_add(r, a, b, MPFR_RNDN);
    mpfr_set_emin(-16493);  // binary128 in MPFR's exponent convention
    mpfr_set_emax(16384);
    t = mpfr_check_range(r, t, MPFR_RNDN);
    t = mpfr_subnormalize(r, t, MPFR_RNDN);
    __float128 v = mpfr_get_float128(r, MPFR_RNDN);
    mpfr_set_emin(old_min);
    mpfr_set_emax(old_max);
    mpfr_clear(a);
    mpfr_clear(b);
    mpfr_clear(r);
    return v;
}

// A subnormal result is rounded once: where the head alone sits on a tie
// of the subnormal grid, the tail decides.
TEST(ExpLogAccuracy, SubnormalResultsRoundOnce) {
    struct row {
        __float128 hi;
        int m;
    };
    const row rows[] = {{1.5Q, -16494}, {1.25Q, -16493}, {1.75Q, -16493}, {1.0000000000000000000000000000000002Q, -16494},
                        {1.5Q, -16440}, {1.0078125Q, -16420}};
    for (const row &r : rows) {
        for (__float128 lo : {0x1p-120Q, -0x1p-120Q, 0.0Q, 0x1p-200Q, -0x1p-200Q}) {
            __float128 got = f128(krm::ldmath::__exp_finish(ld(r.hi), ld(lo), r.m));
            __float128 want = rounded_once(r.hi, lo, r.m);
            EXPECT_TRUE(same_bits_f(got, want)) << show(r.hi) << " + " << show(lo) << " times 2^" << r.m << ": got "
                                                << show(got) << ", want " << show(want);
        }
    }
}

}  // namespace

#endif
