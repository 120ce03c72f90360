// The reduction by pi/2 against the exact reduction in MPFR: the same
// quotient bits and the same doubles, bit for bit, on random arguments over
// the whole exponent range, on arguments of every piece count, and on
// arguments next to a multiple of pi/2 whose remainder cancels up to 192
// bits (tools/rem_pio2m_near_inputs.py), for every precision class.

#include <gtest/gtest.h>

#if defined(KRM_TEST_MPFR)

#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <random>

#define MPFR_WANT_FLOAT128
#include <mpfr.h>

#include "platform/rem_pio2m.h"
#include "quad/quad_support.h"

namespace {

// The exact reduction in MPFR: t = x * 2/pi to far more bits than any
// argument needs (the table's 21,984 bits of 2/pi and then some), N the
// nearest whole number, r = (t - N) pi/2, and the doubles cut from r one
// after another, each the nearest to what the ones before leave. -1 for an
// argument below 1: the functions reduce nothing that small, and there the
// reduction's far-down doubles carry its rounding, not the exact r = x.
int reference_reduction(const double *x, double *y, int e0, int nx, int prec) {
    constexpr mpfr_prec_t bits = 23000;
    mpfr_t arg, t, whole, two_over_pi, piece;
    mpfr_inits2(bits, arg, t, whole, two_over_pi, piece, static_cast<mpfr_ptr>(nullptr));
    mpfr_set_zero(arg, 1);
    for (int i = 0; i < nx; ++i) {
        mpfr_set_d(piece, x[i], MPFR_RNDN);
        mpfr_mul_2si(piece, piece, e0 - 24 * i, MPFR_RNDN);
        mpfr_add(arg, arg, piece, MPFR_RNDN);  // exact at this precision
    }
    if (mpfr_cmp_ui(arg, 1) < 0) {
        mpfr_clears(arg, t, whole, two_over_pi, piece, static_cast<mpfr_ptr>(nullptr));
        return -1;
    }
    mpfr_const_pi(two_over_pi, MPFR_RNDN);
    mpfr_ui_div(two_over_pi, 2, two_over_pi, MPFR_RNDN);
    mpfr_mul(t, arg, two_over_pi, MPFR_RNDN);
    mpfr_rint(whole, t, MPFR_RNDN);
    mpfr_sub(t, t, whole, MPFR_RNDN);
    mpfr_fmod_ui(whole, whole, 8, MPFR_RNDN);
    const int n = static_cast<int>(mpfr_get_si(whole, MPFR_RNDN));
    mpfr_const_pi(piece, MPFR_RNDN);
    mpfr_mul(t, t, piece, MPFR_RNDN);
    mpfr_div_2ui(t, t, 1, MPFR_RNDN);  // r = fraction * pi/2
    const int count = prec == 0 ? 1 : prec < 3 ? 2 : 3;
    for (int i = 0; i < count; ++i) {
        y[i] = mpfr_get_d(t, MPFR_RNDN);
        mpfr_sub_d(t, t, y[i], MPFR_RNDN);
    }
    mpfr_clears(arg, t, whole, two_over_pi, piece, static_cast<mpfr_ptr>(nullptr));
    return n;
}

::testing::AssertionResult same_reduction(const double *x, int e0, int nx, int prec) {
    double expected[4] = {7, 7, 7, 7}, got[4] = {7, 7, 7, 7};
    const int n_expected = reference_reduction(x, expected, e0, nx, prec);
    if (n_expected < 0) return ::testing::AssertionSuccess();
    const int n_got = __rem_pio2m(x, got, e0, nx, prec, _TBL_ipio2l_inf);
    if (n_expected == n_got && memcmp(expected, got, sizeof got) == 0) return ::testing::AssertionSuccess();
    auto failure = ::testing::AssertionFailure();
    failure << "pieces";
    for (int i = 0; i < nx; ++i) failure << " " << x[i];
    failure << " e0 " << e0 << " prec " << prec << ": n " << n_got << " want " << n_expected;
    char text[64];
    for (int i = 0; i < 4; ++i) {
        snprintf(text, sizeof text, " y[%d] %a want %a", i, got[i], expected[i]);
        failure << text;
    }
    return failure;
}

// REAL(16) arguments as the trigonometric functions cut them: a 113-bit
// significand in five pieces, trailing zero pieces dropped.
TEST(ReductionReference, RandomQuadArgumentsOverTheWholeExponentRange) {
    std::mt19937_64 rng(20261122);
    const long count = quadtest::scaled(4000);
    for (long i = 0; i < count; ++i) {
        const uint64_t high = (rng() & ((uint64_t{1} << 48) - 1)) | (uint64_t{1} << 48);  // 49 bits
        const uint64_t low = rng();                                                     // 64 bits
        // The 113 bits shifted to 120: pieces of 24 from the top.
        const uint64_t top56 = high << 7 | low >> 57;
        const uint64_t bottom64 = low << 7;
        uint32_t pieces[5] = {static_cast<uint32_t>(top56 >> 32) & 0xFFFFFF, static_cast<uint32_t>(top56 >> 8) & 0xFFFFFF,
                              static_cast<uint32_t>(top56 << 16 | bottom64 >> 48) & 0xFFFFFF,
                              static_cast<uint32_t>(bottom64 >> 24) & 0xFFFFFF, static_cast<uint32_t>(bottom64) & 0xFFFFFF};
        int nx = 5;
        if (i % 7 == 0) pieces[4] = 0;
        if (i % 11 == 0) pieces[3] = pieces[4] = 0;
        while (pieces[nx - 1] == 0) --nx;
        const int e = i % 3 == 0 ? static_cast<int>(rng() % 200) - 1 : static_cast<int>(rng() % 16384);
        double x[5];
        for (int j = 0; j < nx; ++j) x[j] = pieces[j];
        ASSERT_TRUE(same_reduction(x, e - 23, nx, 3)) << "argument " << i;
        ASSERT_TRUE(same_reduction(x, e - 23, nx, static_cast<int>(i % 3))) << "argument " << i;
    }
}

// Any piece count from 1 to 8, pieces that are runs of ones or zeros, and
// exponents from below the first bit of the table to past its end.
TEST(ReductionReference, RandomPiecesAndExponents) {
    std::mt19937_64 rng(1122);
    const long count = quadtest::scaled(3000);
    for (long i = 0; i < count; ++i) {
        const int nx = 1 + static_cast<int>(rng() % 8);
        double x[8];
        for (int j = 0; j < nx; ++j) {
            const uint64_t r = rng();
            uint32_t piece = r & 0xFFFFFF;
            if (i % 4 == 1) piece = (r >> 32) & 1 ? 0xFFFFFF : 0;
            if (i % 4 == 2 && (r >> 40) % 3 == 0) piece = 0;
            x[j] = piece;
        }
        if (i % 2) x[0] = static_cast<double>(static_cast<uint32_t>(x[0]) | 0x800000);
        int e0;
        switch (i % 3) {
            case 0: e0 = static_cast<int>(rng() % 400) - 200; break;
            case 1: e0 = static_cast<int>(rng() % 21400); break;  // within the table of 2/pi
            default: e0 = 16360 - static_cast<int>(rng() % 100); break;
        }
        ASSERT_TRUE(same_reduction(x, e0, nx, static_cast<int>(rng() % 4))) << "argument " << i;
    }
}

struct near_input {
    int count;
    int e0;
    uint32_t pieces[8];
};

const near_input kNearInputs[] = {
#include "platform/rem_pio2m_near_inputs.inc"
};

// Next to a multiple of pi/2 the fraction's leading bits all cancel and the
// window of 2/pi has to be taken longer.
TEST(ReductionReference, ArgumentsNextToMultiplesOfHalfPi) {
    for (const near_input &c : kNearInputs) {
        double x[8];
        for (int j = 0; j < c.count; ++j) x[j] = c.pieces[j];
        for (int prec = 0; prec < 4; ++prec) EXPECT_TRUE(same_reduction(x, c.e0, c.count, prec));
    }
}

}  // namespace

#endif
