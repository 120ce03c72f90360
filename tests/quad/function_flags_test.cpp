// Every REAL(16) and COMPLEX(16) function leaves the floating-point status
// flags as they were, whatever it computes inside and whatever the
// argument: a program's IEEE flags see only its own operations.
#include <gtest/gtest.h>

#include <fenv.h>
#include <quadmath.h>

#include <vector>

#include "krm/quad_functions.h"
#include "quad/quad_support.h"

using namespace quadtest;

namespace {

using entry1 = void (*)(krm_real16 *, const krm_real16 *);
using entry2 = void (*)(krm_real16 *, const krm_real16 *, const krm_real16 *);
using centry1 = void (*)(krm_complex16 *, const krm_complex16 *);

// Arguments of every class: ordinary, tiny, huge (through the long
// reductions), subnormal, zero, infinite, NaN, both signs, and the domain
// edges.
std::vector<__float128> arguments() {
    std::vector<__float128> v = {0.3Q,    1.0Q,     1.7Q,   -2.5Q,   1e-30Q,  1e30Q,   1e300Q, 1e4000Q,
                                 -1e4000Q, 700.0Q,  12000.0Q, -12000.0Q, 0x1p-16494Q, 0x1p-16400Q, 0.0Q, -0.0Q,
                                 HUGE_VALQ, -HUGE_VALQ, nanq(""), 1.0Q + 0x1p-112Q, 0.999999Q, -1.0Q};
    return v;
}

void expect_no_flags(const char *name, __float128 x, __float128 y, int raised) {
    char buf[64];
    quadmath_snprintf(buf, sizeof buf, "%.6Qg", x);
    char buf2[64];
    quadmath_snprintf(buf2, sizeof buf2, "%.6Qg", y);
    EXPECT_EQ(raised, 0) << name << "(" << buf << ", " << buf2 << ") raised flags " << raised;
}

TEST(QuadFunctionFlags, NoneRaised) {
    const struct {
        const char *name;
        entry1 f;
    } ones[] = {
        {"sin", __Qsin},     {"cos", __Qcos},     {"tan", __Qtan},     {"sind", __Qsind},   {"cosd", __Qcosd},
        {"tand", __Qtand},   {"asin", __Qasin},   {"acos", __Qacos},   {"atan", __Qatan},   {"asind", __Qasind},
        {"acosd", __Qacosd}, {"atand", __Qatand}, {"exp", __Qexp},     {"log", __Qlog},     {"log10", __Qlog10},
        {"sinh", __Qsinh},   {"cosh", __Qcosh},   {"tanh", __Qtanh},   {"cbrt", __Qcbrt},   {"ceil", __Qceil},
        {"floor", __Qfloor}, {"significand", __Qsignificand},
    };
    const struct {
        const char *name;
        entry2 f;
    } twos[] = {
        {"atan2", __Qatan2}, {"atn2d", __Qatn2d}, {"pow", __Qpow}, {"fmod", __Qfmod}, {"nextafter", __Qnextafter},
    };
    const struct {
        const char *name;
        centry1 f;
    } complexes[] = {
        {"csin", __Wsin}, {"ccos", __Wcos}, {"cexp", __Wexp}, {"clog", __Wlog}, {"csqrt", __Wsqrt}, {"ccbrt", __Wcbrt},
    };
    const std::vector<__float128> args = arguments();
    for (__float128 a : args) {
        krm_real16 x = from_f128(a), r, c;
        for (const auto &f : ones) {
            feclearexcept(FE_ALL_EXCEPT);
            f.f(&r, &x);
            expect_no_flags(f.name, a, 0, fetestexcept(FE_ALL_EXCEPT));
        }
        feclearexcept(FE_ALL_EXCEPT);
        __Qsincos(&r, &c, &x);
        expect_no_flags("sincos", a, 0, fetestexcept(FE_ALL_EXCEPT));
        for (int32_t n : {0, 3, -3, 40000}) {
            feclearexcept(FE_ALL_EXCEPT);
            __Qpowi(&r, &x, &n);
            __Qscalbn(&r, &x, &n);
            expect_no_flags("powi/scalbn", a, n, fetestexcept(FE_ALL_EXCEPT));
        }
        for (__float128 b : args) {
            krm_real16 y = from_f128(b);
            for (const auto &f : twos) {
                feclearexcept(FE_ALL_EXCEPT);
                f.f(&r, &x, &y);
                expect_no_flags(f.name, a, b, fetestexcept(FE_ALL_EXCEPT));
            }
            krm_complex16 z{x, y}, w;
            for (const auto &f : complexes) {
                feclearexcept(FE_ALL_EXCEPT);
                f.f(&w, &z);
                expect_no_flags(f.name, a, b, fetestexcept(FE_ALL_EXCEPT));
            }
            feclearexcept(FE_ALL_EXCEPT);
            __Wabs(&r, &z);
            int32_t n = 5;
            __Wpowi(&w, &z, &n);
            krm_complex16 e{y, x};
            __Wpow(&w, &z, &e);
            expect_no_flags("cabs/cpowi/cpow", a, b, fetestexcept(FE_ALL_EXCEPT));
        }
    }
}

}  // namespace
