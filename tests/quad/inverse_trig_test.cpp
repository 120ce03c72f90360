// The inverse trigonometric functions, cbrt and hypot on REAL(16): accuracy
// against MPFR at 256 bits beside libquadmath, the IEEE special values, the
// exact points of the degree forms, and the entries against their
// class-order functions.
#include <gtest/gtest.h>
#include <quadmath.h>
#include <math.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <vector>

#include "quad/function_accuracy.h"
#include "quad/inv_trig.h"
#include "quad/ldmath.h"
#include "quad/quad_support.h"

namespace {

using namespace quadtest;
using krm::ldmath::load;
using krm::ldmath::store;

krm_real16 in(__float128 x) { return from_f128(x); }

long_double ld(__float128 x) {
    krm_real16 s = from_f128(x);
    return load(&s);
}

__float128 f128(const long_double &x) {
    krm_real16 s;
    store(&s, x);
    return to_f128(s);
}


bool same(__float128 a, __float128 b) {
    if (isnanq(a) || isnanq(b)) return isnanq(a) && isnanq(b);
    return memcmp(&a, &b, 16) == 0;
}

std::string show(__float128 x) {
    char buf[64];
    quadmath_snprintf(buf, sizeof buf, "%.36Qg", x);
    return std::string(buf) + " [" + hex(from_f128(x)) + "]";
}

const __float128 inf = __builtin_infq();
const __float128 qnan = __builtin_nanq("");
const __float128 eps = FLT128_EPSILON;
const __float128 min_sub = FLT128_DENORM_MIN;

// --- Special values: libquadmath's results on the IEEE table are the oracle.

struct one_arg_case {
    const char *what;
    void (*entry)(krm_real16 *, const krm_real16 *);
    __float128 (*oracle)(__float128);
    __float128 x;
};

TEST(InverseTrigSpecial, OneArgumentMatchesLibquadmath) {
    const one_arg_case cases[] = {
        {"atan(+0)", __Qatan, atanq, 0.0Q},         {"atan(-0)", __Qatan, atanq, -0.0Q},
        {"atan(+inf)", __Qatan, atanq, inf},        {"atan(-inf)", __Qatan, atanq, -inf},
        {"atan(nan)", __Qatan, atanq, qnan},        {"atan(1)", __Qatan, atanq, 1.0Q},
        {"atan(-1)", __Qatan, atanq, -1.0Q},        {"atan(min_sub)", __Qatan, atanq, min_sub},
        {"atan(max)", __Qatan, atanq, FLT128_MAX},  {"atan(2^-7)", __Qatan, atanq, 0x1p-7Q},
        {"atan(2^7)", __Qatan, atanq, 0x1p7Q},      {"asin(+0)", __Qasin, asinq, 0.0Q},
        {"asin(-0)", __Qasin, asinq, -0.0Q},        {"asin(1)", __Qasin, asinq, 1.0Q},
        {"asin(-1)", __Qasin, asinq, -1.0Q},        {"asin(1+eps)", __Qasin, asinq, 1.0Q + eps},
        {"asin(-2)", __Qasin, asinq, -2.0Q},        {"asin(inf)", __Qasin, asinq, inf},
        {"asin(nan)", __Qasin, asinq, qnan},        {"asin(0.5)", __Qasin, asinq, 0.5Q},
        {"acos(1)", __Qacos, acosq, 1.0Q},          {"acos(-1)", __Qacos, acosq, -1.0Q},
        {"acos(+0)", __Qacos, acosq, 0.0Q},         {"acos(-0)", __Qacos, acosq, -0.0Q},
        {"acos(1+eps)", __Qacos, acosq, 1.0Q + eps}, {"acos(-1-eps)", __Qacos, acosq, -1.0Q - eps},
        {"acos(-inf)", __Qacos, acosq, -inf},       {"acos(nan)", __Qacos, acosq, qnan},
        {"acos(0.5)", __Qacos, acosq, 0.5Q},        {"cbrt(+0)", __Qcbrt, cbrtq, 0.0Q},
        {"cbrt(-0)", __Qcbrt, cbrtq, -0.0Q},        {"cbrt(inf)", __Qcbrt, cbrtq, inf},
        {"cbrt(-inf)", __Qcbrt, cbrtq, -inf},       {"cbrt(nan)", __Qcbrt, cbrtq, qnan},
        {"cbrt(-27)", __Qcbrt, cbrtq, -27.0Q},      {"cbrt(8)", __Qcbrt, cbrtq, 8.0Q},
        {"cbrt(2^-16491)", __Qcbrt, cbrtq, 0x1p-16491Q}, {"cbrt(min_sub)", __Qcbrt, cbrtq, min_sub},
        {"cbrt(max)", __Qcbrt, cbrtq, FLT128_MAX},  {"cbrt(1/8)", __Qcbrt, cbrtq, 0.125Q},
    };
    for (const auto &c : cases) {
        krm_real16 x = in(c.x), r;
        c.entry(&r, &x);
        __float128 want = c.oracle(c.x), got = to_f128(r);
        EXPECT_TRUE(same(got, want)) << c.what << ": got " << show(got) << ", want " << show(want);
    }
}

struct two_arg_case {
    __float128 y, x;
};

TEST(InverseTrigSpecial, Atan2IeeeTable) {
    const __float128 values[] = {0.0Q, -0.0Q, 1.0Q, -1.0Q, inf, -inf, qnan, 0x1p-16494Q, -3.5Q, FLT128_MAX};
    for (__float128 y : values)
        for (__float128 x : values) {
            krm_real16 sy = in(y), sx = in(x), r;
            __Qatan2(&r, &sy, &sx);
            __float128 want = atan2q(y, x), got = to_f128(r);
            EXPECT_TRUE(same(got, want)) << "atan2(" << show(y) << ", " << show(x) << "): got " << show(got)
                                         << ", want " << show(want);
        }
}

TEST(InverseTrigSpecial, HypotInfinityWinsOverNaN) {
    const two_arg_case cases[] = {
        {inf, qnan}, {qnan, -inf}, {-inf, 0.0Q}, {1.0Q, inf}, {qnan, 1.0Q}, {2.0Q, qnan},
        {3.0Q, 4.0Q}, {-0.0Q, 0.0Q}, {0.0Q, -5.0Q}, {FLT128_MAX, FLT128_MAX}, {min_sub, min_sub},
        {FLT128_MAX, 1.0Q}, {0x1p-16400Q, 0x1p-16410Q}, {0x1p8190Q, 0x1p8185Q},
    };
    for (const auto &c : cases) {
        __float128 got = f128(krm::ldmath::hypotl(ld(c.y), ld(c.x))), want = hypotq(c.y, c.x);
        EXPECT_TRUE(same(got, want)) << "hypot(" << show(c.y) << ", " << show(c.x) << "): got " << show(got)
                                     << ", want " << show(want);
    }
}

// The degree forms hit their round values exactly; the expected values are
// the exact degrees, representable in binary128.
TEST(InverseTrigSpecial, DegreeFormsExactPoints) {
    struct {
        const char *what;
        void (*entry)(krm_real16 *, const krm_real16 *);
        __float128 x, want;
    } cases[] = {
        {"atand(1)", __Qatand, 1.0Q, 45.0Q},     {"atand(-1)", __Qatand, -1.0Q, -45.0Q},
        {"atand(inf)", __Qatand, inf, 90.0Q},    {"atand(-inf)", __Qatand, -inf, -90.0Q},
        {"atand(-0)", __Qatand, -0.0Q, -0.0Q},   {"asind(1)", __Qasind, 1.0Q, 90.0Q},
        {"asind(-1)", __Qasind, -1.0Q, -90.0Q},  {"asind(0.5)", __Qasind, 0.5Q, 30.0Q},
        {"asind(-0)", __Qasind, -0.0Q, -0.0Q},   {"acosd(-1)", __Qacosd, -1.0Q, 180.0Q},
        {"acosd(1)", __Qacosd, 1.0Q, 0.0Q},      {"acosd(0)", __Qacosd, 0.0Q, 90.0Q},
        {"acosd(0.5)", __Qacosd, 0.5Q, 60.0Q},   {"acosd(-0.5)", __Qacosd, -0.5Q, 120.0Q},
    };
    for (const auto &c : cases) {
        krm_real16 x = in(c.x), r;
        c.entry(&r, &x);
        EXPECT_TRUE(same(to_f128(r), c.want)) << c.what << ": got " << show(to_f128(r));
    }
    struct {
        __float128 y, x, want;
    } two[] = {
        {1.0Q, 1.0Q, 45.0Q},    {-1.0Q, -1.0Q, -135.0Q}, {-0.0Q, -1.0Q, -180.0Q}, {0.0Q, -0.0Q, 180.0Q},
        {inf, -inf, 135.0Q},    {-inf, inf, -45.0Q},     {1.0Q, 0.0Q, 90.0Q},      {-2.0Q, -0.0Q, -90.0Q},
        {0.0Q, 5.0Q, 0.0Q},     {-0.0Q, 0.0Q, -0.0Q},
    };
    for (const auto &c : two) {
        krm_real16 y = in(c.y), x = in(c.x), r;
        __Qatn2d(&r, &y, &x);
        EXPECT_TRUE(same(to_f128(r), c.want)) << "atan2d(" << show(c.y) << ", " << show(c.x)
                                              << "): got " << show(to_f128(r));
    }
    for (__float128 x : {1.0Q + eps, -1.0Q - eps, 2.0Q, inf, qnan}) {
        krm_real16 s = in(x), r;
        __Qasind(&r, &s);
        EXPECT_TRUE(isnanq(to_f128(r))) << "asind(" << show(x) << ")";
        __Qacosd(&r, &s);
        EXPECT_TRUE(isnanq(to_f128(r))) << "acosd(" << show(x) << ")";
    }
}

// atan2pi: the quarter and half turns come out exactly.
TEST(InverseTrigSpecial, Atan2piExactPoints) {
    struct {
        __float128 y, x, want;
    } cases[] = {
        {1.0Q, 1.0Q, 0.25Q}, {-1.0Q, -1.0Q, -0.75Q}, {0.0Q, -1.0Q, 1.0Q}, {-0.0Q, -0.0Q, -1.0Q},
        {3.0Q, 0.0Q, 0.5Q},  {inf, -inf, 0.75Q},     {0.0Q, 2.0Q, 0.0Q},  {-0.0Q, 2.0Q, -0.0Q},
    };
    for (const auto &c : cases) {
        __float128 got = f128(krm::ldmath::atan2pil(ld(c.y), ld(c.x)));
        EXPECT_TRUE(same(got, c.want)) << "atan2pi(" << show(c.y) << ", " << show(c.x) << "): got " << show(got);
    }
}

// --- The entries and the class-order functions agree bit for bit.

samples mixed(uint64_t seed) {
    samples xs = log_uniform(-130, 20, 300, seed);
    append(xs, uniform(-1.0Q, 1.0Q, 200, seed + 1));
    return xs;
}

TEST(InverseTrigEntries, SameAsClassOrderFunctions) {
    using namespace krm::ldmath;
    struct {
        const char *what;
        void (*entry)(krm_real16 *, const krm_real16 *);
        long_double (*fn)(long_double);
    } ones[] = {
        {"atan", __Qatan, atanl},    {"asin", __Qasin, asinl},    {"acos", __Qacos, acosl},
        {"atand", __Qatand, atandl}, {"asind", __Qasind, asindl}, {"acosd", __Qacosd, acosdl},
        {"cbrt", __Qcbrt, cbrtl},
    };
    samples xs = mixed(11);
    for (const auto &f : ones)
        for (__float128 x : xs) {
            krm_real16 s = in(x), r;
            f.entry(&r, &s);
            EXPECT_TRUE(same(to_f128(r), f128(f.fn(ld(x))))) << f.what << "(" << show(x) << ")";
        }
    samples ys = mixed(12);
    for (size_t i = 0; i < xs.size(); ++i) {
        krm_real16 sy = in(ys[i]), sx = in(xs[i]), r;
        __Qatan2(&r, &sy, &sx);
        EXPECT_TRUE(same(to_f128(r), f128(atan2l(ld(ys[i]), ld(xs[i]))))) << "atan2";
        __Qatn2d(&r, &sy, &sx);
        EXPECT_TRUE(same(to_f128(r), f128(atan2dl(ld(ys[i]), ld(xs[i]))))) << "atan2d";
    }
}

// The head and tail forms: the head is the rounded function, and head plus
// tail is closer to the exact value than the head alone (checked against
// libquadmath's value only where that is safe: the tail must stay under an
// ulp of the head).
TEST(InverseTrigEntries, HeadAndTailForms) {
    using namespace krm::ldmath;
    samples xs = mixed(21), ys = mixed(22);
    for (size_t i = 0; i < xs.size(); ++i) {
        long_double t;
        long_double h = mx_atanl(ld(xs[i]), &t);
        EXPECT_TRUE(same(f128(h), f128(atanl(ld(xs[i])))));
        EXPECT_LE(fabsq(f128(t)), fabsq(f128(h)) * 0x1p-112Q) << show(xs[i]);
        h = __k_atan2l(ld(ys[i]), ld(xs[i]), &t);
        EXPECT_TRUE(same(f128(h), f128(atan2l(ld(ys[i]), ld(xs[i])))));
        EXPECT_LE(fabsq(f128(t)), fabsq(f128(h)) * 0x1p-112Q) << show(ys[i]) << ", " << show(xs[i]);
    }
}

// --- On both builds: within 2 ulps of libquadmath (itself within about
// 1.4 ulps here), so that a build without MPFR still catches gross errors.

double ulps_apart(__float128 got, __float128 want) {
    if (isnanq(got) || isnanq(want)) return isnanq(got) && isnanq(want) ? 0 : INFINITY;
    if (got == want) return 0;
    __float128 ulp = nextafterq(fabsq(want), inf) - fabsq(want);
    return static_cast<double>(fabsq(got - want) / ulp);
}

TEST(InverseTrigEntries, NearLibquadmath) {
    samples xs = log_uniform(-130, 130, 400, 50), ys = log_uniform(-130, 130, 400, 51);
    samples us = uniform(-1.0Q, 1.0Q, 400, 52);
    for (__float128 d : log_uniform(-113, -1, 100, 53, false)) us.push_back(1 - d);
    struct {
        const char *what;
        void (*entry)(krm_real16 *, const krm_real16 *);
        __float128 (*oracle)(__float128);
        const samples &args;
    } ones[] = {
        {"atan", __Qatan, atanq, xs}, {"asin", __Qasin, asinq, us}, {"acos", __Qacos, acosq, us},
        {"cbrt", __Qcbrt, cbrtq, xs},
    };
    for (const auto &f : ones)
        for (__float128 x : f.args) {
            krm_real16 s = in(x), r;
            f.entry(&r, &s);
            EXPECT_LE(ulps_apart(to_f128(r), f.oracle(x)), 2.0) << f.what << "(" << show(x) << ")";
        }
    for (size_t i = 0; i < xs.size(); ++i) {
        __float128 x = i % 2 ? xs[i] : -xs[i];
        krm_real16 sy = in(ys[i]), sx = in(x), r;
        __Qatan2(&r, &sy, &sx);
        EXPECT_LE(ulps_apart(to_f128(r), atan2q(ys[i], x)), 2.0) << "atan2(" << show(ys[i]) << ", " << show(x) << ")";
        __float128 h = f128(krm::ldmath::hypotl(ld(ys[i]), ld(x)));
        EXPECT_LE(ulps_apart(h, hypotq(ys[i], x)), 2.0) << "hypot(" << show(ys[i]) << ", " << show(x) << ")";
    }
}

#if defined(KRM_TEST_MPFR)

// --- Accuracy against MPFR, beside libquadmath.

void hypot_entry(krm_real16 *r, const krm_real16 *x, const krm_real16 *y) {
    store(r, krm::ldmath::hypotl(load(x), load(y)));
}
void atan2pi_entry(krm_real16 *r, const krm_real16 *y, const krm_real16 *x) {
    store(r, krm::ldmath::atan2pil(load(y), load(x)));
}

int exact_atand(mpfr_ptr r, mpfr_srcptr x, mpfr_rnd_t rnd) { return mpfr_atanu(r, x, 360, rnd); }
int exact_asind(mpfr_ptr r, mpfr_srcptr x, mpfr_rnd_t rnd) { return mpfr_asinu(r, x, 360, rnd); }
int exact_acosd(mpfr_ptr r, mpfr_srcptr x, mpfr_rnd_t rnd) { return mpfr_acosu(r, x, 360, rnd); }
int exact_atan2d(mpfr_ptr r, mpfr_srcptr y, mpfr_srcptr x, mpfr_rnd_t rnd) { return mpfr_atan2u(r, y, x, 360, rnd); }

const double limit = 1.0;

void expect_accurate(const accuracy &a) {
    EXPECT_LE(a.ours, limit) << "worst at x = " << show(a.worst_x) << ", y = " << show(a.worst_y);
}

// Arguments for atan: both sides of 2^-57, the series' end at 2^-7, every
// binade of the table, breakpoints and the reciprocal range, huge and tiny.
samples atan_samples() {
    long n = scaled(1000);
    samples xs = log_uniform(-16494, 16383, n, 1);
    append(xs, log_uniform(-70, 20, 3 * n, 2));
    append(xs, uniform(-1.0Q, 1.0Q, n, 3));
    for (__float128 p : {0x1p-57Q, 0x1p-7Q, 0x1p7Q, 1.0Q, 0x1.08p-7Q, 0x1.04p0Q, 0x1.fcp6Q, 0x1.42p3Q})
        for (__float128 s : {p, -p}) append(xs, around(s, 20));
    return xs;
}

TEST(InverseTrigAccuracy, Atan) {
    expect_accurate(measure("atan", __Qatan, atanq, mpfr_atan, atan_samples()));
}

TEST(InverseTrigAccuracy, Atand) {
    expect_accurate(measure("atand", __Qatand, nullptr, exact_atand, atan_samples()));
}

// Pairs whose ratios cover the series, table and reciprocal ranges in every
// quadrant, with magnitudes far apart and subnormal.
void atan2_samples(samples &ys, samples &xs) {
    long n = scaled(1500);
    ys = log_uniform(-40, 40, n, 4);
    xs = log_uniform(-40, 40, n, 5);
    append(ys, log_uniform(-16494, 16383, n, 6));
    append(xs, log_uniform(-16494, 16383, n, 7));
    samples ratio = log_uniform(-12, 12, n, 8);
    samples base = log_uniform(-100, 100, n, 9);
    for (long i = 0; i < n; ++i) {
        ys.push_back(base[i] * ratio[i]);
        xs.push_back(i % 3 ? base[i] : -base[i]);
    }
    append(ys, uniform(-1.0Q, 1.0Q, n / 2, 10));
    append(xs, log_uniform(-2, 2, n / 2, 11));
}

TEST(InverseTrigAccuracy, Atan2) {
    samples ys, xs;
    atan2_samples(ys, xs);
    expect_accurate(measure("atan2", __Qatan2, atan2q, mpfr_atan2, ys, xs));
}

TEST(InverseTrigAccuracy, Atan2d) {
    samples ys, xs;
    atan2_samples(ys, xs);
    expect_accurate(measure("atan2d", __Qatn2d, nullptr, exact_atan2d, ys, xs));
}

TEST(InverseTrigAccuracy, Atan2pi) {
    samples ys, xs;
    atan2_samples(ys, xs);
    expect_accurate(measure("atan2pi", atan2pi_entry, nullptr, mpfr_atan2pi, ys, xs));
}

// [-1, 1] densely, near 0, 1/2 and near the ends where the root is small.
samples unit_samples() {
    long n = scaled(1500);
    samples xs = uniform(-1.0Q, 1.0Q, n, 12);
    append(xs, log_uniform(-130, 0, n, 13));
    samples near_one = log_uniform(-113, -1, n, 14, false);
    for (__float128 d : near_one) {
        xs.push_back(1 - d);
        xs.push_back(d - 1);
    }
    for (__float128 p : {0x1p-57Q, 0.5Q, 1.0Q, 0x1p-7Q})
        for (__float128 s : {p, -p}) append(xs, around(s, 15));
    return xs;
}

TEST(InverseTrigAccuracy, Asin) {
    expect_accurate(measure("asin", __Qasin, asinq, mpfr_asin, unit_samples()));
}

TEST(InverseTrigAccuracy, Acos) {
    expect_accurate(measure("acos", __Qacos, acosq, mpfr_acos, unit_samples()));
}

TEST(InverseTrigAccuracy, Asind) {
    expect_accurate(measure("asind", __Qasind, nullptr, exact_asind, unit_samples()));
}

TEST(InverseTrigAccuracy, Acosd) {
    expect_accurate(measure("acosd", __Qacosd, nullptr, exact_acosd, unit_samples()));
}

TEST(InverseTrigAccuracy, Cbrt) {
    long n = scaled(3000);
    samples xs = log_uniform(-16494, 16383, n, 15);
    append(xs, uniform(-8.0Q, 8.0Q, n, 16));
    for (__float128 p : {1.0Q, 2.0Q, 4.0Q, 8.0Q, 0x1p-16494Q, 0x1p-16382Q})
        for (__float128 s : {p, -p}) append(xs, around(s, 10));
    expect_accurate(measure("cbrt", __Qcbrt, cbrtq, mpfr_cbrt, xs));
}

TEST(InverseTrigAccuracy, Hypot) {
    long n = scaled(2000);
    samples xs = log_uniform(-60, 60, n, 17), ys = log_uniform(-60, 60, n, 18);
    append(xs, log_uniform(-16494, 16383, n, 19));
    append(ys, log_uniform(-16494, 16383, n, 20));
    // Close magnitudes, near the scaling thresholds and 115 binades apart.
    samples base = log_uniform(-16400, 16380, n, 21), ratio = log_uniform(-118, 0, n, 22);
    for (long i = 0; i < n; ++i) {
        xs.push_back(base[i]);
        ys.push_back(base[i] * ratio[i]);
    }
    samples big = log_uniform(8170, 8190, n / 4, 23), small = log_uniform(-8110, -8090, n / 4, 24);
    samples any = log_uniform(-30, 30, n / 4, 25);
    for (long i = 0; i < n / 4; ++i) {
        xs.push_back(big[i]);
        ys.push_back(big[i] * any[i]);
        xs.push_back(small[i]);
        ys.push_back(small[i] * any[i]);
    }
    expect_accurate(measure("hypot", hypot_entry, hypotq, mpfr_hypot, xs, ys));
}

// The head-and-tail forms against MPFR: head plus tail within 2^-117 of the
// exact value, relative; the head alone is at most about 2^-113 off.
TEST(InverseTrigAccuracy, HeadAndTailSums) {
    using namespace krm::ldmath;
    long n = scaled(1500);
    samples xs = log_uniform(-80, 80, n, 40), ys = log_uniform(-80, 80, n, 41), us = uniform(-1.0Q, 1.0Q, n, 42);
    samples near_one = log_uniform(-113, -1, n / 2, 43, false);
    for (__float128 d : near_one) us.push_back(1 - d);
    mpfr_t mx, my, exact, sum;
    mpfr_inits2(113, mx, my, (mpfr_ptr)0);
    mpfr_inits2(300, exact, sum, (mpfr_ptr)0);
    auto relative = [&](const long_double &h, const long_double &t) {
        mpfr_set_float128(sum, f128(h), MPFR_RNDN);
        mpfr_add_d(sum, sum, 0, MPFR_RNDN);
        mpfr_t tt;
        mpfr_init2(tt, 113);
        mpfr_set_float128(tt, f128(t), MPFR_RNDN);
        mpfr_add(sum, sum, tt, MPFR_RNDN);
        mpfr_clear(tt);
        mpfr_sub(sum, sum, exact, MPFR_RNDN);
        mpfr_div(sum, sum, exact, MPFR_RNDN);
        return fabs(mpfr_get_d(sum, MPFR_RNDN));
    };
    const double bound = 0x1p-117;
    double worst[4] = {0, 0, 0, 0};
    for (size_t i = 0; i < xs.size(); ++i) {
        long_double t, h;
        mpfr_set_float128(mx, xs[i], MPFR_RNDN);
        mpfr_set_float128(my, ys[i], MPFR_RNDN);
        h = mx_atanl(ld(xs[i]), &t);
        mpfr_atan(exact, mx, MPFR_RNDN);
        double e = relative(h, t);
        EXPECT_LE(e, bound) << "atan " << show(xs[i]);
        worst[0] = std::max(worst[0], e);
        __float128 x2 = i % 2 ? xs[i] : -xs[i];
        mpfr_set_float128(mx, x2, MPFR_RNDN);
        h = __k_atan2l(ld(ys[i]), ld(x2), &t);
        mpfr_atan2(exact, my, mx, MPFR_RNDN);
        e = relative(h, t);
        EXPECT_LE(e, bound) << "atan2 " << show(ys[i]) << ", " << show(x2);
        worst[1] = std::max(worst[1], e);
    }
    for (__float128 u : us) {
        long_double t, h;
        mpfr_set_float128(mx, u, MPFR_RNDN);
        h = __asin_hl(ld(u), &t);
        mpfr_asin(exact, mx, MPFR_RNDN);
        double e = relative(h, t);
        EXPECT_LE(e, bound) << "asin " << show(u);
        worst[2] = std::max(worst[2], e);
        h = __acos_hl(ld(u), &t);
        mpfr_acos(exact, mx, MPFR_RNDN);
        e = relative(h, t);
        EXPECT_LE(e, bound) << "acos " << show(u);
        worst[3] = std::max(worst[3], e);
    }
    if (getenv("KRM_ACCURACY_REPORT"))
        printf("head+tail relative error: atan 2^%.1f, atan2 2^%.1f, asin 2^%.1f, acos 2^%.1f\n", log2(worst[0]),
               log2(worst[1]), log2(worst[2]), log2(worst[3]));
    mpfr_clears(mx, my, exact, sum, (mpfr_ptr)0);
}

// In the directed roundings every operation rounds one way, and the exact
// two-sum and two-product steps are no longer exact; the results must stay
// close all the same.
TEST(InverseTrigAccuracy, DirectedRoundings) {
    long n = scaled(300);
    samples xs = log_uniform(-20, 10, n, 30), us = uniform(-1.0Q, 1.0Q, n, 31), ys = log_uniform(-20, 10, n, 32);
    samples near_one = log_uniform(-113, -1, n / 4, 33, false);
    for (__float128 d : near_one) us.push_back(1 - d);
    for (int k = 1; k < 4; ++k) {
        const direction &dir = directions[k];
        rounding_scope scope(dir.fe);
        struct {
            const char *what;
            accuracy a;
        } got[] = {
            {"atan", measure("atan", __Qatan, nullptr, mpfr_atan, xs)},
            {"atand", measure("atand", __Qatand, nullptr, exact_atand, xs)},
            {"asin", measure("asin", __Qasin, nullptr, mpfr_asin, us)},
            {"acos", measure("acos", __Qacos, nullptr, mpfr_acos, us)},
            {"acosd", measure("acosd", __Qacosd, nullptr, exact_acosd, us)},
            {"cbrt", measure("cbrt", __Qcbrt, nullptr, mpfr_cbrt, xs)},
            {"atan2", measure("atan2", __Qatan2, nullptr, mpfr_atan2, ys, xs)},
            {"hypot", measure("hypot", hypot_entry, nullptr, mpfr_hypot, ys, xs)},
        };
        for (const auto &g : got)
            EXPECT_LE(g.a.ours, 1.5) << g.what << " rounding " << dir.name << ", worst at " << show(g.a.worst_x)
                                     << ", " << show(g.a.worst_y);
    }
}

#endif  // KRM_TEST_MPFR

}  // namespace

namespace {

// cbrt and hypot scale by more than 16382 binades downwards (the greatest
// number to [1, 2), a result back to the subnormals): __scalbnl's two-step
// path, against libquadmath's ldexpq.
TEST(InverseTrigSupport, ScalbnFarDown) {
    const struct {
        __float128 x;
        int n;
    } cases[] = {
        {0x1p16383Q, -16383}, {FLT128_MAX, -16383}, {1.0Q, -16390}, {1.5Q, -16494}, {0x1.8p0Q, -16495},
        {0x1p16383Q, -32765}, {3.0Q, -16383},        {-1.25Q, -16400}, {0x1p-100Q, 16483},
    };
    for (const auto &c : cases) {
        krm_real16 x = from_f128(c.x), r;
        int32_t n = c.n;
        __Qscalbn(&r, &x, &n);
        __float128 want = ldexpq(c.x, c.n);
        EXPECT_TRUE(memcmp(&r, &want, 16) == 0) << hex(x) << " * 2^" << c.n << ": got " << hex(r);
    }
}

}  // namespace
