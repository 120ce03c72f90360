// The REAL(16) powers: real and whole-number exponents, against MPFR beside
// libquadmath, the special cases of pow, and the entries.
#include <gtest/gtest.h>
#include <quadmath.h>
#include <stdint.h>

#include "quad/exp_log_test_support.h"

using namespace quadtest;
using namespace exptest;

namespace {

const __float128 inf = __builtin_infq();
const __float128 nan_ = __builtin_nanq("");

struct special2 {
    __float128 x, y, want;
};

TEST(PowSpecial, Table) {
    const special2 rows[] = {
        {nan_, 0, 1},      {nan_, -0.0Q, 1},  {1, nan_, 1},      {1, inf, 1},       {1, -inf, 1},
        {-1, inf, 1},      {-1, -inf, 1},     {nan_, 1, nan_},   {2, nan_, nan_},   {0.5Q, inf, 0},
        {0.5Q, -inf, inf}, {2, inf, inf},     {2, -inf, 0},      {-0.5Q, inf, 0},   {-2, -inf, 0},
        {0, 3, 0},         {-0.0Q, 3, -0.0Q}, {-0.0Q, 2, 0},     {-0.0Q, 2.5Q, 0},  {0, -3, inf},
        {-0.0Q, -3, -inf}, {-0.0Q, -2, inf},  {-0.0Q, -0.5Q, inf}, {inf, 2, inf},   {inf, -2, 0},
        {-inf, 3, -inf},   {-inf, 2, inf},    {-inf, -3, -0.0Q}, {-inf, -2, 0},     {-inf, 0.5Q, inf},
        {-2, 0.5Q, nan_},  {-2, 3, -8},       {-2, 2, 4},        {-2, -1, -0.5Q},   {4, 0.5Q, 2},
        {2, 16384, inf},   {-2, 16385, -inf}, {2, -16494, 0x1p-16494Q}, {-2, -16495, -0.0Q}, {10, 2, 100},
        {3, 1, 3},         {1e-30Q, -1000, inf}, {-1, 1e40Q, 1},  {-1, 3e30Q + 1, -1}, {-1, 3e30Q, 1},
    };
    for (const special2 &r : rows) {
        __float128 got = call(pow_, r.x, r.y);
        EXPECT_TRUE(same_value(got, r.want)) << "pow(" << show(r.x) << ", " << show(r.y) << ") = " << show(got)
                                             << ", want " << show(r.want);
        EXPECT_TRUE(same_bits_f(got, entry(__Qpow, r.x, r.y)));
    }
}

TEST(PowSpecial, WholeNumberEntries) {
    struct row {
        __float128 x;
        int64_t n;
        __float128 want;
    };
    const row rows[] = {
        {nan_, 0, 1}, {0, 0, 1}, {2, 10, 1024}, {-2, 11, -2048}, {-3, 2, 9}, {2, -2, 0.25Q}, {0, -1, inf},
        {-0.0Q, -1, -inf}, {-0.0Q, -2, inf}, {10, 4000, 1e4000Q}, {2, 20000, inf}, {2, -20000, 0},
        {-1, INT64_MAX, -1}, {-1, INT64_MIN, 1},
    };
    for (const row &r : rows) {
        krm_real16 x = from_f128(r.x), out;
        int64_t n = r.n;
        __Qpowl(&out, &x, &n);
        EXPECT_TRUE(same_value(to_f128(out), r.want)) << show(r.x) << " ** " << r.n << " = " << show(to_f128(out));
        EXPECT_TRUE(same_value(call(pow_, r.x, static_cast<__float128>(r.n)), to_f128(out)) || r.n == 0 || r.n == 2);
        if (r.n >= INT32_MIN && r.n <= INT32_MAX) {
            int32_t m = static_cast<int32_t>(r.n);
            krm_real16 o2;
            __Qpowi(&o2, &x, &m);
            EXPECT_TRUE(same_bits(o2, out)) << show(r.x) << " ** " << r.n;
        }
        if (r.n >= 0) {
            uint64_t u = static_cast<uint64_t>(r.n);
            krm_real16 o3;
            __Qpowu8(&o3, &x, &u);
            EXPECT_TRUE(same_bits(o3, out)) << show(r.x) << " ** " << r.n;
        }
    }
    // An unsigned exponent beyond the signed range: the parity of 2^64 - 1.
    krm_real16 x = from_f128(-1), out;
    uint64_t u = UINT64_MAX;
    __Qpowu8(&out, &x, &u);
    EXPECT_TRUE(same_value(to_f128(out), -1));
}

#if defined(KRM_TEST_MPFR)

// Pairs whose y log x stays inside the range: x anywhere, y so that the
// result lands anywhere from the subnormals to near the top.
void ranged_pairs(samples &xs, samples &ys, int n, uint64_t seed) {
    samples a = log_uniform(-16494, 16383, n, seed, false);
    samples t = uniform(-11430, 11355, n, seed + 1);
    for (int i = 0; i < n; ++i) {
        __float128 l = logq(a[i]);
        if (l == 0) continue;
        xs.push_back(a[i]);
        ys.push_back(t[i] / l);
    }
}

TEST(PowAccuracy, Pow) {
    samples xs, ys;
    ranged_pairs(xs, ys, scaled(4000), 91);
    // Moderate x and y.
    samples a = uniform(0, 10, scaled(2000), 92), b = uniform(-40, 40, scaled(2000), 93);
    append(xs, a);
    append(ys, b);
    // x near 1 with y large: y log x up to the overflow threshold.
    samples d = log_uniform(-112, -4, scaled(3000), 94);
    samples t = uniform(-11430, 11355, scaled(3000), 95);
    for (size_t i = 0; i < d.size(); ++i) {
        __float128 x = 1 + d[i];
        __float128 l = logq(x);
        if (l == 0) continue;
        xs.push_back(x);
        ys.push_back(t[i] / l);
    }
    // Negative x with whole y, odd and even.
    samples c = uniform(-3, -0.3, scaled(2000), 96);
    for (size_t i = 0; i < c.size(); ++i) {
        xs.push_back(c[i]);
        ys.push_back(static_cast<__float128>(static_cast<int>(i % 4000) - 2000));
    }
    // Results near overflow and underflow.
    samples e = uniform(1.5Q, 3, scaled(500), 97);
    for (size_t i = 0; i < e.size(); ++i) {
        __float128 l = logq(e[i]);
        xs.push_back(e[i]);
        ys.push_back((i & 1 ? 11356.5Q : -11432.9Q) / l);
    }
    accuracy r = measure("powl", __Qpow, powq, mpfr_pow, xs, ys);
    EXPECT_LE(r.ours, 1.0) << "worst at " << show(r.worst_x) << ", " << show(r.worst_y);
}

int pow_whole(mpfr_ptr r, mpfr_srcptr x, mpfr_srcptr y, mpfr_rnd_t rnd) {
    return mpfr_pow_si(r, x, mpfr_get_si(y, MPFR_RNDN), rnd);
}

void powl_entry(krm_real16 *r, const krm_real16 *x, const krm_real16 *y) {
    int64_t n = static_cast<int64_t>(to_f128(*y));
    __Qpowl(r, x, &n);
}

TEST(PowAccuracy, WholeNumberPowers) {
    samples xs = log_uniform(-40, 40, scaled(3000), 101);
    samples ys;
    samples k = uniform(-1, 1, scaled(3000), 102);
    for (size_t i = 0; i < xs.size(); ++i) {
        // Small exponents most often, some up to the range's end.
        int64_t lim = i % 3 == 0 ? 8 : (i % 3 == 1 ? 300 : 20000);
        __float128 n = static_cast<__float128>(static_cast<int64_t>(k[i] * lim));
        if (fabsq(n * log2q(fabsq(xs[i]))) > 16000) n = 3;
        ys.push_back(n);
    }
    accuracy r = measure("powil", powl_entry, powq, pow_whole, xs, ys);
    EXPECT_LE(r.ours, 1.0) << "worst at " << show(r.worst_x) << ", " << show(r.worst_y);
}

// Cubes and fourth powers go by exact products within 2^+-4000, and by the
// general power outside: both sides of that edge.
TEST(PowAccuracy, CubesAndFourthPowers) {
    samples xs = log_uniform(-4100, 4100, scaled(4000), 103);
    samples ys;
    for (size_t i = 0; i < xs.size(); ++i) ys.push_back(i & 1 ? 3 : 4);
    accuracy r = measure("powil 3 and 4", powl_entry, powq, pow_whole, xs, ys);
    EXPECT_LE(r.ours, 0.501) << "worst at " << show(r.worst_x) << ", " << show(r.worst_y);
}

#endif

}  // namespace
