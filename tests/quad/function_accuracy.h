// Accuracy of the REAL(16) functions against MPFR at 256 bits, beside
// libquadmath on the same arguments: errors in units in the last place of
// the exact result, and the argument samples that reach the hard places.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

#include "quad/long_double.h"

namespace quadtest {

// Arguments, as __float128 values (storage order is the same bits).
using samples = std::vector<__float128>;

// n values spread evenly over [a, b], each with a random low part, so that
// every bit of the significand varies.
samples uniform(__float128 a, __float128 b, int n, uint64_t seed);
// n magnitudes with exponents spread evenly over [2^e_lo, 2^e_hi), random
// significands, and random signs when signed_too.
samples log_uniform(int e_lo, int e_hi, int n, uint64_t seed, bool signed_too = true);
// The 2k+1 neighbours of x, k steps either side.
samples around(__float128 x, int k);
// Joins b onto a.
void append(samples &a, const samples &b);

#if defined(KRM_TEST_MPFR)

}  // namespace quadtest

#define MPFR_WANT_FLOAT128
#include <mpfr.h>

namespace quadtest {

using ours_fn1 = void (*)(krm_real16 *, const krm_real16 *);
using ours_fn2 = void (*)(krm_real16 *, const krm_real16 *, const krm_real16 *);
using theirs_fn1 = __float128 (*)(__float128);
using theirs_fn2 = __float128 (*)(__float128, __float128);

// The worst error over the samples, ours and libquadmath's, in ulps of the
// exact result (an overflow to infinity counts 0 when the exact value is
// beyond the largest number; a NaN where the exact value is a number, or
// a number where it is a NaN, counts as infinitely wrong).
struct accuracy {
    double ours = 0, theirs = 0;
    __float128 worst_x = 0, worst_y = 0;  // where ours is worst
    long count = 0;
};

// exact(r, x) sets r to f(x) rounded to nearest at r's precision (256
// bits): a plain MPFR function fits, as does a composite reference such as
// a function in degrees.
using exact_fn1 = int (*)(mpfr_ptr r, mpfr_srcptr x, mpfr_rnd_t rnd);
using exact_fn2 = int (*)(mpfr_ptr r, mpfr_srcptr x, mpfr_srcptr y, mpfr_rnd_t rnd);

accuracy measure(const char *name, ours_fn1 ours, theirs_fn1 theirs, exact_fn1 exact, const samples &xs);
// Two arguments, paired: f(xs[i], ys[i]), exact(r, xs[i], ys[i]).
accuracy measure(const char *name, ours_fn2 ours, theirs_fn2 theirs, exact_fn2 exact, const samples &xs,
                 const samples &ys);
// theirs may be null where libquadmath has no such function. With
// KRM_ACCURACY_REPORT set in the environment, each measure prints a line
// "name: ours X ulp, libquadmath Y ulp, N samples" for the record.

// The error in ulps of got against exact.
double ulp_error(__float128 got, mpfr_srcptr exact);

#endif

}  // namespace quadtest
