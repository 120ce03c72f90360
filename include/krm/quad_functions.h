/* REAL(16) and COMPLEX(16) functions.
 *
 * Values are in storage order, as in krm/quad.h; a COMPLEX(16) value is its
 * real part followed by its imaginary part. Each entry takes a pointer to the
 * result first and pointers to its arguments. No entry raises a
 * floating-point flag or reports an error: outside a function's domain the
 * result is a NaN. */
#ifndef KRM_QUAD_FUNCTIONS_H
#define KRM_QUAD_FUNCTIONS_H

#include <stdint.h>

#include "krm/api.h"
#include "krm/quad.h"

typedef struct krm_complex16 {
    krm_real16 re, im;
} krm_complex16;

KRM_BEGIN_DECLS

/* Trigonometric functions, in radians and (with d) in degrees. */
KRM_API void __Qsin(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qcos(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qtan(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qsincos(krm_real16 *sine, krm_real16 *cosine, const krm_real16 *x);
KRM_API void __Qsind(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qcosd(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qtand(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qasin(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qacos(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qatan(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qatan2(krm_real16 *result, const krm_real16 *y, const krm_real16 *x);
KRM_API void __Qasind(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qacosd(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qatand(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qatn2d(krm_real16 *result, const krm_real16 *y, const krm_real16 *x);

/* Exponentials, logarithms, powers and the hyperbolic functions. */
KRM_API void __Qexp(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qlog(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qlog10(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qpow(krm_real16 *result, const krm_real16 *x, const krm_real16 *y);
KRM_API void __Qpowi(krm_real16 *result, const krm_real16 *x, const int32_t *n);
KRM_API void __Qpowl(krm_real16 *result, const krm_real16 *x, const int64_t *n);
KRM_API void __Qpowu8(krm_real16 *result, const krm_real16 *x, const uint64_t *n);
KRM_API void __Qsinh(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qcosh(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qtanh(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qcbrt(krm_real16 *result, const krm_real16 *x);

/* Remainder, rounding and the words of the model. */
KRM_API void __Qfmod(krm_real16 *result, const krm_real16 *x, const krm_real16 *p);
KRM_API void __Qceil(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qfloor(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qscalbn(krm_real16 *result, const krm_real16 *x, const int32_t *n);
KRM_API int32_t __Qilogb(const krm_real16 *x);
KRM_API void __Qsignificand(krm_real16 *result, const krm_real16 *x);
KRM_API void __Qnextafter(krm_real16 *result, const krm_real16 *x, const krm_real16 *y);

/* COMPLEX(16). __Wabs has a REAL(16) result. */
KRM_API void __Wabs(krm_real16 *result, const krm_complex16 *z);
KRM_API void __Qcnjg(krm_complex16 *result, const krm_complex16 *z);
KRM_API void __Wcbrt(krm_complex16 *result, const krm_complex16 *z);
KRM_API void __Wsin(krm_complex16 *result, const krm_complex16 *z);
KRM_API void __Wcos(krm_complex16 *result, const krm_complex16 *z);
KRM_API void __Wexp(krm_complex16 *result, const krm_complex16 *z);
KRM_API void __Wlog(krm_complex16 *result, const krm_complex16 *z);
KRM_API void __Wsqrt(krm_complex16 *result, const krm_complex16 *z);
KRM_API void __Wpow(krm_complex16 *result, const krm_complex16 *z, const krm_complex16 *w);
KRM_API void __Wpowi(krm_complex16 *result, const krm_complex16 *z, const int32_t *n);
KRM_API void __Wpowl(krm_complex16 *result, const krm_complex16 *z, const int64_t *n);
KRM_API void __Wpowu8(krm_complex16 *result, const krm_complex16 *z, const uint64_t *n);

KRM_END_DECLS

#endif
