// The REAL(16) trigonometric family: sin, cos, tan, sincos, the functions in
// degrees and sincospi. Special values and the exact results in degrees on
// both builds; accuracy against MPFR at 256 bits (x86-64 only), next to
// libquadmath on the same arguments, over the ranges where the kernels
// change method, near multiples of pi/2 and for huge arguments.

#include <gtest/gtest.h>

#include <math.h>
#include <quadmath.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <vector>

#include "krm/quad_functions.h"
#include "quad/function_accuracy.h"
#include "quad/ldmath.h"
#include "quad/quad_support.h"

namespace {

using namespace quadtest;
using krm::ldmath::load;
using krm::ldmath::store;

using entry1 = void (*)(krm_real16 *, const krm_real16 *);

krm_real16 q(__float128 f) { return from_f128(f); }

__float128 call(entry1 f, __float128 x) {
    krm_real16 in = q(x), out;
    f(&out, &in);
    return to_f128(out);
}

bool same(__float128 a, __float128 b) { return memcmp(&a, &b, 16) == 0; }

// The sine and cosine parts of the exported sincos, and sincospil's, as
// one-argument entries.
void sincos_sine(krm_real16 *r, const krm_real16 *x) {
    krm_real16 c;
    __Qsincos(r, &c, x);
}
void sincos_cosine(krm_real16 *r, const krm_real16 *x) {
    krm_real16 s;
    __Qsincos(&s, r, x);
}
void sinpi_entry(krm_real16 *r, const krm_real16 *x) {
    long_double s, c;
    krm::ldmath::sincospil(load(x), &s, &c);
    store(r, s);
}
void cospi_entry(krm_real16 *r, const krm_real16 *x) {
    long_double s, c;
    krm::ldmath::sincospil(load(x), &s, &c);
    store(r, c);
}
void sincosd_sine(krm_real16 *r, const krm_real16 *x) {
    long_double s, c;
    krm::ldmath::sincosdl(load(x), &s, &c);
    store(r, s);
}
void sincosd_cosine(krm_real16 *r, const krm_real16 *x) {
    long_double s, c;
    krm::ldmath::sincosdl(load(x), &s, &c);
    store(r, c);
}

const __float128 kInf = __builtin_infq();
const __float128 kNaN = __builtin_nanq("");

// --- Special values -----------------------------------------------------------

struct special_case {
    const char *function;
    entry1 f;
    __float128 x;
    __float128 expected;  // a NaN: any NaN
};

void PrintTo(const special_case &c, std::ostream *os) { *os << c.function; }

// Exact results; the signs of the zeros and infinities in degrees are
// MPFR's (sinu, cosu, tanu with u = 360; sinpi, cospi). 45 * 2^103 is a
// multiple of 360.
const special_case kSpecial[] = {
    {"sin", __Qsin, kNaN, kNaN},         {"sin", __Qsin, kInf, kNaN},
    {"sin", __Qsin, -kInf, kNaN},        {"sin", __Qsin, 0.0Q, 0.0Q},
    {"sin", __Qsin, -0.0Q, -0.0Q},       {"cos", __Qcos, kNaN, kNaN},
    {"cos", __Qcos, kInf, kNaN},         {"cos", __Qcos, -kInf, kNaN},
    {"cos", __Qcos, 0.0Q, 1.0Q},         {"cos", __Qcos, -0.0Q, 1.0Q},
    {"tan", __Qtan, kNaN, kNaN},         {"tan", __Qtan, kInf, kNaN},
    {"tan", __Qtan, -kInf, kNaN},        {"tan", __Qtan, 0.0Q, 0.0Q},
    {"tan", __Qtan, -0.0Q, -0.0Q},       {"sind", __Qsind, kNaN, kNaN},
    {"sind", __Qsind, kInf, kNaN},       {"sind", __Qsind, -kInf, kNaN},
    {"sind", __Qsind, 0.0Q, 0.0Q},       {"sind", __Qsind, -0.0Q, -0.0Q},
    {"sind", __Qsind, 90.0Q, 1.0Q},      {"sind", __Qsind, 180.0Q, 0.0Q},
    {"sind", __Qsind, -180.0Q, -0.0Q},   {"sind", __Qsind, 270.0Q, -1.0Q},
    {"sind", __Qsind, -90.0Q, -1.0Q},    {"sind", __Qsind, 360.0Q, 0.0Q},
    {"sind", __Qsind, -360.0Q, -0.0Q},   {"sind", __Qsind, 540.0Q, 0.0Q},
    {"sind", __Qsind, 0x1.68p108Q, 0.0Q}, {"sind", __Qsind, -0x1.68p108Q, -0.0Q},
    {"cosd", __Qcosd, kNaN, kNaN},       {"cosd", __Qcosd, kInf, kNaN},
    {"cosd", __Qcosd, 0.0Q, 1.0Q},       {"cosd", __Qcosd, -0.0Q, 1.0Q},
    {"cosd", __Qcosd, 90.0Q, 0.0Q},      {"cosd", __Qcosd, -90.0Q, 0.0Q},
    {"cosd", __Qcosd, 180.0Q, -1.0Q},    {"cosd", __Qcosd, 270.0Q, 0.0Q},
    {"cosd", __Qcosd, 360.0Q, 1.0Q},     {"cosd", __Qcosd, 0x1.68p108Q, 1.0Q},
    {"tand", __Qtand, kNaN, kNaN},       {"tand", __Qtand, -kInf, kNaN},
    {"tand", __Qtand, 0.0Q, 0.0Q},       {"tand", __Qtand, -0.0Q, -0.0Q},
    {"tand", __Qtand, 45.0Q, 1.0Q},      {"tand", __Qtand, -45.0Q, -1.0Q},
    {"tand", __Qtand, 135.0Q, -1.0Q},    {"tand", __Qtand, 225.0Q, 1.0Q},
    {"tand", __Qtand, 90.0Q, kInf},      {"tand", __Qtand, 270.0Q, -kInf},
    {"tand", __Qtand, -90.0Q, -kInf},    {"tand", __Qtand, 180.0Q, -0.0Q},
    {"tand", __Qtand, -180.0Q, 0.0Q},    {"tand", __Qtand, 360.0Q, 0.0Q},
    {"tand", __Qtand, -0x1.68p108Q, -0.0Q},
    {"sincos.sin", sincos_sine, kInf, kNaN},     {"sincos.cos", sincos_cosine, kNaN, kNaN},
    {"sincos.sin", sincos_sine, -0.0Q, -0.0Q},   {"sincos.cos", sincos_cosine, -0.0Q, 1.0Q},
    {"sincosd.sin", sincosd_sine, 180.0Q, 0.0Q}, {"sincosd.cos", sincosd_cosine, 90.0Q, 0.0Q},
    {"sincosd.sin", sincosd_sine, -540.0Q, -0.0Q}, {"sincosd.cos", sincosd_cosine, 270.0Q, 0.0Q},
    {"sincosd.sin", sincosd_sine, 270.0Q, -1.0Q},  {"sincosd.cos", sincosd_cosine, 180.0Q, -1.0Q},
    {"sinpi", sinpi_entry, 1.0Q, 0.0Q},          {"sinpi", sinpi_entry, -1.0Q, -0.0Q},
    {"sinpi", sinpi_entry, 0.5Q, 1.0Q},          {"sinpi", sinpi_entry, -1.5Q, 1.0Q},
    {"sinpi", sinpi_entry, 0x1p115Q, 0.0Q},  {"sinpi", sinpi_entry, -0x1p115Q, -0.0Q},      {"sinpi", sinpi_entry, -kInf, kNaN},
    {"cospi", cospi_entry, 0.5Q, 0.0Q},          {"cospi", cospi_entry, 1.0Q, -1.0Q},
    {"cospi", cospi_entry, -2.5Q, 0.0Q},         {"sinpi", sinpi_entry, -2.5Q, -1.0Q},
    {"cospi", cospi_entry, -1.0Q, -1.0Q},        {"cospi", cospi_entry, -0x1p115Q, 1.0Q},         {"cospi", cospi_entry, kNaN, kNaN},
};

class TrigSpecial : public ::testing::TestWithParam<special_case> {};

TEST_P(TrigSpecial, ExactResult) {
    const special_case &c = GetParam();
    const __float128 got = call(c.f, c.x);
    if (isnanq(c.expected)) {
        EXPECT_TRUE(isnanq(got)) << c.function << " gave " << hex(q(got));
    } else {
        EXPECT_TRUE(same(got, c.expected)) << c.function << "(" << hex(q(c.x)) << ") gave " << hex(q(got))
                                           << ", expected " << hex(q(c.expected));
    }
}

INSTANTIATE_TEST_SUITE_P(Trig, TrigSpecial, ::testing::ValuesIn(kSpecial));

// --- Identities that hold bit for bit ----------------------------------------

samples identity_arguments() {
    samples xs = uniform(-4, 4, 300, 11);
    append(xs, log_uniform(-80, 40, 300, 12));
    append(xs, log_uniform(40, 16384, 100, 13));
    append(xs, around(0.15625Q, 3));
    append(xs, around(-0.15625Q, 3));
    return xs;
}

TEST(TrigEntries, EntriesEqualTheClassOrderFunctions) {
    using namespace krm::ldmath;
    for (__float128 x : identity_arguments()) {
        const krm_real16 in = q(x);
        const long_double lx = load(&in);
        krm_real16 want;
        store(&want, sinl(lx));
        EXPECT_TRUE(same_bits(q(call(__Qsin, x)), want)) << hex(q(x));
        store(&want, cosl(lx));
        EXPECT_TRUE(same_bits(q(call(__Qcos, x)), want)) << hex(q(x));
        store(&want, tanl(lx));
        EXPECT_TRUE(same_bits(q(call(__Qtan, x)), want)) << hex(q(x));
        store(&want, sindl(lx));
        EXPECT_TRUE(same_bits(q(call(__Qsind, x)), want)) << hex(q(x));
        store(&want, cosdl(lx));
        EXPECT_TRUE(same_bits(q(call(__Qcosd, x)), want)) << hex(q(x));
        store(&want, tandl(lx));
        EXPECT_TRUE(same_bits(q(call(__Qtand, x)), want)) << hex(q(x));
    }
}

// sincos shares the reduction and the table with sin and cos, and comes out
// the same to the last bit.
TEST(TrigEntries, SincosAgreesWithSinAndCos) {
    for (__float128 x : identity_arguments()) {
        EXPECT_TRUE(same(call(sincos_sine, x), call(__Qsin, x))) << hex(q(x));
        EXPECT_TRUE(same(call(sincos_cosine, x), call(__Qcos, x))) << hex(q(x));
        EXPECT_TRUE(same(call(sincosd_sine, x), call(__Qsind, x))) << hex(q(x));
        EXPECT_TRUE(same(call(sincosd_cosine, x), call(__Qcosd, x))) << hex(q(x));
    }
}

TEST(TrigEntries, OddAndEven) {
    for (__float128 x : identity_arguments()) {
        if (x < 0) continue;
        EXPECT_TRUE(same(call(__Qsin, -x), -call(__Qsin, x))) << hex(q(x));
        EXPECT_TRUE(same(call(__Qcos, -x), call(__Qcos, x))) << hex(q(x));
        EXPECT_TRUE(same(call(__Qtan, -x), -call(__Qtan, x))) << hex(q(x));
    }
}

// --- Edge cases ----------------------------------------------------------------

TEST(TrigEdges, TinyArgumentIsItsOwnSineAndTangent) {
    const __float128 xs[] = {0x1p-60Q, -0x1p-60Q, 0x1.fffffffffffffffffffffffffffp-58Q, 0x1p-16494Q,
                             0x1p-16382Q, 0x1.23456789abcdefp-100Q};
    for (__float128 x : xs) {
        EXPECT_TRUE(same(call(__Qsin, x), x)) << hex(q(x));
        EXPECT_TRUE(same(call(__Qtan, x), x)) << hex(q(x));
        EXPECT_TRUE(same(call(__Qcos, x), 1.0Q)) << hex(q(x));
    }
}

// The first breakpoint of the table method: the table's value at 0.15625 and
// the polynomial's just below it meet without a step. sin's slope there is
// cos(0.15625), so neighbours differ by cos(0.15625) ulps of the argument,
// and never decrease.
TEST(TrigEdges, SineIsContinuousAtTheFirstBreakpoint) {
    samples xs = around(0.15625Q, 40);
    std::sort(xs.begin(), xs.end());
    for (size_t i = 1; i < xs.size(); ++i) {
        const __float128 a = call(__Qsin, xs[i - 1]), b = call(__Qsin, xs[i]);
        EXPECT_LE(a, b) << hex(q(xs[i]));
        // Neighbouring arguments 2^-115 apart; sines in the same binade.
        EXPECT_LE(b - a, 0x1p-115Q) << hex(q(xs[i]));
        EXPECT_TRUE(fabsq(call(__Qcos, xs[i]) - call(__Qcos, xs[i - 1])) <= 0x1p-113Q) << hex(q(xs[i]));
    }
}

int count(long n) { return static_cast<int>(scaled(n)); }

// --- Against libquadmath, on both builds --------------------------------------

// The distance from ours to libquadmath's in units of the last place of
// libquadmath's result. Ours is within 0.55 ulp of the exact result and
// libquadmath within 1.34 on the MPFR samples, so two units is the most
// that a sound result can differ; the i386 build, which has no MPFR, is
// checked this way.
double ulps_apart(__float128 ours, __float128 theirs) {
    if (isnanq(ours) || isnanq(theirs)) return isnanq(ours) && isnanq(theirs) ? 0 : INFINITY;
    int e = ilogbq(theirs);
    if (theirs == 0 || e < -16382) e = -16382;
    return static_cast<double>(fabsq(ours - theirs) / ldexpq(1, e - 112));
}

TEST(TrigAgainstLibquadmath, WithinTwoUnits) {
    samples xs = uniform(-0.8Q, 0.8Q, count(2000), 71);
    append(xs, log_uniform(-120, 60, count(2000), 72));
    append(xs, log_uniform(60, 16384, count(300), 73));
    for (int k = 1; k < 200; k += 7) append(xs, around(k * M_PIq / 2, 2));
    struct fn {
        const char *name;
        entry1 ours;
        __float128 (*theirs)(__float128);
    } fns[] = {{"sin", __Qsin, sinq}, {"cos", __Qcos, cosq}, {"tan", __Qtan, tanq}};
    for (const fn &f : fns) {
        double worst = 0;
        __float128 worst_x = 0;
        for (__float128 x : xs) {
            const double d = ulps_apart(call(f.ours, x), f.theirs(x));
            if (d > worst) {
                worst = d;
                worst_x = x;
            }
        }
        EXPECT_LE(worst, 2.0) << f.name << " at " << hex(q(worst_x));
    }
}

#if defined(KRM_TEST_MPFR)

// --- Accuracy against MPFR ---------------------------------------------------------

int sind_exact(mpfr_ptr r, mpfr_srcptr x, mpfr_rnd_t rnd) { return mpfr_sinu(r, x, 360, rnd); }
int cosd_exact(mpfr_ptr r, mpfr_srcptr x, mpfr_rnd_t rnd) { return mpfr_cosu(r, x, 360, rnd); }
int tand_exact(mpfr_ptr r, mpfr_srcptr x, mpfr_rnd_t rnd) { return mpfr_tanu(r, x, 360, rnd); }

// The binary128 numbers nearest to k pi/2, for the given k, and a few
// neighbours of each: the arguments whose reduction cancels most.
samples near_multiples_of_half_pi(const std::vector<long long> &ks, int neighbours) {
    samples out;
    mpfr_t m;
    mpfr_init2(m, 400);
    for (long long k : ks) {
        mpfr_const_pi(m, MPFR_RNDN);
        mpfr_mul_si(m, m, static_cast<long>(k), MPFR_RNDN);
        mpfr_div_2ui(m, m, 1, MPFR_RNDN);
        append(out, around(mpfr_get_float128(m, MPFR_RNDN), neighbours));
    }
    mpfr_clear(m);
    return out;
}

std::vector<long long> multiples() {
    std::vector<long long> ks;
    for (long long k = 1; k <= 64; ++k) ks.push_back(k);
    operands r(21);
    for (int i = 0; i < count(200); ++i) ks.push_back(1 + static_cast<long long>(r.bits() % (1ull << 25)));
    for (int i = 0; i < count(60); ++i) ks.push_back(static_cast<long long>(r.bits() >> 2));
    // Either side of 2^48, where the reduction in pieces of pi/2 hands over
    // to the whole-number one.
    const long long edge[] = {(1LL << 47) - 1, (1LL << 47) + 1, 179000000000000LL, 179192535600707LL,
                              179192535600708LL, 179192535600709LL, 180000000000001LL, (1LL << 48) + 3};
    for (long long k : edge) ks.push_back(k);
    for (int i = 0; i < 40; ++i) ks.push_back(-ks[static_cast<size_t>(i) * 3]);
    return ks;
}

// The arguments of the whole-number reduction's own hard cases.
struct reduction_case {
    const char *name;
    uint32_t pieces[5];
    int count;
    int e0;
    int quotient_mod_8;
    double remainder[3];
};
const reduction_case kReductionCases[] = {
#include "platform/rem_pio2m_cases.inc"
};

samples reduction_arguments() {
    samples out;
    for (const reduction_case &c : kReductionCases) {
        __float128 x = 0;
        for (int i = 0; i < c.count; ++i) x += ldexpq(static_cast<__float128>(c.pieces[i]), c.e0 - 24 * i);
        if (finiteq(x)) {
            out.push_back(x);
            out.push_back(-x);
        }
    }
    return out;
}

// Where the kernels change method: the thresholds of the polynomials, every
// breakpoint of the table, pi/4, and 2^48 where the reduction changes.
samples kernel_boundaries() {
    samples out;
    const __float128 edges[] = {0x1p-57Q, 0x1p-7Q, 0.15625Q, 0.78539816339744830961566084581987572Q,
                                0x1.921fb54442d18469898cc51701b8p-1Q, 0x1p48Q, 0x1p-8Q};
    for (__float128 e : edges) append(out, around(e, 20));
    for (int i = 0; i < 75; ++i) {
        krm_real16 t = words(0x3FFC4000u + (static_cast<uint32_t>(i) << 11), 0, 0, 0);
        append(out, around(to_f128(t), 2));
        // Half-way between breakpoints, where s is largest.
        krm_real16 m = words(0x3FFC4000u + (static_cast<uint32_t>(i) << 11) + 1024u, 0, 0, 0);
        append(out, around(to_f128(m), 2));
    }
    return out;
}

samples radian_arguments() {
    samples xs = uniform(-0.8Q, 0.8Q, count(4000), 1);
    append(xs, log_uniform(-16494, -57, count(300), 2));
    append(xs, log_uniform(-60, 0, count(2000), 3));
    append(xs, uniform(-0.15625Q, 0.15625Q, count(1000), 4));
    append(xs, kernel_boundaries());
    append(xs, uniform(-100, 100, count(2000), 5));
    append(xs, log_uniform(0, 24, count(2000), 6));
    append(xs, log_uniform(24, 16384, count(1500), 7));
    append(xs, near_multiples_of_half_pi(multiples(), 2));
    append(xs, reduction_arguments());
    append(xs, around(1e4000Q, 5));
    append(xs, around(-1e4000Q, 5));
    append(xs, around(FLT128_MAX, 3));
    return xs;
}

void expect_accurate(const accuracy &a, const char *name) {
    EXPECT_LE(a.ours, 1.0) << name << ": worst at " << hex(q(a.worst_x)) << " (" << a.count << " samples)";
    EXPECT_GT(a.count, 0);
}

TEST(TrigAccuracy, Sin) {
    const samples xs = radian_arguments();
    expect_accurate(measure("sin", __Qsin, sinq, mpfr_sin, xs), "sin");
}

TEST(TrigAccuracy, Cos) {
    const samples xs = radian_arguments();
    expect_accurate(measure("cos", __Qcos, cosq, mpfr_cos, xs), "cos");
}

TEST(TrigAccuracy, Tan) {
    samples xs = radian_arguments();
    // Near the poles: tan's odd quadrants, -1/tan of a small reduced value.
    append(xs, near_multiples_of_half_pi({1, 3, 5, -1, 101, 1001, 1000001}, 30));
    expect_accurate(measure("tan", __Qtan, tanq, mpfr_tan, xs), "tan");
}

TEST(TrigAccuracy, Sincos) {
    samples xs = uniform(-0.8Q, 0.8Q, count(1000), 31);
    append(xs, log_uniform(-20, 30, count(1000), 32));
    append(xs, kernel_boundaries());
    expect_accurate(measure("sincos.sin", sincos_sine, sinq, mpfr_sin, xs), "sincos.sin");
    expect_accurate(measure("sincos.cos", sincos_cosine, cosq, mpfr_cos, xs), "sincos.cos");
}

samples degree_arguments() {
    samples xs = uniform(-45, 45, count(2000), 41);
    append(xs, uniform(-720, 720, count(2000), 42));
    append(xs, log_uniform(-16494, 0, count(500), 43));
    append(xs, log_uniform(0, 16384, count(1500), 44));
    const __float128 edges[] = {45, 90, 135, 180, 270, 360, 8.953125Q, 1e6Q, 0x1p112Q};
    for (__float128 e : edges) {
        append(xs, around(e, 10));
        append(xs, around(-e, 10));
    }
    return xs;
}

TEST(TrigAccuracy, Sind) {
    expect_accurate(measure("sind", __Qsind, nullptr, sind_exact, degree_arguments()), "sind");
}

TEST(TrigAccuracy, Cosd) {
    expect_accurate(measure("cosd", __Qcosd, nullptr, cosd_exact, degree_arguments()), "cosd");
}

TEST(TrigAccuracy, Tand) {
    expect_accurate(measure("tand", __Qtand, nullptr, tand_exact, degree_arguments()), "tand");
}

TEST(TrigAccuracy, Sincospi) {
    samples xs = uniform(-2, 2, count(2000), 51);
    append(xs, log_uniform(-16494, 0, count(500), 52));
    append(xs, log_uniform(0, 120, count(1000), 53));
    const __float128 edges[] = {0.25Q, 0.5Q, 1, 1.5Q, 2, 0x1p-14Q};
    for (__float128 e : edges) {
        append(xs, around(e, 10));
        append(xs, around(-e, 10));
    }
    expect_accurate(measure("sincospi.sin", sinpi_entry, nullptr, mpfr_sinpi, xs), "sincospi.sin");
    expect_accurate(measure("sincospi.cos", cospi_entry, nullptr, mpfr_cospi, xs), "sincospi.cos");
}

// The functions follow the rounding direction only through the operations
// they are made of: in every direction they stay within about an ulp, with
// no step at the kernels' thresholds and breakpoints.
TEST(TrigAccuracy, EveryRoundingDirectionStaysClose) {
    samples xs = uniform(-0.8Q, 0.8Q, count(300), 61);
    append(xs, log_uniform(-20, 60, count(300), 62));
    append(xs, kernel_boundaries());
    append(xs, near_multiples_of_half_pi({1, 2, 3, 1000001, 123456789012LL}, 2));
    samples ds = uniform(-720, 720, count(300), 63);
    for (const direction &d : directions) {
        accuracy s, c, t, sd, sp;
        {
            rounding_scope scope(d.fe);
            s = measure("sin", __Qsin, nullptr, mpfr_sin, xs);
            c = measure("cos", __Qcos, nullptr, mpfr_cos, xs);
            t = measure("tan", __Qtan, nullptr, mpfr_tan, xs);
            sd = measure("sind", __Qsind, nullptr, sind_exact, ds);
            sp = measure("sincospi.sin", sinpi_entry, nullptr, mpfr_sinpi, xs);
        }
        EXPECT_LE(s.ours, 1.5) << d.name << " sin at " << hex(q(s.worst_x));
        EXPECT_LE(c.ours, 1.5) << d.name << " cos at " << hex(q(c.worst_x));
        EXPECT_LE(t.ours, 1.5) << d.name << " tan at " << hex(q(t.worst_x));
        EXPECT_LE(sd.ours, 1.5) << d.name << " sind at " << hex(q(sd.worst_x));
        EXPECT_LE(sp.ours, 1.5) << d.name << " sincospi.sin at " << hex(q(sp.worst_x));
    }
}

// sin and cos of 1e4000 reduce through the whole-number reduction: right to
// the last bit, that is within half an ulp and a little.
TEST(TrigAccuracy, HugeArgumentToTheLastBits) {
    const samples xs = {1e4000Q, -1e4000Q};
    EXPECT_LE(measure("sin 1e4000", __Qsin, nullptr, mpfr_sin, xs).ours, 0.55);
    EXPECT_LE(measure("cos 1e4000", __Qcos, nullptr, mpfr_cos, xs).ours, 0.55);
}

#endif  // KRM_TEST_MPFR

}  // namespace
