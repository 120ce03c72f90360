// The REAL(16) hyperbolic functions: special values, entries, and accuracy
// against MPFR beside libquadmath.
#include <gtest/gtest.h>
#include <quadmath.h>

#include "quad/exp_log_test_support.h"

using namespace quadtest;
using namespace exptest;

namespace {

const __float128 inf = __builtin_infq();
const __float128 nan_ = __builtin_nanq("");
const __float128 tiny = 0x1p-16494Q;

struct special1 {
    const char *what;
    __float128 x, sinh_, cosh_, tanh_;
};

TEST(HyperbolicSpecial, Table) {
    const special1 rows[] = {
        {"+0", 0, 0, 1, 0},
        {"-0", -0.0Q, -0.0Q, 1, -0.0Q},
        {"+inf", inf, inf, inf, 1},
        {"-inf", -inf, -inf, inf, -1},
        {"NaN", nan_, nan_, nan_, nan_},
        {"tiny", tiny, tiny, 1, tiny},
        {"-tiny", -tiny, -tiny, 1, -tiny},
        {"11400", 11400, inf, inf, 1},
        {"-11400", -11400, -inf, inf, -1},
        {"50", 50, sinhq(50), coshq(50), 1},
    };
    for (const special1 &r : rows) {
        EXPECT_TRUE(same_value(call(sinh_, r.x), r.sinh_)) << "sinh " << r.what << " " << show(call(sinh_, r.x));
        EXPECT_TRUE(same_value(call(cosh_, r.x), r.cosh_)) << "cosh " << r.what << " " << show(call(cosh_, r.x));
        EXPECT_TRUE(same_value(call(tanh_, r.x), r.tanh_)) << "tanh " << r.what << " " << show(call(tanh_, r.x));
    }
}

TEST(HyperbolicSpecial, EntriesAgreeWithFunctions) {
    samples xs = log_uniform(-70, 14, 400, 201);
    for (__float128 x : xs) {
        EXPECT_TRUE(same_bits_f(call(sinh_, x), entry(__Qsinh, x))) << show(x);
        EXPECT_TRUE(same_bits_f(call(cosh_, x), entry(__Qcosh, x))) << show(x);
        EXPECT_TRUE(same_bits_f(call(tanh_, x), entry(__Qtanh, x))) << show(x);
    }
}

#if defined(KRM_TEST_MPFR)

samples hyperbolic_samples(uint64_t seed) {
    samples xs = log_uniform(-70, 4, scaled(4000), seed);     // near 0 and the middle
    append(xs, uniform(-2, 2, scaled(2000), seed + 1));
    append(xs, uniform(-45, 45, scaled(1000), seed + 2));      // across the switch at 40
    append(xs, uniform(11340, 11357.3Q, scaled(300), seed + 3));  // near overflow
    append(xs, uniform(-11357.3Q, -11340, scaled(300), seed + 4));
    return xs;
}

TEST(HyperbolicAccuracy, Sinh) {
    accuracy a = measure("sinhl", __Qsinh, sinhq, mpfr_sinh, hyperbolic_samples(211));
    EXPECT_LE(a.ours, 1.0) << "worst at " << show(a.worst_x);
}

TEST(HyperbolicAccuracy, Cosh) {
    accuracy a = measure("coshl", __Qcosh, coshq, mpfr_cosh, hyperbolic_samples(221));
    EXPECT_LE(a.ours, 1.0) << "worst at " << show(a.worst_x);
}

TEST(HyperbolicAccuracy, Tanh) {
    samples xs = hyperbolic_samples(231);
    append(xs, uniform(38, 42, scaled(500), 235));
    accuracy a = measure("tanhl", __Qtanh, tanhq, mpfr_tanh, xs);
    EXPECT_LE(a.ours, 1.0) << "worst at " << show(a.worst_x);
}

#endif

}  // namespace
