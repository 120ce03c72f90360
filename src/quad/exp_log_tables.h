// Private to the exponential, logarithm, power and hyperbolic functions:
// their shared constants and tables (generated), and the kernels that give
// exp and log in head and tail form.
#pragma once

#include "quad/ldmath.h"

namespace krm::ldmath {

struct exp_log_constants {
#include "quad/exp_log_names.inc"
};
extern const exp_log_constants _exp_log;

// 2^(j/32), j = 0..31, as a sum of two long_double values.
extern const long_double _TBL_expl_hi[32];
extern const long_double _TBL_expl_lo[32];
// By the top eight fraction bits of m in [1, 2): r_j, a nine-bit
// approximation of 1/m, and -log r_j (rows from 106 on: -log 2 r_j) as hi+lo.
extern const long_double _TBL_logl_inv[256];
extern const long_double _TBL_logl_hi[256];
extern const long_double _TBL_logl_lo[256];

// a * b as hi + *lo, the tail good to about 2^-220 of the product.
long_double __explog_mul(const long_double &a, const long_double &b, long_double *lo);
// a + b as hi + *err, exactly, for any a and b (a NaN or an infinity
// gives a meaningless *err).
long_double __explog_add(const long_double &a, const long_double &b, long_double *err);

// (a + a_lo) / (b + b_lo) as hi + *lo, the tail good to about 2^-220.
long_double __explog_div(const long_double &a, const long_double &a_lo, const long_double &b, const long_double &b_lo,
                     long_double *lo);
// For 0 <= x < 40: t = exp(x) - 1 and u = t / (1 + t) = 1 - exp(-x), both
// as pairs; sinh x = (t + u) / 2 and cosh x = 1 + (t - u) / 2.
void __sinh_cosh_parts(const long_double &x, long_double *t, long_double *t_lo, long_double *u, long_double *u_lo);

// log x as hi + *lo for a finite x > 0 (subnormals included), the pair
// good to about 2^-128 relative; lo may be null when only the head (the
// sum rounded once) is wanted. precise adds the exact square that
// powl needs near 1.
long_double __log_hl(long_double x, long_double *lo, bool precise);
// log x, or log10 x, of a finite x > 0 outside [1 - 2^-9, 1 + 2^-8),
// plus *extra when extra is not null (|*extra| < 2^-100), rounded once in
// the current direction (fixed point, no soft-float operations).
long_double __log_fixed(const long_double &x, bool base10, const long_double *extra = nullptr);
// R = z (p1 + p2 z + ... + p10 z^9), z = s^2, of logl's direct series near
// 1 (|s| < 2^-4), in fixed point, truncated: good to about 2^-124.
long_double __log_series_R(const long_double &s);
// log1p(u) as hi + *lo for u = u_hi + u_lo, |u_hi| <= 2^-8; lo may be null.
long_double __log1p_hl(const long_double &u_hi, const long_double &u_lo, long_double *lo, bool precise);

// exp(hi + lo) = 2^*m (*s_hi + *s_lo), for |hi| below about 11500, the
// pair good to about 2^-120 relative; *s_hi lies in [1, 2).
void __exp_pieces(const long_double &hi, const long_double &lo, int *m, long_double *s_hi, long_double *s_lo);
// 2^m (s_hi + s_lo), |s_lo| small beside s_hi, rounded once in the current
// direction, subnormal and overflowing results included.
long_double __exp_finish(const long_double &s_hi, const long_double &s_lo, int m);
// exp(x) - 1 as hi + *lo, for |x| up to 80.
long_double __expm1_hl(const long_double &x, long_double *lo);

}  // namespace krm::ldmath
