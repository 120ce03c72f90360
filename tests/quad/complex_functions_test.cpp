// The COMPLEX(16) functions through their exported entries: the special
// values of the C99 annex, the exact cases, and the accuracy of each
// component against MPFR at 256 bits, beside libquadmath's complex
// functions on the same arguments.
#include <gtest/gtest.h>

#include <complex.h>
#include <math.h>
#include <quadmath.h>

#include <functional>
#include <string>

#include "krm/quad_functions.h"
#include "quad/function_accuracy.h"
#include "quad/ldmath.h"
#include "quad/quad_support.h"

using namespace quadtest;

namespace {

krm_complex16 c16(__float128 re, __float128 im) { return krm_complex16{from_f128(re), from_f128(im)}; }

const __float128 inf = HUGE_VALQ;
const __float128 nan = nanq("");

std::string show(const krm_complex16 &z) { return "(" + hex(z.re) + ", " + hex(z.im) + ")"; }

// Whether a part is as expected: NaN for NaN (either sign), else the same
// bits, so that the signs of zeros and infinities count.
bool part_is(const krm_real16 &got, __float128 expected) {
    if (isnanq(expected)) return is_nan(got);
    return same_bits(got, from_f128(expected));
}

// The same value, a zero of either sign matching a zero: for the products of
// whole powers, whose zero parts take their signs from the order of the
// products.
bool value_is(const krm_real16 &got, __float128 expected) { return to_f128(got) == expected; }

using entry1 = void (*)(krm_complex16 *, const krm_complex16 *);

struct special_case {
    const char *name;
    entry1 f;
    __float128 x, y;
    __float128 re, im;
    bool any_sign_re = false, any_sign_im = false;  // where the annex leaves the sign open
};

bool part_matches(const krm_real16 &got, __float128 expected, bool any_sign) {
    if (!any_sign) return part_is(got, expected);
    krm_real16 a = got;
    a.word[3] &= 0x7FFFFFFFu;
    return part_is(a, fabsq(expected));
}

TEST(QuadComplex, SpecialValuesOfTheAnnex) {
    const special_case cases[] = {
        // exp
        {"exp", __Wexp, 0, 0, 1, 0},
        {"exp", __Wexp, -0.0Q, -0.0Q, 1, -0.0Q},
        {"exp", __Wexp, 2, 0, expq(2), 0},
        {"exp", __Wexp, 1, inf, nan, nan},
        {"exp", __Wexp, 1, nan, nan, nan},
        {"exp", __Wexp, inf, 0, inf, 0},
        {"exp", __Wexp, -inf, 1, 0.0Q * cosq(1), 0.0Q * sinq(1)},
        {"exp", __Wexp, -inf, 3, -0.0Q, 0.0Q},  // +0 cis(3): cos 3 < 0
        {"exp", __Wexp, inf, 3, -inf, inf},
        {"exp", __Wexp, -inf, inf, 0, 0, true, true},
        {"exp", __Wexp, inf, inf, inf, nan, true, false},
        {"exp", __Wexp, -inf, nan, 0, 0, true, true},
        {"exp", __Wexp, inf, nan, inf, nan, true, false},
        {"exp", __Wexp, nan, 0, nan, 0},
        {"exp", __Wexp, nan, 1, nan, nan},
        // log
        {"log", __Wlog, 1, 0, 0, 0},
        {"log", __Wlog, -0.0Q, 0, -inf, M_PIq},
        {"log", __Wlog, 0, 0, -inf, 0},
        {"log", __Wlog, 0, -0.0Q, -inf, -0.0Q},
        {"log", __Wlog, 2, inf, inf, M_PI_2q},
        {"log", __Wlog, 2, nan, nan, nan},
        {"log", __Wlog, -inf, 2, inf, M_PIq},
        {"log", __Wlog, inf, 2, inf, 0},
        {"log", __Wlog, -inf, inf, inf, 3 * M_PI_4q},
        {"log", __Wlog, inf, inf, inf, M_PI_4q},
        {"log", __Wlog, inf, nan, inf, nan},
        {"log", __Wlog, nan, inf, inf, nan},
        {"log", __Wlog, nan, 2, nan, nan},
        // sqrt
        {"sqrt", __Wsqrt, 0, 0, 0, 0},
        {"sqrt", __Wsqrt, -0.0Q, -0.0Q, 0, -0.0Q},
        {"sqrt", __Wsqrt, -4, 0, 0, 2},
        {"sqrt", __Wsqrt, -4, -0.0Q, 0, -2},
        {"sqrt", __Wsqrt, 4, -0.0Q, 2, -0.0Q},
        {"sqrt", __Wsqrt, 0, 8, 2, 2},
        {"sqrt", __Wsqrt, 0, -8, 2, -2},
        {"sqrt", __Wsqrt, 3, inf, inf, inf},
        {"sqrt", __Wsqrt, nan, -inf, inf, -inf},
        {"sqrt", __Wsqrt, 3, nan, nan, nan},
        {"sqrt", __Wsqrt, -inf, 2, 0, inf},
        {"sqrt", __Wsqrt, -inf, -2, 0, -inf},
        {"sqrt", __Wsqrt, inf, 2, inf, 0},
        {"sqrt", __Wsqrt, inf, -2, inf, -0.0Q},
        {"sqrt", __Wsqrt, -inf, nan, nan, inf, false, true},
        {"sqrt", __Wsqrt, inf, nan, inf, nan},
        {"sqrt", __Wsqrt, nan, 2, nan, nan},
        // cos(z) = cosh(iz): the rows of cosh at iz
        {"cos", __Wcos, 0, 0, 1, -0.0Q},
        {"cos", __Wcos, 0, -0.0Q, 1, 0},
        {"cos", __Wcos, inf, 0, nan, 0, false, true},
        {"cos", __Wcos, nan, 0, nan, 0, false, true},
        {"cos", __Wcos, inf, 2, nan, nan},
        {"cos", __Wcos, 0, inf, inf, -0.0Q, false, true},
        {"cos", __Wcos, 2, inf, -cosq(2) * -inf, sinq(2) * -inf},  // inf cis(-2)... cosh(-inf + 2i)
        {"cos", __Wcos, inf, inf, inf, nan, true, false},
        {"cos", __Wcos, nan, inf, inf, nan, true, false},
        {"cos", __Wcos, nan, nan, nan, nan},
        // sin(z) = -i sinh(iz)
        {"sin", __Wsin, 0, 0, 0, 0},
        {"sin", __Wsin, -0.0Q, 0, -0.0Q, 0},
        {"sin", __Wsin, 0, inf, 0, inf, false, false},
        {"sin", __Wsin, inf, 0, nan, 0, false, true},
        {"sin", __Wsin, nan, 0, nan, 0},
        {"sin", __Wsin, 2, inf, sinq(2) * inf, cosq(2) * inf},
        {"sin", __Wsin, inf, inf, nan, inf, false, true},
        {"sin", __Wsin, nan, nan, nan, nan},
    };
    for (const auto &c : cases) {
        krm_complex16 z = c16(c.x, c.y), r;
        c.f(&r, &z);
        EXPECT_TRUE(part_matches(r.re, c.re, c.any_sign_re) && part_matches(r.im, c.im, c.any_sign_im))
            << c.name << show(z) << " gave " << show(r) << ", not " << show(c16(c.re, c.im));
    }
}

TEST(QuadComplex, ExactCases) {
    krm_complex16 z = c16(3, 4), r;
    krm_real16 a;
    __Wabs(&a, &z);
    EXPECT_TRUE(same_bits(a, from_f128(5))) << hex(a);
    __Qcnjg(&r, &z);
    EXPECT_TRUE(same_bits(r.re, from_f128(3)) && same_bits(r.im, from_f128(-4))) << show(r);
    __Wsqrt(&r, &(z = c16(-7, 24)));  // (3 + 4i)^2
    EXPECT_TRUE(same_bits(r.re, from_f128(3)) && same_bits(r.im, from_f128(4))) << show(r);

    struct {
        __float128 x, y;
        int n;
        __float128 re, im;
    } powers[] = {
        {0, 1, 2, -1, 0},  {0, 1, 3, 0, -1}, {1, 1, 2, 0, 2},   {1, 1, -2, 0, -0.5Q},
        {2, 0, 10, 1024, 0}, {-2, 0, 3, -8, 0}, {1, 2, 0, 1, 0}, {1, 1, 8, 16, 0},
    };
    for (const auto &p : powers) {
        krm_complex16 b = c16(p.x, p.y);
        __Wpowi(&r, &b, &p.n);
        EXPECT_TRUE(value_is(r.re, p.re) && value_is(r.im, p.im)) << show(b) << " ** " << p.n << " gave " << show(r);
        int64_t nl = p.n;
        __Wpowl(&r, &b, &nl);
        EXPECT_TRUE(value_is(r.re, p.re) && value_is(r.im, p.im)) << show(b) << " ** " << nl << "_8 gave " << show(r);
        if (p.n >= 0) {
            uint64_t nu = p.n;
            __Wpowu8(&r, &b, &nu);
            EXPECT_TRUE(value_is(r.re, p.re) && value_is(r.im, p.im)) << show(b) << " ** " << nu << "u gave " << show(r);
        }
        krm_complex16 w = c16(p.n, 0);
        __Wpow(&r, &b, &w);
        EXPECT_TRUE(value_is(r.re, p.re) && value_is(r.im, p.im)) << show(b) << " ** " << show(w) << " gave " << show(r);
    }
    // A negative real base to a whole power through the general path keeps an
    // exact zero imaginary part, the angle being a whole multiple of pi.
    krm_complex16 b = c16(-2, 0), w = c16(101, 0), big;
    __Wpow(&big, &b, &w);
    EXPECT_TRUE(same_bits(big.re, from_f128(-ldexpq(1, 101)))) << show(big);
    EXPECT_TRUE(__Qiszero(&big.im)) << show(big);
    __Wcbrt(&r, &(z = c16(0, 0)));
    EXPECT_TRUE(same_bits(r.re, from_f128(0)) && same_bits(r.im, from_f128(0)));
}

TEST(QuadComplex, EntriesAgreeWithTheClassOrderFunctions) {
    using namespace krm::ldmath;
    operands gen(21);
    for (int i = 0; i < 200; ++i) {
        krm_complex16 z{from_f128(to_f128(gen.with_exponent(16383 + gen.below(20) - 10))),
                        from_f128(to_f128(gen.with_exponent(16383 + gen.below(20) - 10)))};
        ldcomplex c = load(&z);
        struct {
            entry1 f;
            ldcomplex (*g)(ldcomplex);
        } pairs[] = {{__Wexp, cexpl}, {__Wlog, clogl}, {__Wsqrt, csqrtl}, {__Wsin, csinl}, {__Wcos, ccosl}};
        for (const auto &p : pairs) {
            krm_complex16 r, s;
            p.f(&r, &z);
            store(&s, p.g(c));
            ASSERT_TRUE(same_bits(r.re, s.re) && same_bits(r.im, s.im)) << show(z);
        }
    }
}

#if defined(KRM_TEST_MPFR)

// A reference: re and im of f(x + iy) at 256 bits.
using exact_complex = std::function<void(mpfr_t re, mpfr_t im, const mpfr_t x, const mpfr_t y)>;
using theirs_complex = __complex128 (*)(__complex128);

struct complex_accuracy {
    double ours = 0, theirs = 0;
    __float128 worst_x = 0, worst_y = 0;
};

complex_accuracy measure_complex(const char *name, entry1 ours, theirs_complex theirs, const exact_complex &exact,
                                 const samples &xs, const samples &ys) {
    complex_accuracy a;
    mpfr_t mx, my, re, im;
    mpfr_inits2(256, mx, my, re, im, static_cast<mpfr_ptr>(nullptr));
    for (size_t i = 0; i < xs.size(); ++i) {
        krm_complex16 z = c16(xs[i], ys[i]), r;
        ours(&r, &z);
        mpfr_set_float128(mx, xs[i], MPFR_RNDN);
        mpfr_set_float128(my, ys[i], MPFR_RNDN);
        exact(re, im, mx, my);
        double e = std::max(ulp_error(to_f128(r.re), re), ulp_error(to_f128(r.im), im));
        if (e > a.ours || std::isnan(e)) {
            a.ours = e;
            a.worst_x = xs[i];
            a.worst_y = ys[i];
        }
        if (theirs) {
            __complex128 in;
            __real__ in = xs[i];
            __imag__ in = ys[i];
            __complex128 t = theirs(in);
            double te = std::max(ulp_error(__real__ t, re), ulp_error(__imag__ t, im));
            if (te > a.theirs) a.theirs = te;
        }
    }
    mpfr_clears(mx, my, re, im, static_cast<mpfr_ptr>(nullptr));
    if (getenv("KRM_ACCURACY_REPORT"))
        printf("%s: ours %.3f ulp, libquadmath %s, %zu samples\n", name, a.ours,
               theirs ? std::to_string(a.theirs).c_str() : "-", xs.size());
    return a;
}

std::string where(const complex_accuracy &a) {
    // quadmath_snprintf takes one value a call.
    char x[64], y[64];
    quadmath_snprintf(x, sizeof x, "%.36Qg", a.worst_x);
    quadmath_snprintf(y, sizeof y, "%.36Qg", a.worst_y);
    return std::string("worst at (") + x + ", " + y + ")";
}

void exp_ref(mpfr_t re, mpfr_t im, const mpfr_t x, const mpfr_t y) {
    mpfr_t e;
    mpfr_init2(e, 256);
    mpfr_exp(e, x, MPFR_RNDN);
    mpfr_cos(re, y, MPFR_RNDN);
    mpfr_sin(im, y, MPFR_RNDN);
    mpfr_mul(re, re, e, MPFR_RNDN);
    mpfr_mul(im, im, e, MPFR_RNDN);
    mpfr_clear(e);
}

void log_ref(mpfr_t re, mpfr_t im, const mpfr_t x, const mpfr_t y) {
    mpfr_hypot(re, x, y, MPFR_RNDN);
    mpfr_log(re, re, MPFR_RNDN);
    mpfr_atan2(im, y, x, MPFR_RNDN);
}

void sqrt_ref(mpfr_t re, mpfr_t im, const mpfr_t x, const mpfr_t y) {
    mpfr_t r, t;
    mpfr_inits2(256, r, t, static_cast<mpfr_ptr>(nullptr));
    mpfr_hypot(r, x, y, MPFR_RNDN);
    if (mpfr_sgn(x) >= 0)
        mpfr_add(t, r, x, MPFR_RNDN);
    else
        mpfr_sub(t, r, x, MPFR_RNDN);
    mpfr_div_2ui(t, t, 1, MPFR_RNDN);
    mpfr_sqrt(t, t, MPFR_RNDN);  // the greater part
    mpfr_div(r, y, t, MPFR_RNDN);
    mpfr_div_2ui(r, r, 1, MPFR_RNDN);  // y / 2t
    if (mpfr_sgn(x) >= 0) {
        mpfr_set(re, t, MPFR_RNDN);
        mpfr_set(im, r, MPFR_RNDN);
    } else {
        mpfr_abs(re, r, MPFR_RNDN);
        mpfr_copysign(im, t, y, MPFR_RNDN);
    }
    mpfr_clears(r, t, static_cast<mpfr_ptr>(nullptr));
}

void sin_ref(mpfr_t re, mpfr_t im, const mpfr_t x, const mpfr_t y) {
    mpfr_t a;
    mpfr_init2(a, 256);
    mpfr_sin(re, x, MPFR_RNDN);
    mpfr_cosh(a, y, MPFR_RNDN);
    mpfr_mul(re, re, a, MPFR_RNDN);
    mpfr_cos(im, x, MPFR_RNDN);
    mpfr_sinh(a, y, MPFR_RNDN);
    mpfr_mul(im, im, a, MPFR_RNDN);
    mpfr_clear(a);
}

void cos_ref(mpfr_t re, mpfr_t im, const mpfr_t x, const mpfr_t y) {
    mpfr_t a;
    mpfr_init2(a, 256);
    mpfr_cos(re, x, MPFR_RNDN);
    mpfr_cosh(a, y, MPFR_RNDN);
    mpfr_mul(re, re, a, MPFR_RNDN);
    mpfr_sin(im, x, MPFR_RNDN);
    mpfr_sinh(a, y, MPFR_RNDN);
    mpfr_mul(im, im, a, MPFR_RNDN);
    mpfr_neg(im, im, MPFR_RNDN);
    mpfr_clear(a);
}

void cbrt_ref(mpfr_t re, mpfr_t im, const mpfr_t x, const mpfr_t y) {
    mpfr_t r, t;
    mpfr_inits2(256, r, t, static_cast<mpfr_ptr>(nullptr));
    mpfr_hypot(r, x, y, MPFR_RNDN);
    mpfr_cbrt(r, r, MPFR_RNDN);
    mpfr_atan2(t, y, x, MPFR_RNDN);
    mpfr_div_ui(t, t, 3, MPFR_RNDN);
    mpfr_cos(re, t, MPFR_RNDN);
    mpfr_sin(im, t, MPFR_RNDN);
    mpfr_mul(re, re, r, MPFR_RNDN);
    mpfr_mul(im, im, r, MPFR_RNDN);
    mpfr_clears(r, t, static_cast<mpfr_ptr>(nullptr));
}

void expect_within(const complex_accuracy &a, double bound, const char *name) {
    EXPECT_LE(a.ours, bound) << name << " " << where(a);
}

TEST(QuadComplexAccuracy, ExpLogSqrt) {
    int n = static_cast<int>(scaled(4000));
    samples xs = uniform(-80, 80, n, 1), ys = uniform(-20, 20, n, 2);
    append(xs, uniform(11340, 11400, n / 4, 3));  // the scaled path past exp's overflow
    append(ys, log_uniform(-30, 3, n / 4, 4));
    expect_within(measure_complex("cexp", __Wexp, cexpq, exp_ref, xs, ys), 2, "exp");

    samples lx = log_uniform(-16000, 16000, n, 5), ly = log_uniform(-16000, 16000, n, 6);
    append(lx, log_uniform(-3, 3, n, 7));
    append(ly, log_uniform(-3, 3, n, 8));
    // Near the unit circle, where ln |z| cancels.
    samples ux = uniform(-1, 1, n, 9), uy;
    for (__float128 u : ux) uy.push_back(sqrtq(1 - u * u) * (1 + ldexpq(u, -60)));
    append(lx, ux);
    append(ly, uy);
    expect_within(measure_complex("clog", __Wlog, clogq, log_ref, lx, ly), 2, "log");
    append(lx, log_uniform(-16494, -16300, n / 4, 10));  // subnormal parts
    append(ly, log_uniform(-16494, -16300, n / 4, 11));
    expect_within(measure_complex("csqrt", __Wsqrt, csqrtq, sqrt_ref, lx, ly), 2, "sqrt");
}

TEST(QuadComplexAccuracy, SinCosCbrt) {
    int n = static_cast<int>(scaled(4000));
    samples xs = uniform(-10, 10, n, 12), ys = uniform(-60, 60, n, 13);
    append(xs, log_uniform(-40, 3, n, 14));
    append(ys, log_uniform(-40, 3, n, 15));
    expect_within(measure_complex("csin", __Wsin, csinq, sin_ref, xs, ys), 2, "sin");
    expect_within(measure_complex("ccos", __Wcos, ccosq, cos_ref, xs, ys), 2, "cos");
    samples cx = log_uniform(-16000, 16000, n, 16), cy = log_uniform(-16000, 16000, n, 17);
    expect_within(measure_complex("cbrt", __Wcbrt, nullptr, cbrt_ref, cx, cy), 2, "cbrt");
}

// z ** w against exp(w log z) at 256 bits, for bases and exponents of
// moderate size.
TEST(QuadComplexAccuracy, Power) {
    int n = static_cast<int>(scaled(2000));
    samples zx = uniform(-4, 4, n, 18), zy = uniform(-4, 4, n, 19), wx = uniform(-6, 6, n, 20),
            wy = uniform(-2, 2, n, 21);
    mpfr_t mx, my, mu, mv, lr, li, er, ei, e;
    mpfr_inits2(256, mx, my, mu, mv, lr, li, er, ei, e, static_cast<mpfr_ptr>(nullptr));
    double ours = 0, theirs = 0, componentwise = 0;
    for (int i = 0; i < n; ++i) {
        krm_complex16 z = c16(zx[i], zy[i]), w = c16(wx[i], wy[i]), r;
        __Wpow(&r, &z, &w);
        mpfr_set_float128(mx, zx[i], MPFR_RNDN);
        mpfr_set_float128(my, zy[i], MPFR_RNDN);
        mpfr_set_float128(mu, wx[i], MPFR_RNDN);
        mpfr_set_float128(mv, wy[i], MPFR_RNDN);
        log_ref(lr, li, mx, my);
        // w log z = (u lr - v li) + i (u li + v lr)
        mpfr_mul(er, mu, lr, MPFR_RNDN);
        mpfr_mul(e, mv, li, MPFR_RNDN);
        mpfr_sub(er, er, e, MPFR_RNDN);
        mpfr_mul(ei, mu, li, MPFR_RNDN);
        mpfr_mul(e, mv, lr, MPFR_RNDN);
        mpfr_add(ei, ei, e, MPFR_RNDN);
        mpfr_t re, im;
        mpfr_inits2(256, re, im, static_cast<mpfr_ptr>(nullptr));
        exp_ref(re, im, er, ei);
        // Normwise: the error of each part in units of the last place of
        // the greater part, since a part near zero beside a large one takes
        // its error from the angle, which no rounding of the angle avoids.
        mpfr_t big;
        mpfr_init2(big, 256);
        mpfr_hypot(big, re, im, MPFR_RNDN);
        double scale_re = mpfr_zero_p(re) ? 1 : ldexp(1, static_cast<int>(mpfr_get_exp(re) - mpfr_get_exp(big)));
        double scale_im = mpfr_zero_p(im) ? 1 : ldexp(1, static_cast<int>(mpfr_get_exp(im) - mpfr_get_exp(big)));
        mpfr_clear(big);
        double err = std::max(ulp_error(to_f128(r.re), re) * scale_re, ulp_error(to_f128(r.im), im) * scale_im);
        componentwise = std::max(componentwise, std::max(ulp_error(to_f128(r.re), re), ulp_error(to_f128(r.im), im)));
        __complex128 bz, bw;
        __real__ bz = zx[i];
        __imag__ bz = zy[i];
        __real__ bw = wx[i];
        __imag__ bw = wy[i];
        __complex128 t = cpowq(bz, bw);
        theirs = std::max(theirs, std::max(ulp_error(__real__ t, re) * scale_re, ulp_error(__imag__ t, im) * scale_im));
        mpfr_clears(re, im, static_cast<mpfr_ptr>(nullptr));
        ours = std::max(ours, err);
    }
    mpfr_clears(mx, my, mu, mv, lr, li, er, ei, e, static_cast<mpfr_ptr>(nullptr));
    if (getenv("KRM_ACCURACY_REPORT"))
        printf("cpow: ours %.3f ulp normwise (%.1f by part), libquadmath %.3f normwise, %d samples\n", ours,
               componentwise, theirs, n);
    EXPECT_LE(ours, 2);
    EXPECT_LE(componentwise, 2);
}

#endif

}  // namespace
