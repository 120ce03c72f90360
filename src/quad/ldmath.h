// The REAL(16) elementary and complex functions in class order.
//
// They live in their own namespace so that they can never meet the C
// library's long double functions of the same names. Each is one algorithm;
// the exported __Q and __W entries are thin wrappers that reverse the words
// around a call, so an entry and its function agree bit for bit.
//
// Arithmetic goes through the long_double operators only: results follow
// the current rounding direction as far as those do, and no flag is raised.
#pragma once

#include "krm/quad_functions.h"
#include "quad/long_double.h"

namespace krm::ldmath {

// A COMPLEX(16) value: the real part, then the imaginary part.
struct ldcomplex {
    long_double re, im;
};

// --- Word functions ---------------------------------------------------------
long_double __scalbnl(long_double x, int n);
int ilogbl(long_double x);  // 0x80000001 for a zero, 0x7FFFFFFF for an infinity or NaN
long_double significandl(long_double x);
long_double nextafterl(const long_double &x, const long_double &y);
long_double __ceill(const long_double &x);
long_double __floorl(const long_double &x);
int irintl(const long_double &x);

// --- Trigonometric functions ------------------------------------------------
// x reduced by pi/2: y[0] + y[1] is x - n pi/2 with |y| <= pi/4; returns n.
int __rem_pio2l(long_double x, long_double *y);
// The kernels on [-pi/4, pi/4], x + y the reduced argument.
long_double __k_sinl(long_double x, long_double y);
long_double __k_cosl(long_double x, long_double y);
long_double __k_tanl(long_double x, long_double y, int k);  // k = 1: -1/tan
void __k_sincosl(long_double x, long_double y, long_double *s, long_double *c);

// The sine and cosine of x + n pi/2 from those of x.
inline void by_quadrant(int n, const long_double &sn, const long_double &cs, long_double *s, long_double *c) {
    switch (n & 3) {
        case 0: *s = sn; *c = cs; break;
        case 1: *s = cs; *c = -sn; break;
        case 2: *s = -sn; *c = -cs; break;
        default: *s = -cs; *c = sn; break;
    }
}

long_double sinl(long_double x);
long_double cosl(long_double x);
long_double tanl(long_double x);
void sincosl(long_double x, long_double *s, long_double *c);
long_double sindl(long_double x);
long_double cosdl(long_double x);
long_double tandl(long_double x);
void sincosdl(long_double x, long_double *s, long_double *c);
void sincospil(long_double x, long_double *s, long_double *c);

long_double asinl(long_double x);
long_double acosl(long_double x);
long_double atanl(long_double x);
long_double mx_atanl(long_double x, long_double *tail);  // atan as a head and tail
long_double atan2l(long_double y, long_double x);
long_double __k_atan2l(long_double y, long_double x, long_double *tail);
long_double atan2pil(long_double y, long_double x);
long_double asindl(long_double x);
long_double acosdl(long_double x);
long_double atandl(long_double x);
long_double atan2dl(long_double y, long_double x);

// --- Exponential and logarithmic functions ----------------------------------
long_double expl(long_double x);
long_double exp2l(long_double x);
long_double expm1l(long_double x);
// exp(x) as a value and a power of two, for arguments whose exp overflows.
long_double __k_cexpl(long_double x, int *n);
long_double logl(long_double x);
long_double log10l(long_double x);
long_double log1pl(long_double x);
// The real part of clog for the middle range: half log(x*x + y*y), |x| >= |y|.
long_double __k_clog_rl(long_double x, long_double y);
long_double powl(long_double x, long_double y);
long_double powil(long_double x, long long n);  // by a whole-number exponent
long_double sinhl(long_double x);
long_double coshl(long_double x);
long_double tanhl(long_double x);
long_double cbrtl(long_double x);
long_double hypotl(long_double x, long_double y);

// --- Complex functions ------------------------------------------------------
long_double cabsl(ldcomplex z);
ldcomplex __w_cbrt(const ldcomplex &z);
ldcomplex ccoshl(ldcomplex z);
ldcomplex ccosl(ldcomplex z);
ldcomplex csinhl(ldcomplex z);
ldcomplex csinl(ldcomplex z);
ldcomplex cexpl(ldcomplex z);
ldcomplex clogl(ldcomplex z);
ldcomplex conjl(ldcomplex z);
ldcomplex csqrtl(ldcomplex z);
ldcomplex cpowl(ldcomplex z, ldcomplex w);
ldcomplex cpow_ww(ldcomplex z, ldcomplex w);
ldcomplex cpow_wi(ldcomplex z, int n);
ldcomplex cpow_wl(ldcomplex z, long long n);
ldcomplex cpow_wu8(ldcomplex z, unsigned long long n);

// --- Word access for the algorithms ------------------------------------------
inline unsigned top_word(const long_double &x) { return x.word[0]; }
inline unsigned magnitude_top(const long_double &x) { return x.word[0] & 0x7FFFFFFFu; }
inline bool sign_of(const long_double &x) { return x.word[0] >> 31; }
inline long_double fabsl(long_double x) {
    x.word[0] &= 0x7FFFFFFFu;
    return x;
}
inline long_double copysignl(long_double x, const long_double &s) {
    x.word[0] = (x.word[0] & 0x7FFFFFFFu) | (s.word[0] & 0x80000000u);
    return x;
}
inline bool isnanl(const long_double &x) {
    return (x.word[0] & 0x7FFF0000u) == 0x7FFF0000u &&
           ((x.word[0] & 0xFFFFu) | x.word[1] | x.word[2] | x.word[3]) != 0;
}
inline bool isinfl(const long_double &x) {
    return (x.word[0] & 0x7FFFFFFFu) == 0x7FFF0000u && (x.word[1] | x.word[2] | x.word[3]) == 0;
}
inline bool finitel(const long_double &x) { return (x.word[0] & 0x7FFF0000u) != 0x7FFF0000u; }
inline bool iszerol(const long_double &x) { return ((x.word[0] & 0x7FFFFFFFu) | x.word[1] | x.word[2] | x.word[3]) == 0; }

// The words of an entry's argument and result: storage order in memory,
// class order inside.
inline long_double load(const krm_real16 *p) { return long_double::of_storage(*p); }
inline void store(krm_real16 *p, const long_double &x) { *p = x.storage(); }
inline ldcomplex load(const krm_complex16 *p) { return ldcomplex{load(&p->re), load(&p->im)}; }
inline void store(krm_complex16 *p, const ldcomplex &z) {
    store(&p->re, z.re);
    store(&p->im, z.im);
}

}  // namespace krm::ldmath
