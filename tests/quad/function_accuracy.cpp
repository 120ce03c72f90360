#include "quad/function_accuracy.h"

#include <math.h>
#include <quadmath.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace quadtest {

namespace {

uint64_t mix(uint64_t &state) {
    uint64_t z = (state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

// A random number in [0, 1) with all 113 bits random.
__float128 unit(uint64_t &state) {
    __float128 hi = static_cast<__float128>(mix(state) >> 11) * 0x1p-53Q;
    __float128 lo = static_cast<__float128>(mix(state) >> 4) * 0x1p-113Q;
    return hi + lo;
}

}  // namespace

samples uniform(__float128 a, __float128 b, int n, uint64_t seed) {
    samples out;
    out.reserve(n);
    for (int i = 0; i < n; ++i) out.push_back(a + (b - a) * ((i + unit(seed)) / n));
    return out;
}

samples log_uniform(int e_lo, int e_hi, int n, uint64_t seed, bool signed_too) {
    samples out;
    out.reserve(n);
    for (int i = 0; i < n; ++i) {
        int e = e_lo + static_cast<int>((static_cast<long long>(e_hi - e_lo) * i) / n);
        __float128 m = 1 + unit(seed);  // [1, 2)
        __float128 x = ldexpq(m, e);
        if (signed_too && (mix(seed) & 1)) x = -x;
        out.push_back(x);
    }
    return out;
}

samples around(__float128 x, int k) {
    samples out;
    __float128 up = x, down = x;
    out.push_back(x);
    for (int i = 0; i < k; ++i) {
        up = nextafterq(up, HUGE_VALQ);
        down = nextafterq(down, -HUGE_VALQ);
        out.push_back(up);
        out.push_back(down);
    }
    return out;
}

void append(samples &a, const samples &b) { a.insert(a.end(), b.begin(), b.end()); }

#if defined(KRM_TEST_MPFR)

double ulp_error(__float128 got, mpfr_srcptr exact) {
    bool got_nan = isnanq(got);
    if (mpfr_nan_p(exact)) return got_nan ? 0 : INFINITY;
    if (got_nan) return INFINITY;
    if (mpfr_inf_p(exact)) return (isinfq(got) && (got > 0) == (mpfr_sgn(exact) > 0)) ? 0 : INFINITY;
    if (mpfr_zero_p(exact)) return got == 0 ? 0 : INFINITY;
    // The exact value's exponent with 1 <= m < 2; below the normal range the
    // quantum stays at 2^-16494.
    long e = mpfr_get_exp(exact) - 1;
    if (e > 16383) return (isinfq(got) && (got > 0) == (mpfr_sgn(exact) > 0)) ? 0 : INFINITY;
    if (isinfq(got)) return INFINITY;
    if (e < -16382) e = -16382;
    mpfr_t d;
    mpfr_init2(d, 512);
    mpfr_set_float128(d, got, MPFR_RNDN);
    mpfr_sub(d, d, exact, MPFR_RNDN);
    mpfr_mul_2si(d, d, 112 - e, MPFR_RNDN);
    double err = fabs(mpfr_get_d(d, MPFR_RNDN));
    mpfr_clear(d);
    return err;
}

namespace {

void report(const char *name, const accuracy &a, bool have_theirs) {
    if (!getenv("KRM_ACCURACY_REPORT")) return;
    if (have_theirs)
        printf("%s: ours %.3f ulp, libquadmath %.3f ulp, %ld samples\n", name, a.ours, a.theirs, a.count);
    else
        printf("%s: ours %.3f ulp, %ld samples\n", name, a.ours, a.count);
}

}  // namespace

accuracy measure(const char *name, ours_fn1 ours, theirs_fn1 theirs, exact_fn1 exact, const samples &xs) {
    accuracy a;
    mpfr_t mx, mr;
    mpfr_init2(mx, 113);
    mpfr_init2(mr, 256);
    for (__float128 x : xs) {
        krm_real16 in, out;
        memcpy(&in, &x, 16);
        ours(&out, &in);
        __float128 got;
        memcpy(&got, &out, 16);
        mpfr_set_float128(mx, x, MPFR_RNDN);
        exact(mr, mx, MPFR_RNDN);
        double e = ulp_error(got, mr);
        if (e > a.ours || (isnan(e) && !isnan(a.ours))) {
            a.ours = e;
            a.worst_x = x;
        }
        if (theirs) {
            double t = ulp_error(theirs(x), mr);
            if (t > a.theirs) a.theirs = t;
        }
        ++a.count;
    }
    mpfr_clear(mx);
    mpfr_clear(mr);
    report(name, a, theirs != nullptr);
    return a;
}

accuracy measure(const char *name, ours_fn2 ours, theirs_fn2 theirs, exact_fn2 exact, const samples &xs,
                 const samples &ys) {
    accuracy a;
    mpfr_t mx, my, mr;
    mpfr_init2(mx, 113);
    mpfr_init2(my, 113);
    mpfr_init2(mr, 256);
    for (size_t i = 0; i < xs.size() && i < ys.size(); ++i) {
        __float128 x = xs[i], y = ys[i];
        krm_real16 in1, in2, out;
        memcpy(&in1, &x, 16);
        memcpy(&in2, &y, 16);
        ours(&out, &in1, &in2);
        __float128 got;
        memcpy(&got, &out, 16);
        mpfr_set_float128(mx, x, MPFR_RNDN);
        mpfr_set_float128(my, y, MPFR_RNDN);
        exact(mr, mx, my, MPFR_RNDN);
        double e = ulp_error(got, mr);
        if (e > a.ours) {
            a.ours = e;
            a.worst_x = x;
            a.worst_y = y;
        }
        if (theirs) {
            double t = ulp_error(theirs(x, y), mr);
            if (t > a.theirs) a.theirs = t;
        }
        ++a.count;
    }
    mpfr_clear(mx);
    mpfr_clear(my);
    mpfr_clear(mr);
    report(name, a, theirs != nullptr);
    return a;
}

#endif

}  // namespace quadtest
